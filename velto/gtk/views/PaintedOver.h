// What of a widget is to be seen in its window: read from the render nodes that the window painted last, so
// that order, clips, transforms and opacity are those of the picture, whoever they come from. Used by host
// windows and slots; main thread.
#pragma once

#include "velto/platform/Geometry.h"
#include "velto/platform/foundation/GMemory.h"

#include <gtk/gtk.h>

#include <optional>
#include <vector>

namespace velto::gtk {

// Paints a widget's children, for its class's snapshot(), so that paintedOver() finds them again.
void snapshotMarked(GtkWidget* widget, const GtkWidgetClass* parentClass, GtkSnapshot* snapshot);

// In the widget's coordinates.
struct Painted {
  bool found = false;               // it was painted, and not wholly clear
  bool measurable = true;           // neither turned nor inside of what does not tell its parts
  CGRect window;                    // the part of its window that lies on a screen, as far as is known
  std::optional<CGRect> clip = {};  // what those around it let be seen
  // What is painted after it, as far as it lies over it; popovers and windows.
  std::vector<CGRect> covers = {};
};

// What a window has painted. To be taken right after it did: while it has something to paint there is
// nothing.
using PaintedNodes = GOwned<GskRenderNode, gsk_render_node_unref>;
PaintedNodes paintedNodes(GtkWidget* window);

// Of a widget that paints itself by snapshotMarked(), in nodes of its window (may be null). Only what is
// painted covers: an empty box over everything covers nothing.
Painted paintedOver(GtkWidget* widget, GskRenderNode* nodes);

}  // namespace velto::gtk
