// Content by property.
#include "velto/gtk/views/WindowContent.h"

#include "velto/platform/foundation/GMemory.h"

namespace velto::gtk {

// An application's own kind of window may have a property of that name for something else.
const char* contentProperty(GtkWindow* window) {
  const auto* content = g_object_class_find_property(G_OBJECT_GET_CLASS(window), "content");
  const bool isWidget = content && g_type_is_a(content->value_type, GTK_TYPE_WIDGET) &&
                        (content->flags & G_PARAM_READWRITE) == G_PARAM_READWRITE;
  return isWidget && g_str_has_prefix(g_type_name(content->owner_type), "Adw") ? "content" : "child";
}

GtkWidget* windowContent(GtkWindow* window) {
  GtkWidget* content = nullptr;
  g_object_get(window, contentProperty(window), &content, nullptr);
  return GPtr<GtkWidget>::adopt(content);  // the window's own reference keeps it
}

void setWindowContent(GtkWindow* window, GtkWidget* content) {
  g_object_set(window, contentProperty(window), content, nullptr);
}

}  // namespace velto::gtk
