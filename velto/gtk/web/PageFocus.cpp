// At the end of a page the engine moves the window's focus on, and then gives the key back as one that the page
// did not use, so that the window moves it once more. Only the second is let through: it finds the focus still
// in the page, and goes to its neighbour.
#include "velto/gtk/web/PageFocus.h"

#include "velto/gtk/views/ViewWidget.h"

#include <utility>

namespace velto::gtk {
namespace {

bool isTab(guint key) {
  return key == GDK_KEY_Tab || key == GDK_KEY_ISO_Left_Tab || key == GDK_KEY_KP_Tab;
}

}  // namespace

PageFocus::PageFocus(WebKitWebView* view, GtkWidget* around)
    : view_(GTK_WIDGET(view)),
      around_(around),
      keys_(gtk_event_controller_key_new()),
      after_(gtk_event_controller_key_new()) {
  gtk_event_controller_set_propagation_phase(keys_, GTK_PHASE_CAPTURE);
  g_signal_connect(keys_, "key-pressed", G_CALLBACK(reachedPage), this);
  gtk_widget_add_controller(view_, keys_);
  g_signal_connect(after_, "key-pressed", G_CALLBACK(leftOver), this);
  gtk_widget_add_controller(around_, after_);
  setViewKeepsFocus(around_, [this] { return keeps(); });
}

PageFocus::~PageFocus() {
  setViewKeepsFocus(around_, nullptr);
  g_signal_handlers_disconnect_by_data(keys_, this);
  gtk_widget_remove_controller(view_, keys_);
  g_signal_handlers_disconnect_by_data(after_, this);
  gtk_widget_remove_controller(around_, after_);
}

gboolean PageFocus::reachedPage(GtkEventControllerKey*, guint key, guint, GdkModifierType,
                                PageFocus* self) noexcept {
  if (isTab(key)) self->atPage_ = true;
  return GDK_EVENT_PROPAGATE;
}

gboolean PageFocus::leftOver(GtkEventControllerKey*, guint key, guint, GdkModifierType,
                             PageFocus* self) noexcept {
  if (isTab(key)) self->atPage_ = false;
  return GDK_EVENT_PROPAGATE;
}

bool PageFocus::keeps() {
  auto* root = gtk_widget_get_root(view_);
  auto* focus = root ? gtk_root_get_focus(root) : nullptr;
  const bool isHere = focus && (focus == view_ || gtk_widget_is_ancestor(focus, view_));
  return std::exchange(atPage_, false) && isHere;
}

}  // namespace velto::gtk
