// One modal presentation: the view that covers the window, the way in, the way out. Made and owned by the
// controller that presents (UIViewController::presentViewController); main thread.
#pragma once

#include "velto/platform/Handle.h"
#include "velto/platform/ui/UIViewControllerTransitioning.h"

#include <functional>
#include <memory>
#include <vector>

namespace velto {

class UIPresentation final : public UIViewControllerContextTransitioning,
                             public std::enable_shared_from_this<UIPresentation> {
 public:
  using Completion = std::function<void()>;

  UIPresentation(UIViewController& presenter, std::shared_ptr<UIViewController> presented);

  void come(UIViewController& source, bool animated, Completion completion);
  void go(bool animated, Completion completion);
  // The presenter is being destroyed: everything ends at once, and whoever waits is told.
  void presenterGone();

  const std::shared_ptr<UIViewController>& presented() const { return presented_; }

  std::shared_ptr<UIView> containerView() const override { return cover_; }
  std::shared_ptr<UIViewController> presentedViewController() const override { return presented_; }
  CGRect finalFrameForViewController(const UIViewController&) const override { return cover_->bounds(); }
  bool transitionWasCancelled() const override { return phase_ == Phase::Gone; }
  void completeTransition(bool didComplete) override;

 private:
  enum class Phase { Coming, Shown, Going, Gone };
  struct Departure {
    bool animated = false;
    Completion completion;
  };

  void arrived();
  void depart(bool animated);
  void gone();

  UIViewController* presenter_;
  std::shared_ptr<UIViewController> presented_;
  std::shared_ptr<UIView> cover_;
  std::shared_ptr<UIViewControllerAnimatedTransitioning> animator_;
  Phase phase_ = Phase::Coming;
  Completion arrival_;
  std::vector<Departure> departures_;
  Handle platformObserver_;
};

}  // namespace velto
