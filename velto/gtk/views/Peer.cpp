// The peer: passes orders to its widget, and tells taps.
#include "velto/gtk/views/Peer.h"

#include "velto/platform/ui/UIView.h"

#include <cmath>

namespace velto::gtk {
namespace {

constexpr double tapRadius = 10;         // points that a finger or hand may slip within a tap
constexpr double leastTouchable = 0.01;  // a fainter view takes no touches, as on a phone

std::optional<UIKey> keyOf(guint key) {
  switch (key) {
    case GDK_KEY_space:
      return UIKey::Space;
    case GDK_KEY_Left:
      return UIKey::LeftArrow;
    case GDK_KEY_Right:
      return UIKey::RightArrow;
    case GDK_KEY_Up:
      return UIKey::UpArrow;
    case GDK_KEY_Down:
      return UIKey::DownArrow;
    case GDK_KEY_m:
    case GDK_KEY_M:
      return UIKey::M;
    default:
      return std::nullopt;
  }
}

bool isTap(CGPoint from, CGPoint to) {
  return std::hypot(to.x - from.x, to.y - from.y) <= tapRadius;
}

}  // namespace

Peer::Peer(GtkAccessibleRole role) : widget_(GPtr<GtkWidget>::sink(newViewWidget(role))) {}

Peer::~Peer() {
  // The widget may outlive this by the event that is under way.
  if (tap_) g_signal_handlers_disconnect_by_data(tap_, this);
  modal_.reset();
  Peer::removeFromSuperview();
}

void Peer::setFrame(const CGRect& frame) {
  setViewFrame(widget_, frame);
}

void Peer::setAlpha(double alpha) {
  gtk_widget_set_opacity(widget_, alpha);
  gtk_widget_set_can_target(widget_, alpha >= leastTouchable);
}

void Peer::setHidden(bool hidden) {
  gtk_widget_set_visible(widget_, !hidden);
}

void Peer::setBackgroundColor(const UIColor& color) {
  setViewColor(widget_, color);
}

void Peer::setTouchable(bool touchable) {
  if (touchable == (tap_ != nullptr)) return;
  setViewTarget(widget_, touchable ? ViewTarget::WhenFilled : ViewTarget::WhenPainted);
  if (!touchable) {
    g_signal_handlers_disconnect_by_data(tap_, this);
    gtk_widget_remove_controller(widget_, GTK_EVENT_CONTROLLER(std::exchange(tap_, nullptr)));
    return;
  }
  // It listens before whatever is inside and never claims the touch, so a page gets all of it as well.
  tap_ = gtk_gesture_click_new();
  gtk_event_controller_set_propagation_phase(GTK_EVENT_CONTROLLER(tap_), GTK_PHASE_CAPTURE);
  g_signal_connect(tap_, "pressed", G_CALLBACK(touchBegan), this);
  g_signal_connect(tap_, "released", G_CALLBACK(touchEnded), this);
  gtk_widget_add_controller(widget_, GTK_EVENT_CONTROLLER(tap_));
}

void Peer::touchBegan(GtkGestureClick*, int, double x, double y, Peer* self) noexcept {
  self->pressed_ = {x, y};
}

void Peer::touchEnded(GtkGestureClick*, int, double x, double y, Peer* self) noexcept {
  const auto pressed = std::exchange(self->pressed_, std::nullopt);
  const CGRect bounds = {{0, 0},
                         {static_cast<double>(gtk_widget_get_width(self->widget_)),
                          static_cast<double>(gtk_widget_get_height(self->widget_))}};
  if (pressed && isTap(*pressed, {x, y}) && bounds.contains({x, y})) self->owner_->peerTapped({x, y});
}

void Peer::setModal(bool modal) {
  modal_.reset();
  setViewTarget(widget_, modal ? ViewTarget::Always : ViewTarget::WhenPainted);
  if (!modal) return;
  modal_ = std::make_unique<ModalFocus>(
      widget_, [this] { owner_->peerEscaped(); },
      [this](guint key) {
        const auto known = keyOf(key);
        return known && owner_->peerKeyPressed(*known);
      });
}

void Peer::insertSubview(ViewPeer& child, ViewPeer* front) {
  const auto* next = dynamic_cast<Peer*>(front);
  gtk_widget_insert_before(dynamic_cast<Peer&>(child).widget_, container(), next ? next->widget() : nullptr);
}

void Peer::removeFromSuperview() {
  if (gtk_widget_get_parent(widget_)) gtk_widget_unparent(widget_);
}

}  // namespace velto::gtk
