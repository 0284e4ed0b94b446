// Where a window lies on the screens, as far as the display tells: X11 does, others keep it to themselves.
// Used by host windows; main thread.
#pragma once

#include "velto/gtk/Signal.h"
#include "velto/platform/Geometry.h"

#include <gtk/gtk.h>

#include <optional>

namespace velto::gtk {

// The rectangle, in the widget's coordinates, that all monitors together span; nothing where the display does
// not tell.
std::optional<CGRect> screenAround(GtkWidget* widget);

// Where the widget's coordinates begin on the screens, and whether one surface lies over another there; the same
// holds of these.
std::optional<CGPoint> placeOnScreen(GtkWidget* widget);
bool isStackedOver(GdkSurface* surface, GdkSurface* other);

// Whether it is on a workspace that is not shown, as far as the window manager says; false on other displays.
bool isOnOtherWorkspace(GdkSurface* surface);

// Tells of moves, also of the application's other windows, by ViewChanges::note(), and of other workspaces by `switched`,
// until it goes. The surface must outlive it.
Signal watchMoves(GdkSurface* surface, void (*switched)());

// The number of the widget's window on an X11 display; 0 on others, and before it has one.
unsigned long x11WindowOf(GtkWidget* widget);

// Where the widget's coordinates begin on the surface of its window.
CGPoint placeOnSurface(GtkWidget* widget);

}  // namespace velto::gtk
