// The button: state, actions, and the look that its peer paints.
#include "velto/platform/ui/UIButton.h"

#include "velto/platform/Platform.h"
#include "velto/platform/ViewSystem.h"

namespace velto {

UIButton::UIButton() : UIButton(Platform::current().views().makeButton()) {}

// The base takes the peer over; this pointer to the same object only remembers that it is a button's. The
// braces matter: they read the pointer before the peer is moved.
UIButton::UIButton(std::unique_ptr<ButtonPeer> peer) : UIButton{peer.get(), std::move(peer)} {}

UIButton::UIButton(ButtonPeer* buttonPeer, std::unique_ptr<ViewPeer> peer)
    : UIView(std::move(peer)), buttonPeer_(buttonPeer) {
  setTitleColor(UIColor::whiteColor(), UIControlStateNormal);
}

void UIButton::setTitle(const std::string& title) {
  title_ = title;
  updateLook();
}

void UIButton::setTitleColor(const UIColor& color, UIControlState state) {
  titleColors_[state] = color;
  updateLook();
}

UIColor UIButton::titleColor(UIControlState state) const {
  const auto found = titleColors_.find(state);
  return found != titleColors_.end() ? found->second : titleColors_.at(UIControlStateNormal);
}

void UIButton::setTitleFontSize(double points) {
  fontSize_ = points;
  updateLook();
}

void UIButton::setShowsTouchWhenHighlighted(bool shows) {
  showsTouch_ = shows;
  updateLook();
}

void UIButton::setEnabled(bool enabled) {
  enabled_ = enabled;
  updateLook();
}

void UIButton::setHighlighted(bool highlighted) {
  highlighted_ = highlighted;
  updateLook();
}

void UIButton::setShape(std::optional<ButtonShape> shape) {
  shape_ = shape;
  updateLook();
}

void UIButton::addAction(std::function<void()> action, UIControlEvents events) {
  if (events & UIControlEventTouchUpInside) actions_.push_back(std::move(action));
}

void UIButton::sendTouchUpInside() {
  if (!enabled_) return;
  const auto self = shared_from_this();  // an action may remove the button
  const auto actions = actions_;
  for (const auto& action : actions) action();
}

void UIButton::peerTapped(CGPoint) {
  sendTouchUpInside();
}

void UIButton::updateLook() {
  const auto state = !enabled_      ? UIControlStateDisabled
                     : highlighted_ ? UIControlStateHighlighted
                                    : UIControlStateNormal;
  buttonPeer_->setLook({title_, titleColor(state), fontSize_, enabled_, showsTouch_, shape_});
}

}  // namespace velto
