// The toolkit's inspector with Velto's page in front, as Ctrl+Shift+I and a click on its tab bring it. Main thread.
#pragma once

#include <gtk/gtk.h>

#include <string>

namespace demo {

// The page; null where the inspector has none.
GtkWidget* openInspector();
// Of what stands in that tree, the button of that label or that name; null: there is none.
GtkWidget* buttonIn(GtkWidget* tree, const char* label);
// Whether a label there says that.
bool says(GtkWidget* tree, const std::string& text);
void closeInspector();

}  // namespace demo
