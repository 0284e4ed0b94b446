// Keeps what it is told, and complains about what no screen could show.
#include "velto/headless/views/RecordingViews.h"

#include "velto/headless/VirtualQueue.h"
#include "velto/platform/ui/UIView.h"
#include "velto/platform/ui/ViewChanges.h"

#include <cmath>
#include <stdexcept>

namespace velto::headless {

RecordingViewPeer::RecordingViewPeer(std::shared_ptr<VirtualQueue> queue) : queue_(std::move(queue)) {}

RecordingViewPeer::~RecordingViewPeer() {
  queue_->reportUnlessMain("the destruction of a view");
  detach();
  for (auto* child : subviews_) child->superview_ = nullptr;
}

RecordingViewPeer& RecordingViewPeer::of(const UIView& view) {
  return dynamic_cast<RecordingViewPeer&>(view.peer());
}

void RecordingViewPeer::setFrame(const CGRect& frame) {
  queue_->requireMain("ViewPeer::setFrame");
  if (!std::isfinite(frame.origin.x) || !std::isfinite(frame.origin.y) || !std::isfinite(frame.size.width) ||
      !std::isfinite(frame.size.height))
    throw std::logic_error("velto::headless: a view's frame is not finite");
  frame_ = frame;
}

void RecordingViewPeer::setAlpha(double alpha) {
  queue_->requireMain("ViewPeer::setAlpha");
  alpha_ = alpha;
}

void RecordingViewPeer::setHidden(bool hidden) {
  queue_->requireMain("ViewPeer::setHidden");
  hidden_ = hidden;
}

void RecordingViewPeer::setBackgroundColor(const UIColor& color) {
  queue_->requireMain("ViewPeer::setBackgroundColor");
  backgroundColor_ = color;
}

void RecordingViewPeer::setTouchable(bool touchable) {
  queue_->requireMain("ViewPeer::setTouchable");
  touchable_ = touchable;
}

void RecordingViewPeer::setModal(bool modal) {
  queue_->requireMain("ViewPeer::setModal");
  modal_ = modal;
}

void RecordingViewPeer::insertSubview(ViewPeer& child, ViewPeer* front) {
  queue_->requireMain("ViewPeer::insertSubview");
  auto& added = dynamic_cast<RecordingViewPeer&>(child);
  if (added.superview_) throw std::logic_error("velto::headless: a view is put into two views");
  const auto place = front ? std::find(subviews_.begin(), subviews_.end(), front) : subviews_.end();
  if (front && place == subviews_.end())
    throw std::logic_error("velto::headless: a view is put behind one that is elsewhere");
  subviews_.insert(place, &added);
  added.superview_ = this;
}

void RecordingViewPeer::removeFromSuperview() {
  queue_->requireMain("ViewPeer::removeFromSuperview");
  detach();
}

void RecordingViewPeer::setWindowSight(WindowSight sight) {
  queue_->requireMain("RecordingViewPeer::setWindowSight");
  sight_ = std::move(sight);
  ViewChanges::note();
}

void RecordingViewPeer::detach() {
  if (auto* parent = std::exchange(superview_, nullptr)) std::erase(parent->subviews_, this);
}

void RecordingButtonPeer::setLook(const ButtonLook& look) {
  queue().requireMain("ButtonPeer::setLook");
  look_ = look;
}

}  // namespace velto::headless
