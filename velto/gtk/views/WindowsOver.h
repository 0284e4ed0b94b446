// The application's other windows over one of its windows, as far as the display tells where they are. Used by host
// windows; main thread.
#pragma once

#include "velto/platform/Geometry.h"

#include <gtk/gtk.h>

#include <vector>

namespace velto::gtk {

// In the widget's coordinates. X11 tells places and order; elsewhere a window that belongs to the widget's counts as
// standing in its middle, which is where compositors put it, and of others nothing is known.
std::vector<CGRect> windowsOver(GtkWidget* widget);

// Its popovers and theirs, but not those of `widget` itself. In the widget's coordinates.
std::vector<CGRect> popoversOver(GtkWidget* window, GtkWidget* widget);

}  // namespace velto::gtk
