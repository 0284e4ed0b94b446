// The engine hears of every turn and lets it go on, so that page and list would both move: it hears only of
// those that the page wants, and those go no further.
#include "velto/gtk/web/WheelShare.h"

#include "velto/gtk/web/PageUse.h"

namespace velto::gtk {
namespace {

GPtr<GtkEventController> scrollControllerOf(GtkWidget* widget) {
  const auto all = GPtr<GListModel>::adopt(gtk_widget_observe_controllers(widget));
  for (guint i = 0; i < g_list_model_get_n_items(all); ++i) {
    auto one = GPtr<GtkEventController>::adopt(GTK_EVENT_CONTROLLER(g_list_model_get_item(all, i)));
    if (GTK_IS_EVENT_CONTROLLER_SCROLL(one.get())) return one;
  }
  return {};
}

}  // namespace

WheelShare::WheelShare(WebKitWebView* view, GtkWidget* around)
    : view_(view),
      around_(around),
      end_(gtk_event_controller_scroll_new(GTK_EVENT_CONTROLLER_SCROLL_BOTH_AXES)),
      wheel_(scrollControllerOf(GTK_WIDGET(view))) {
  g_signal_connect(end_, "scroll", G_CALLBACK(turned), this);
  gtk_widget_add_controller(around_, end_);
  if (wheel_) phase_ = gtk_event_controller_get_propagation_phase(wheel_);
  auto* manager = webkit_web_view_get_user_content_manager(view_);
  g_signal_connect(manager, wheelUseSignal, G_CALLBACK(told), this);
  webkit_user_content_manager_register_script_message_handler(manager, wheelUseHandler, nullptr);
}

WheelShare::~WheelShare() {
  g_signal_handlers_disconnect_by_data(end_, this);
  gtk_widget_remove_controller(around_, end_);
  auto* manager = webkit_web_view_get_user_content_manager(view_);
  webkit_user_content_manager_unregister_script_message_handler(manager, wheelUseHandler, nullptr);
  g_signal_handlers_disconnect_by_data(manager, this);
}

void WheelShare::setPageScrolls(bool scrolls) {
  pageScrolls_ = scrolls;
  apply();
}

void WheelShare::documentChanged() {
  pageUses_ = false;
  apply();
}

void WheelShare::told(WebKitUserContentManager*, JSCValue* uses, WheelShare* self) noexcept {
  self->pageUses_ = jsc_value_to_boolean(uses);
  self->apply();
}

void WheelShare::apply() {
  if (wheel_) gtk_event_controller_set_propagation_phase(wheel_, pageGetsIt() ? phase_ : GTK_PHASE_NONE);
}

gboolean WheelShare::turned(GtkEventControllerScroll*, double, double, WheelShare* self) noexcept {
  return self->pageGetsIt();
}

}  // namespace velto::gtk
