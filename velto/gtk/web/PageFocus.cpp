// At the end of a page the engine moves the window's focus on. Some versions then give the key back as one that
// the page did not use, and the window would move the focus once more: such a key ends here.
#include "velto/gtk/web/PageFocus.h"

namespace velto::gtk {
namespace {

bool isTab(guint key) {
  return key == GDK_KEY_Tab || key == GDK_KEY_ISO_Left_Tab || key == GDK_KEY_KP_Tab;
}

guint32 timeOf(GtkEventControllerKey* keys) {
  return gtk_event_controller_get_current_event_time(GTK_EVENT_CONTROLLER(keys));
}

}  // namespace

PageFocus::PageFocus(WebKitWebView* view)
    : view_(GTK_WIDGET(view)), keys_(gtk_event_controller_key_new()), guard_(this, [this] {
        auto* made = gtk_event_controller_key_new();
        g_signal_connect(made, "key-pressed", G_CALLBACK(reachedWindow), this);
        return made;
      }) {
  gtk_event_controller_set_propagation_phase(keys_, GTK_PHASE_CAPTURE);
  g_signal_connect(keys_, "key-pressed", G_CALLBACK(reachedPage), this);
  gtk_widget_add_controller(view_, keys_);
}

PageFocus::~PageFocus() {
  g_signal_handlers_disconnect_by_data(keys_, this);
  gtk_widget_remove_controller(view_, keys_);
}

gboolean PageFocus::reachedPage(GtkEventControllerKey* keys, guint key, guint, GdkModifierType,
                                PageFocus* self) noexcept {
  if (!isTab(key)) return GDK_EVENT_PROPAGATE;
  self->time_ = timeOf(keys);
  self->guard_.moveTo(gtk_widget_get_root(self->view_));
  return GDK_EVENT_PROPAGATE;
}

// Ahead of everything in the window.
gboolean PageFocus::reachedWindow(GtkEventControllerKey* keys, guint key, guint, GdkModifierType,
                                  PageFocus* self) noexcept {
  if (!isTab(key) || timeOf(keys) != self->time_) return GDK_EVENT_PROPAGATE;
  auto* focus = gtk_root_get_focus(GTK_ROOT(self->guard_.window()));
  const bool isHere = focus && (focus == self->view_ || gtk_widget_is_ancestor(focus, self->view_));
  return isHere ? GDK_EVENT_PROPAGATE : GDK_EVENT_STOP;
}

}  // namespace velto::gtk
