// What the application's own widgets paint over the library's views. Used by the host window's root view;
// main thread.
#pragma once

#include "velto/platform/Geometry.h"

#include <gtk/gtk.h>

#include <vector>

namespace velto::gtk {

// In the widget's coordinates: what the widgets painted after it in its window show, and the window's
// popovers. Only what is painted counts, so an empty box over everything covers nothing.
std::vector<CGRect> paintedOver(GtkWidget* widget);

}  // namespace velto::gtk
