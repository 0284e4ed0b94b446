// A person's finger and keyboard: real events, from the X server, on a widget of a window. Each returns once the
// events have come through, with what went wrong as one line, or nothing. Main thread.
#pragma once

#include <gtk/gtk.h>
#include <velto/platform/Geometry.h>

#include <chrono>
#include <string>

namespace velto::preview {

// Points are the widget's coordinates.
std::string tapAt(GtkWidget* widget, CGPoint point);
std::string pressAt(GtkWidget* widget, CGPoint point, std::chrono::milliseconds time);
std::string swipe(GtkWidget* widget, CGPoint from, CGPoint to);
std::string scrollAt(GtkWidget* widget, CGPoint point, int clicks);  // of a wheel; down is more than 0
std::string type(GtkWidget* widget, const std::string& text);        // where the keyboard is

}  // namespace velto::preview
