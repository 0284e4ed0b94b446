// Ears on a window: one controller for each window, as the window's end takes it along.
#include "velto/gtk/web/WindowEars.h"

namespace velto::gtk {

WindowEars::WindowEars(gpointer owner, std::function<GtkEventController*()> make)
    : owner_(owner), make_(std::move(make)) {}

void WindowEars::moveTo(GtkRoot* window) {
  if (window && GTK_WIDGET(window) == window_) return;
  if (controller_) g_signal_handlers_disconnect_by_data(controller_.get(), owner_);
  if (window_) gtk_widget_remove_controller(window_, controller_);
  g_clear_weak_pointer(&window_);
  controller_.reset();
  if (!window) return;
  controller_ = GPtr<GtkEventController>::retain(make_());
  gtk_event_controller_set_propagation_phase(controller_, GTK_PHASE_CAPTURE);
  g_set_weak_pointer(&window_, GTK_WIDGET(window));
  gtk_widget_add_controller(window_, controller_);
}

}  // namespace velto::gtk
