// Custom transitions of presented view controllers, and what runs beside a rotation. Main thread.
#pragma once

#include "velto/Export.h"
#include "velto/platform/ui/UIViewController.h"

#include <functional>
#include <memory>

namespace velto {

// One transition in progress: who comes or goes, and into which container. Supplied by whoever presents.
class VELTO_EXPORT UIViewControllerContextTransitioning {
 public:
  virtual ~UIViewControllerContextTransitioning() = default;
  virtual std::shared_ptr<UIView> containerView() const = 0;
  virtual std::shared_ptr<UIViewController> presentedViewController() const = 0;
  virtual CGRect finalFrameForViewController(const UIViewController& controller) const = 0;
  virtual bool transitionWasCancelled() const = 0;
  virtual void completeTransition(bool didComplete) = 0;  // exactly once, at the end
};

class VELTO_EXPORT UIViewControllerAnimatedTransitioning {
 public:
  virtual ~UIViewControllerAnimatedTransitioning() = default;
  virtual double transitionDuration() const = 0;  // seconds
  virtual void animateTransition(const std::shared_ptr<UIViewControllerContextTransitioning>& context) = 0;
};

// Names the animators of a controller that is presented with UIModalPresentationCustom; null for none.
class VELTO_EXPORT UIViewControllerTransitioningDelegate {
 public:
  virtual ~UIViewControllerTransitioningDelegate() = default;
  virtual std::shared_ptr<UIViewControllerAnimatedTransitioning> animationControllerForPresentedController(
      UIViewController& presented, UIViewController& presentingController,
      UIViewController& sourceController) = 0;
  virtual std::shared_ptr<UIViewControllerAnimatedTransitioning> animationControllerForDismissedController(
      UIViewController& dismissed) = 0;
};

// A change of the window's size that is being animated, such as a rotation.
class VELTO_EXPORT UIViewControllerTransitionCoordinator {
 public:
  virtual ~UIViewControllerTransitionCoordinator() = default;
  virtual void animateAlongsideTransition(std::function<void()> animation) = 0;
};

}  // namespace velto
