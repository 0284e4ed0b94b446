// See Inspector.h.
#include "Inspector.h"

#include <functional>

namespace demo {
namespace {

GtkWidget* findIn(GtkWidget* tree, const std::function<bool(GtkWidget*)>& isIt) {
  if (isIt(tree)) return tree;
  for (auto* child = gtk_widget_get_first_child(tree); child; child = gtk_widget_get_next_sibling(child))
    if (auto* found = findIn(child, isIt)) return found;
  return nullptr;
}

}  // namespace

GtkWidget* openInspector() {
  gtk_window_set_interactive_debugging(TRUE);
  GListModel* windows = gtk_window_get_toplevels();
  for (guint i = 0; i < g_list_model_get_n_items(windows); ++i) {
    auto* window = GTK_WIDGET(g_list_model_get_item(windows, i));
    auto* page = findIn(
        window, [](GtkWidget* it) { return std::string(G_OBJECT_TYPE_NAME(it)) == "VeltoInspectorPage"; });
    const bool isInspector = std::string(G_OBJECT_TYPE_NAME(window)) == "GtkInspectorWindow";
    g_object_unref(window);  // the list has it still
    if (!page || !isInspector) continue;
    auto* stack = gtk_widget_get_ancestor(page, GTK_TYPE_STACK);
    if (stack) gtk_stack_set_visible_child_name(GTK_STACK(stack), "velto");
    return page;
  }
  return nullptr;
}

GtkWidget* buttonIn(GtkWidget* tree, const char* label) {
  return findIn(tree, [label](GtkWidget* it) {
    if (!GTK_IS_BUTTON(it)) return false;
    const char* own = gtk_button_get_label(GTK_BUTTON(it));
    return (own && std::string(own) == label) || std::string(gtk_widget_get_name(it)) == label;
  });
}

bool says(GtkWidget* tree, const std::string& text) {
  return findIn(tree, [&](GtkWidget* it) {
    return GTK_IS_LABEL(it) && gtk_widget_get_visible(it) &&
           std::string(gtk_label_get_text(GTK_LABEL(it))).find(text) != std::string::npos;
  });
}

void closeInspector() {
  gtk_window_set_interactive_debugging(FALSE);
}

}  // namespace demo
