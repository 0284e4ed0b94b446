// What a window shows inside its frame, and how that is replaced: most windows have a child, those of
// libadwaita keep that for themselves and have a content. Used by host windows; main thread.
#pragma once

#include <gtk/gtk.h>

namespace velto::gtk {

// The property of the window that holds it. libadwaita's windows are known by their types' names, so the
// library is not linked for them.
const char* contentProperty(GtkWindow* window);

GtkWidget* windowContent(GtkWindow* window);
void setWindowContent(GtkWindow* window, GtkWidget* content);  // null: none

}  // namespace velto::gtk
