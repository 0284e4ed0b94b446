// The view tree: structure, frames, layout passes, safe areas and taps.
#include "velto/platform/ui/UIView.h"

#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"
#include "velto/platform/ViewSystem.h"
#include "velto/platform/ui/LayoutSolver.h"
#include "velto/platform/ui/UIViewController.h"
#include "velto/platform/ui/ViewChanges.h"

#include <algorithm>

namespace velto {

std::shared_ptr<UIView> UIView::make() {
  return makeWithPeer(Platform::current().views().makeView());
}

std::shared_ptr<UIView> UIView::makeWithPeer(std::unique_ptr<ViewPeer> peer) {
  return std::shared_ptr<UIView>(new UIView(std::move(peer)));
}

UIView::UIView(std::unique_ptr<ViewPeer> peer) : peer_(std::move(peer)) {
  peer_->setOwner(this);
}

UIView::~UIView() {
  animation_.cancel();
  for (const auto& subview : subviews_) {
    subview->peer_->removeFromSuperview();
    subview->superview_ = nullptr;
  }
}

// --- appearance

void UIView::setFrame(const CGRect& frame) {
  if (frame == frame_) return;
  const CGSize before = frame_.size;
  frame_ = frame;
  showFrame();
  ViewChanges::note();
  if (before == frame_.size) return;
  resizeFlexibleSubviews(before);
  layoutTree();
}

void UIView::setAlpha(double alpha) {
  alpha_ = alpha;
  showAlpha();
  ViewChanges::note();
}

void UIView::setHidden(bool hidden) {
  hidden_ = hidden;
  peer_->setHidden(hidden_);
  ViewChanges::note();
}

void UIView::setBackgroundColor(const UIColor& color) {
  backgroundColor_ = color;
  peer_->setBackgroundColor(color);
  ViewChanges::note();
}

bool UIView::paints() const {
  const auto color = backgroundColor_.components();
  return !color || color->alpha > 0 || peer_->paintsContent();
}

void UIView::displace(const CGRect& frame, double alpha) {
  frameDisplacement_ = frame;
  alphaDisplacement_ = alpha;
  showFrame();
  showAlpha();
}

void UIView::showFrame() {
  const CGRect& by = frameDisplacement_;
  peer_->setFrame({{frame_.origin.x + by.origin.x, frame_.origin.y + by.origin.y},
                   {frame_.size.width + by.size.width, frame_.size.height + by.size.height}});
}

void UIView::showAlpha() {
  peer_->setAlpha(std::clamp(alpha_ + alphaDisplacement_, 0.0, 1.0));
}

// --- tree

void UIView::addSubview(const std::shared_ptr<UIView>& view) {
  if (view->superview_ == this) {  // comes to the front, and stays what it is otherwise
    const auto place = std::find(subviews_.begin(), subviews_.end(), view);
    const auto moved = std::move(*place);
    subviews_.erase(place);
    moved->peer_->removeFromSuperview();
    insertInFront(moved);
    ViewChanges::note();
    return;
  }
  view->removeFromSuperview();
  view->superview_ = this;
  insertInFront(view);
  if (isInWindow()) view->windowChanged(true);
  setNeedsLayout();
  ViewChanges::note();
}

void UIView::insertInFront(const std::shared_ptr<UIView>& view) {
  auto place = subviews_.end();
  if (!view->staysInFront())
    place = std::find_if(subviews_.begin(), place, [](const auto& other) { return other->staysInFront(); });
  ViewPeer* front = place == subviews_.end() ? nullptr : (*place)->peer_.get();
  subviews_.insert(place, view);
  peer_->insertSubview(*view->peer_, front);
}

void UIView::removeFromSuperview() {
  if (!superview_) return;
  const auto self = shared_from_this();  // the superview may hold the last pointer
  if (isInWindow()) windowChanged(false);
  if (!superview_) return;  // a controller that hears of it has done so itself
  UIView& parent = *std::exchange(superview_, nullptr);
  std::erase(parent.subviews_, self);
  peer_->removeFromSuperview();
  ViewChanges::note();
  takeTiesOff(*this);
  parent.setNeedsLayout();
}

// Constraints that tie a view to the tree it leaves mean nothing any more, nor those of the views in it.
void UIView::takeTiesOff(const UIView& leaving) {
  const auto involved = involvedIn_;
  for (const auto& constraint : involved) {
    const auto holder = constraint->holder.lock();
    if (holder && !holder->isDescendantOfView(leaving)) holder->removeConstraints({constraint});
  }
  for (const auto& subview : subviews_) subview->takeTiesOff(leaving);
}

bool UIView::isDescendantOfView(const UIView& view) const {
  for (const UIView* ancestor = this; ancestor; ancestor = ancestor->superview_)
    if (ancestor == &view) return true;
  return false;
}

UIView& UIView::root() {
  UIView* view = this;
  while (view->superview_) view = view->superview_;
  return *view;
}

bool UIView::isInWindow() const {
  return const_cast<UIView*>(this)->root().rootInWindow_;
}

UIResponder* UIView::nextResponder() const {
  if (controller_) return controller_;
  return superview_;
}

void UIView::platformSetInWindow(bool inWindow) {
  if (rootInWindow_ == inWindow) return;
  if (!inWindow) windowChanged(false);
  rootInWindow_ = inWindow;
  if (inWindow) windowChanged(true);
  ViewChanges::note();
}

void UIView::windowChanged(bool inWindow) {
  const auto self = shared_from_this();
  if (controller_) inWindow ? controller_->viewWillAppear(false) : controller_->viewWillDisappear(false);
  const auto children = subviews_;
  for (const auto& child : children) child->windowChanged(inWindow);
}

// --- layout

void UIView::setTranslatesAutoresizingMaskIntoConstraints(bool translates) {
  translatesMask_ = translates;
  setNeedsLayout();
}

// They may be given as the list of a view, which changes here.
void UIView::addConstraints(const NSLayoutConstraints& constraints) {
  for (const auto& constraint : NSLayoutConstraints(constraints)) {
    const auto holder = constraint->holder.lock();
    if (holder.get() == this) continue;
    if (holder) holder->removeConstraints({constraint});
    constraints_.push_back(constraint);
    constraint->holder = weak_from_this();
    for (const auto* item : {&constraint->firstItem, &constraint->secondItem})
      if (const auto view = item->view.lock()) view->involve(constraint);
  }
  setNeedsLayout();
}

// So that a layout pass looks at a view's own constraints, and not at all that its superviews hold.
void UIView::involve(const std::shared_ptr<NSLayoutConstraint>& constraint) {
  std::erase_if(involvedIn_, [&](const auto& other) { return other == constraint || !other->isActive(); });
  involvedIn_.push_back(constraint);
}

void UIView::removeConstraints(const NSLayoutConstraints& constraints) {
  for (const auto& constraint : NSLayoutConstraints(constraints)) {
    if (std::erase(constraints_, constraint) == 0) continue;
    constraint->holder.reset();
    for (const auto* item : {&constraint->firstItem, &constraint->secondItem})
      if (const auto view = item->view.lock()) std::erase(view->involvedIn_, constraint);
  }
  setNeedsLayout();
}

void UIView::setNeedsLayout() {
  UIView& top = root();
  if (std::exchange(top.needsLayout_, true)) return;
  auto* platform = Platform::currentOrNull();
  if (!platform || top.weak_from_this().expired()) return;  // on its way out, or still being made
  platform->mainQueue().post([weak = top.weak_from_this()] {
    auto view = weak.lock();
    if (view && view->needsLayout_) view->layoutTree();
  });
}

void UIView::layoutIfNeeded() {
  UIView& top = root();
  if (top.needsLayout_) top.layoutTree();
}

void UIView::layoutTree() {
  const ViewChanges::AsOne together;  // it moves many views, and as many ads may watch
  needsLayout_ = false;
  const auto children = subviews_;
  for (const auto& child : children) {
    const CGRect frame = child->translatesMask_ ? child->frame_ : solvedFrame(*child);
    if (frame.size == child->frame_.size) {
      child->setFrame(frame);
      child->layoutTree();
    } else {
      child->setFrame(frame);  // lays its own subviews out
    }
  }
  layoutSubviews();
}

void UIView::resizeFlexibleSubviews(CGSize from) {
  for (const auto& child : subviews_) {
    if (!child->translatesMask_ || child->autoresizingMask_ == 0) continue;
    CGRect frame = child->frame_;
    if (child->autoresizingMask_ & UIViewAutoresizingFlexibleWidth)
      frame.size.width += frame_.size.width - from.width;
    if (child->autoresizingMask_ & UIViewAutoresizingFlexibleHeight)
      frame.size.height += frame_.size.height - from.height;
    child->setFrame(frame);
  }
}

UILayoutGuide UIView::boxGuide() {
  return {{weak_from_this(), NSLayoutItem::Region::Bounds}};
}
UILayoutGuide UIView::safeAreaLayoutGuide() {
  return {{weak_from_this(), NSLayoutItem::Region::SafeArea}};
}

void UIView::platformSetSafeAreaInsets(const UIEdgeInsets& insets) {
  rootSafeAreaInsets_ = insets;
  setNeedsLayout();
}

UIEdgeInsets UIView::safeAreaInsets() const {
  if (!superview_) return rootSafeAreaInsets_;
  // What remains of the superview's insets once this view's distance from its edges is taken off.
  const UIEdgeInsets outer = superview_->safeAreaInsets();
  const CGSize size = superview_->frame_.size;
  return {std::max(0.0, outer.top - frame_.minY()), std::max(0.0, outer.left - frame_.minX()),
          std::max(0.0, frame_.maxY() - (size.height - outer.bottom)),
          std::max(0.0, frame_.maxX() - (size.width - outer.right))};
}

CGRect UIView::safeAreaFrame() const {
  const UIEdgeInsets insets = safeAreaInsets();
  return {{insets.left, insets.top},
          {std::max(0.0, frame_.size.width - insets.left - insets.right),
           std::max(0.0, frame_.size.height - insets.top - insets.bottom)}};
}

UIEdgeInsets UIView::layoutMargins() const {
  const UIEdgeInsets insets = safeAreaInsets();
  return {insets.top + layoutMargin, insets.left + layoutMargin, insets.bottom + layoutMargin,
          insets.right + layoutMargin};
}

CGPoint UIView::convertPointFromView(CGPoint point, const UIView& view) const {
  for (const UIView* v = &view; v->superview_; v = v->superview_) {
    point.x += v->frame_.origin.x;
    point.y += v->frame_.origin.y;
  }
  for (const UIView* v = this; v->superview_; v = v->superview_) {
    point.x -= v->frame_.origin.x;
    point.y -= v->frame_.origin.y;
  }
  return point;
}

// --- touch

void UIView::addGestureRecognizer(std::shared_ptr<UITapGestureRecognizer> recognizer) {
  recognizers_.push_back(std::move(recognizer));
  peer_->setTouchable(true);
}

void UIView::peerTapped(CGPoint point) {
  const auto self = shared_from_this();
  // The topmost view under the finger tells whether something below the recogniser takes the touch as well.
  const UIView* hit = this;
  bool descended = true;
  while (descended) {
    descended = false;
    for (auto child = hit->subviews_.rbegin(); child != hit->subviews_.rend(); ++child) {
      if ((*child)->hidden_ || !(*child)->frame_.contains(point)) continue;
      hit = child->get();
      point = {point.x - hit->frame_.origin.x, point.y - hit->frame_.origin.y};
      descended = true;
      break;
    }
    if (hit->isControl()) return;
  }
  const auto recognizers = recognizers_;
  for (const auto& recognizer : recognizers) recognizer->recognize(hit != this);
}

}  // namespace velto
