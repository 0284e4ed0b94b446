// The engine hears of every turn and lets it go on, so that page and list would both move: it hears only of
// those that the page wants, and those go no further.
#include "velto/gtk/web/WheelShare.h"

namespace velto::gtk {
namespace {

constexpr char handler[] = "veltoWheel";
constexpr char signal[] = "script-message-received::veltoWheel";

// Says whether the page uses the wheel: when it starts to listen, and whenever the pointer comes to another
// element.
constexpr char script[] = R"js((() => {
  const host = window.webkit && window.webkit.messageHandlers.veltoWheel;
  if (!host) return;
  const tell = uses => host.postMessage(uses);
  const add = EventTarget.prototype.addEventListener;
  let listens = false;
  EventTarget.prototype.addEventListener = function (type) {
    if (type === 'wheel' || type === 'mousewheel') tell(listens = true);
    return add.apply(this, arguments);
  };
  const uses = element => {
    for (; element && element.nodeType === 1; element = element.parentElement) {
      const style = getComputedStyle(element);
      const scrolls = (overflow, inside, size) => /auto|scroll/.test(overflow) && inside > size;
      if (element.onwheel || scrolls(style.overflowY, element.scrollHeight, element.clientHeight) ||
          scrolls(style.overflowX, element.scrollWidth, element.clientWidth)) return true;
    }
    const root = document.scrollingElement;
    return !!(window.onwheel || document.onwheel || (root && window !== top && root.scrollHeight > root.clientHeight));
  };
  add.call(document, 'mouseover', event => tell(listens || uses(event.target)), {capture: true, passive: true});
})())js";

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
  g_signal_connect(manager, signal, G_CALLBACK(told), this);
  webkit_user_content_manager_register_script_message_handler(manager, handler, nullptr);
  const GOwned<WebKitUserScript, webkit_user_script_unref> made(
      webkit_user_script_new(script, WEBKIT_USER_CONTENT_INJECT_ALL_FRAMES,
                             WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START, nullptr, nullptr));
  webkit_user_content_manager_add_script(manager, made.get());
}

WheelShare::~WheelShare() {
  g_signal_handlers_disconnect_by_data(end_, this);
  gtk_widget_remove_controller(around_, end_);
  auto* manager = webkit_web_view_get_user_content_manager(view_);
  webkit_user_content_manager_unregister_script_message_handler(manager, handler, nullptr);
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
