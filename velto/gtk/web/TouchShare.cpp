// The toolkit asks the outermost gestures first, so that a list claims a finger that moves far enough before the
// engine hears of it. Where the page uses it, those gestures are denied it just before. And what a list claims
// comes to no end for the engine, which would tell the page of that finger for ever: it is told.
#include "velto/gtk/web/TouchShare.h"

#include "velto/gtk/web/PageUse.h"

#include <algorithm>
#include <cmath>

namespace velto::gtk {
namespace {

using Controllers = std::vector<GPtr<GtkEventController>>;

Controllers controllersOf(GtkWidget* widget, GType type) {
  Controllers found;
  const auto all = GPtr<GListModel>::adopt(gtk_widget_observe_controllers(widget));
  for (guint i = 0; i < g_list_model_get_n_items(all); ++i) {
    auto one = GPtr<GtkEventController>::adopt(GTK_EVENT_CONTROLLER(g_list_model_get_item(all, i)));
    if (G_TYPE_CHECK_INSTANCE_TYPE(one.get(), type)) found.push_back(std::move(one));
  }
  return found;
}

GPtr<GtkEventController> controllerOf(WebKitWebView* view, GType type) {
  auto found = controllersOf(GTK_WIDGET(view), type);
  return found.empty() ? GPtr<GtkEventController>() : std::move(found.front());
}

// Such as those of scrolled windows and of carousels. What looks for taps goes on.
void denyDragsAround(GtkWidget* widget, GdkEventSequence* sequence) {
  while ((widget = gtk_widget_get_parent(widget)))
    for (const auto& found : controllersOf(widget, GTK_TYPE_GESTURE_DRAG)) {
      auto* drag = GTK_GESTURE(found.get());
      if (gtk_gesture_handles_sequence(drag, sequence))
        gtk_gesture_set_state(drag, GTK_EVENT_SEQUENCE_DENIED);
    }
}

}  // namespace

TouchShare::TouchShare(WebKitWebView* view, std::function<void()> taken)
    : view_(view),
      taken_(std::move(taken)),
      engine_(controllerOf(view, GTK_TYPE_EVENT_CONTROLLER_LEGACY)),
      drag_(controllerOf(view, GTK_TYPE_GESTURE_DRAG)),
      begins_(gtk_event_controller_legacy_new()),
      ears_(this, [this] {
        auto* made = gtk_event_controller_legacy_new();
        g_signal_connect(made, "event", G_CALLBACK(reachedWindow), this);
        return made;
      }) {
  gtk_event_controller_set_propagation_phase(begins_, GTK_PHASE_CAPTURE);
  g_signal_connect(begins_, "event", G_CALLBACK(reachedPage), this);
  gtk_widget_add_controller(GTK_WIDGET(view_), begins_);
  if (drag_) g_signal_connect(drag_, "cancel", G_CALLBACK(cancelled), this);
  auto* manager = webkit_web_view_get_user_content_manager(view_);
  g_signal_connect(manager, touchUseSignal, G_CALLBACK(told), this);
  webkit_user_content_manager_register_script_message_handler_with_reply(manager, touchUseHandler, nullptr);
}

TouchShare::~TouchShare() {
  answerAll(false);
  auto* manager = webkit_web_view_get_user_content_manager(view_);
  webkit_user_content_manager_unregister_script_message_handler(manager, touchUseHandler, nullptr);
  g_signal_handlers_disconnect_by_data(manager, this);
  if (drag_) g_signal_handlers_disconnect_by_data(drag_.get(), this);
  g_signal_handlers_disconnect_by_data(begins_, this);
  gtk_widget_remove_controller(GTK_WIDGET(view_), begins_);
}

// A second finger goes where the first one goes, unless that is lost anyway.
gboolean TouchShare::reachedPage(GtkEventController*, GdkEvent* event, TouchShare* self) noexcept {
  if (gdk_event_get_event_type(event) != GDK_TOUCH_BEGIN) return GDK_EVENT_PROPAGATE;
  if (!self->isOver_ && !self->touch_->taken) return GDK_EVENT_PROPAGATE;
  self->tellEnd();
  self->answerAll(false);
  Touch touch{gdk_event_get_event_sequence(event), 0, 0, self->pageScrolls_ ? useAcross | useAlong : 0};
  gdk_event_get_position(event, &touch.x, &touch.y);
  self->touch_ = touch;
  self->isOver_ = false;
  self->ears_.moveTo(gtk_widget_get_root(GTK_WIDGET(self->view_)));
  return GDK_EVENT_PROPAGATE;
}

gboolean TouchShare::reachedWindow(GtkEventController*, GdkEvent* event, TouchShare* self) noexcept {
  if (self->isOver_ || gdk_event_get_event_sequence(event) != self->touch_->sequence)
    return GDK_EVENT_PROPAGATE;
  Touch& touch = *self->touch_;
  switch (gdk_event_get_event_type(event)) {
    case GDK_TOUCH_UPDATE:
      if (touch.kept || touch.taken || !self->isPages(touch, event)) break;
      touch.kept = true;
      denyDragsAround(GTK_WIDGET(self->view_), touch.sequence);
      break;
    case GDK_TOUCH_END:
    case GDK_TOUCH_CANCEL:
      self->isOver_ = true;
      if (!touch.taken) {
        self->answerAll(false);
      } else {
        self->end_.reset(gdk_event_ref(event));
        if (touch.isTold) self->tellEnd();
      }
      break;
    default:
      break;
  }
  return GDK_EVENT_PROPAGATE;
}

// Before this far a finger drags nothing.
bool TouchShare::isPages(const Touch& touch, GdkEvent* event) const {
  int threshold = 0;
  g_object_get(gtk_widget_get_settings(GTK_WIDGET(view_)), "gtk-dnd-drag-threshold", &threshold, nullptr);
  double x = 0;
  double y = 0;
  gdk_event_get_position(event, &x, &y);
  x = std::abs(x - touch.x);
  y = std::abs(y - touch.y);
  return std::max(x, y) > threshold - 1 && (touch.ways & (x > y ? useAcross : useAlong));
}

void TouchShare::cancelled(GtkGesture*, GdkEventSequence* sequence, TouchShare* self) noexcept {
  if (self->isOver_ || self->touch_->taken || sequence != self->touch_->sequence) return;
  self->touch_->taken = true;
  self->answerAll(true);
  self->taken_();
}

gboolean TouchShare::told(WebKitUserContentManager*, JSCValue* ways, WebKitScriptMessageReply* reply,
                          TouchShare* self) noexcept {
  Question question{GPtr<JSCContext>::retain(jsc_value_get_context(ways)), {}};
  question.reply.reset(webkit_script_message_reply_ref(reply));
  const int said = jsc_value_to_int32(ways);
  auto& touch = self->touch_;
  if (touch && touch->taken) {
    question.answer(true);
    touch->isTold |= said == knowsEnd;
    if (self->isOver_ && touch->isTold) self->tellEnd();
  } else if (self->isOver_) {
    question.answer(false);
  } else {
    touch->ways |= said;
    self->waiting_.push_back(std::move(question));
  }
  return TRUE;
}

void TouchShare::Question::answer(bool taken) const {
  const auto value = GPtr<JSCValue>::adopt(jsc_value_new_boolean(context, taken));
  webkit_script_message_reply_return_value(reply.get(), value);
}

void TouchShare::answerAll(bool taken) {
  for (const auto& question : std::exchange(waiting_, {})) question.answer(taken);
}

// The engine wants to be in a window then; a row that scrolled away is not.
void TouchShare::tellEnd() {
  if (!end_ || !engine_ || !gtk_widget_get_root(GTK_WIDGET(view_))) return;
  const auto event = std::move(end_);
  gboolean handled = FALSE;
  g_signal_emit_by_name(engine_.get(), "event", event.get(), &handled);
}

}  // namespace velto::gtk
