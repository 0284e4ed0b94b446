// How ads come in: slides with and without spring for banners and
// interstitials, and the fade with which the latter go. Main thread.
#pragma once

#include "velto/core/VeltoConstants.h"
#include "velto/platform/ui/UIViewControllerTransitioning.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace velto {

class VeltoUIAnimation {
 public:
  // Slides the view to its final frame (container coordinates). With a transition view it is first put into
  // that, pinned to its edges. Times in seconds. The completion may be empty.
  static void animatePresentView(const std::shared_ptr<UIView>& presentedView,
                                 const std::shared_ptr<UIView>& containerView,
                                 const std::shared_ptr<UIView>& transitionView, CGRect finalFrame,
                                 int64_t animation, double duration, double delay,
                                 std::function<void(bool finished)> completion);
};

class VeltoUIAnimatedTransitioning : public UIViewControllerAnimatedTransitioning {
 public:
  enum Operation : uint64_t { Present = 0, Dismiss = 1 };

  static std::shared_ptr<VeltoUIAnimatedTransitioning> animatorForAnimation(int64_t animation);

  double transitionDuration() const override;
  void animateTransition(const std::shared_ptr<UIViewControllerContextTransitioning>& context) override;
  void presentAnimateTransitioningUsing(const std::shared_ptr<UIViewControllerContextTransitioning>& context);
  void dismmissAnimateTransitioning(const std::shared_ptr<UIViewControllerContextTransitioning>& context);

  uint64_t operation = Present;
  int64_t animation = VeltoAnimationNone;
};

}  // namespace velto
