// A person's finger: real pointer events, from the X server, on a widget of a window. Main thread.
#pragma once

#include <gtk/gtk.h>
#include <velto/platform/Geometry.h>

#include <string>

namespace velto::preview {

// Taps a point of the widget (its coordinates) and returns once the events have come through; what went wrong
// as one line, or nothing.
std::string tapAt(GtkWidget* widget, CGPoint point);

}  // namespace velto::preview
