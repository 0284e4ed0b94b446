// The one widget class behind all views of the library: it puts its children where their frames say, paints a
// background, and is a target for the pointer only where it shows something. Used by the peers (Peer.h); main
// thread only.
//
// It has no layout manager and asks for no space, so neither a child's wish for room nor a change of its
// frame ever moves anything of the application's.
#pragma once

#include "velto/platform/Geometry.h"
#include "velto/platform/UIColor.h"

#include <gtk/gtk.h>

#include <functional>

namespace velto::gtk {

// Paints over the background and under the children; the size is the widget's, in points.
using ViewPainter = std::function<void(GtkWidget* widget, GtkSnapshot* snapshot, float width, float height)>;

// A floating reference, as new widgets have it.
GtkWidget* newViewWidget(GtkAccessibleRole role = GTK_ACCESSIBLE_ROLE_GROUP);

// Where the parent, if it is such a widget too, puts it. Edges are rounded to whole pixels, so neighbours
// still touch. A child of another kind fills its parent.
void setViewFrame(GtkWidget* view, const CGRect& frame);
void setViewColor(GtkWidget* view, const UIColor& color);
void setViewPainter(GtkWidget* view, ViewPainter painter);
void markView(GtkWidget* view);  // for paintedOver() to find it

// When all of the rectangle takes pointer events: with a background to be seen, also with children in it, or
// always. Else they go to what is below, such as the application's own widgets.
enum class ViewTarget { WhenPainted, WhenFilled, Always };
void setViewTarget(GtkWidget* view, ViewTarget target);

// How much larger than usual people want letters, within reason.
double textScale();

GdkRGBA clamped(const RGBA& color);

}  // namespace velto::gtk
