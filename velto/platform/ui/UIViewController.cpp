// The controller tree.
#include "velto/platform/ui/UIViewController.h"

#include "velto/platform/Platform.h"
#include "velto/platform/UIApplication.h"
#include "velto/platform/ui/UIPresentation.h"

namespace velto {

UIViewController::UIViewController() : UIViewController(UIView::make()) {}

UIViewController::UIViewController(std::shared_ptr<UIView> view) : view_(std::move(view)) {
  view_->controller_ = this;
}

UIViewController::~UIViewController() {
  view_->controller_ = nullptr;
  if (presentation_) presentation_->presenterGone();
  for (const auto& child : children_) child->parent_ = nullptr;
}

void UIViewController::addChildViewController(const std::shared_ptr<UIViewController>& child) {
  if (child->parent_ == this) return;
  child->removeFromParentViewController();
  children_.push_back(child);
  child->parent_ = this;
}

void UIViewController::removeFromParentViewController() {
  if (!parent_) return;
  const auto self = shared_from_this();
  std::erase(std::exchange(parent_, nullptr)->children_, self);
}

void UIViewController::viewWillTransitionToSize(CGSize size,
                                                UIViewControllerTransitionCoordinator& coordinator) {
  const auto children = children_;
  for (const auto& child : children) child->viewWillTransitionToSize(size, coordinator);
  if (const auto presented = presentedViewController())
    presented->viewWillTransitionToSize(size, coordinator);
}

void UIViewController::attemptRotationToDeviceOrientation() {
  Platform::current().application().attemptRotationToDeviceOrientation();
}

}  // namespace velto
