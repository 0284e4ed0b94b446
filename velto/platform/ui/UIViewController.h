// A view with behaviour, in a tree of controllers. The host application's window is one; the library's
// banners and interstitials are others, put into it. Main thread only.
#pragma once

#include "velto/Export.h"
#include "velto/platform/ui/UIView.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace velto {

enum UIInterfaceOrientationMask : uint64_t {
  UIInterfaceOrientationMaskPortrait = 2,
  UIInterfaceOrientationMaskLandscapeRight = 8,
  UIInterfaceOrientationMaskLandscapeLeft = 16,
  UIInterfaceOrientationMaskAll = 30,
};

enum : int64_t { UIModalPresentationCustom = 4 };

class UIPresentation;
class UIViewControllerTransitionCoordinator;
class UIViewControllerTransitioningDelegate;

class VELTO_EXPORT UIViewController : public UIResponder,
                                      public std::enable_shared_from_this<UIViewController> {
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

  // Modal presentation: the controller's view comes over everything in this controller's window, with the
  // keyboard in its hand. The completion comes later on the main queue, once it is there. A presentation that
  // is refused (nothing of this is in a window, this controller's tree presents another one, or that
  // controller is presented already) calls it too, and leaves the view outside any window. The outermost
  // parent presents, and owns what it presents.
  void presentViewController(const std::shared_ptr<UIViewController>& controller, bool animated,
                             std::function<void()> completion);
  bool canPresent() const;  // in a window that shows no other one
  // Takes this controller off again or, when it is not presented itself, what it presents. One that is still
  // coming is let come first. The completion comes later on the main queue.
  void dismissViewControllerAnimated(bool animated, std::function<void()> completion);
  UIViewController* presentingViewController() const { return presenting_; }
  std::shared_ptr<UIViewController> presentedViewController() const;
  // For platforms: the window of this controller goes for good, and with it what is presented.
  void platformWindowGone();
  void setTransitioningDelegate(std::weak_ptr<UIViewControllerTransitioningDelegate> delegate) {
    transitioningDelegate_ = std::move(delegate);
  }
  // Only UIModalPresentationCustom asks the transitioning
  // delegate for animators; else views come and go at once.
  void setModalPresentationStyle(int64_t style) { modalPresentationStyle_ = style; }
  // The person wants to leave what is presented (Escape on a keyboard). Whether that was understood.
  virtual bool accessibilityPerformEscape() { return false; }
  // Presses a key on what is presented. Whether it meant something.
  virtual bool pressesBegan(UIKey /*key*/) { return false; }

  // Its view came into a window, or is about to leave it.
  virtual void viewWillAppear(bool /*animated*/) {}
  virtual void viewWillDisappear(bool /*animated*/) {}
  // The window that it was presented in has gone for good, also one that was hidden.
  virtual void presenterDidGo() {}

  // The window takes another size, such as in a rotation. Told by the platform to a window's controller,
  // passed on to children and to what is presented.
  virtual void viewWillTransitionToSize(CGSize size, UIViewControllerTransitionCoordinator& coordinator);

  virtual bool shouldAutorotate() const { return true; }
  virtual uint64_t supportedInterfaceOrientations() const { return UIInterfaceOrientationMaskAll; }
  static void attemptRotationToDeviceOrientation();

  // Lengths of the bars that cover the view's top and bottom, in points.
  double topLayoutGuideLength() const { return view_->safeAreaInsets().top; }
  double bottomLayoutGuideLength() const { return view_->safeAreaInsets().bottom; }

 private:
  friend class UIPresentation;

  std::shared_ptr<UIView> view_;
  UIViewController* parent_ = nullptr;
  std::vector<std::shared_ptr<UIViewController>> children_;
  std::shared_ptr<UIPresentation> presentation_;  // of what this one presents
  UIViewController* presenting_ = nullptr;
  std::weak_ptr<UIViewControllerTransitioningDelegate> transitioningDelegate_;
  int64_t modalPresentationStyle_ = 0;
};

}  // namespace velto
