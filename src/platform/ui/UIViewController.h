// A view with behaviour, in a tree of controllers. The host application's window is one; the library's
// banners and interstitials are others, put into it. Main thread only.
#pragma once

#include "velto/platform/ui/UIView.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace velto {

enum : uint64_t { UIInterfaceOrientationMaskAll = 30 };

class UIViewControllerTransitionCoordinator;

class UIViewController : public UIResponder, public std::enable_shared_from_this<UIViewController> {
 public:
  // A controller with an empty view of its own.
  UIViewController();
  // A controller of a view that exists already (platforms wrap a window with it).
  explicit UIViewController(std::shared_ptr<UIView> view);
  UIViewController(const UIViewController&) = delete;
  UIViewController& operator=(const UIViewController&) = delete;
  ~UIViewController() override;

  const std::shared_ptr<UIView>& view() const { return view_; }
  UIResponder* nextResponder() const override { return view_->superview(); }

  // Containment. A parent owns its children, so an attached controller lives until it is taken out.
  void addChildViewController(const std::shared_ptr<UIViewController>& child);
  void removeFromParentViewController();
  UIViewController* parentViewController() const { return parent_; }
  const std::vector<std::shared_ptr<UIViewController>>& childViewControllers() const { return children_; }
  virtual void willMoveToParentViewController(UIViewController* /*parent*/) {}
  virtual void didMoveToParentViewController(UIViewController* /*parent*/) {}

  // Its view came into a window, or is about to leave it.
  virtual void viewWillAppear(bool /*animated*/) {}
  virtual void viewWillDisappear(bool /*animated*/) {}

  // The window takes another size, such as in a rotation. Told by the platform to a window's controller,
  // passed on to children.
  virtual void viewWillTransitionToSize(CGSize size, UIViewControllerTransitionCoordinator& coordinator);

  virtual bool shouldAutorotate() const { return true; }
  virtual uint64_t supportedInterfaceOrientations() const { return UIInterfaceOrientationMaskAll; }
  static void attemptRotationToDeviceOrientation();

  // Lengths of the bars that cover the view's top and bottom, in points.
  double topLayoutGuideLength() const { return view_->safeAreaInsets().top; }
  double bottomLayoutGuideLength() const { return view_->safeAreaInsets().bottom; }

 private:
  std::shared_ptr<UIView> view_;
  UIViewController* parent_ = nullptr;
  std::vector<std::shared_ptr<UIViewController>> children_;
};

}  // namespace velto
