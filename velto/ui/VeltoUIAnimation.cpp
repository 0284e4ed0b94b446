// Slides, springs and fades.
#include "velto/ui/VeltoUIAnimation.h"

#include "velto/platform/ui/UIViewAnimation.h"

#include <random>

namespace velto {
namespace {

constexpr double springDamping = 0.5;
constexpr double springVelocity = 5;
constexpr double transitionSeconds = 0.9;
constexpr double dismissSeconds = 0.2;

int64_t randomSlide() {
  std::random_device source;
  return std::uniform_int_distribution<int64_t>(VeltoAnimationFromLeft,
                                                VeltoAnimationFromRightWithSpring)(source);
}

void pinToEdges(const std::shared_ptr<UIView>& view, const std::shared_ptr<UIView>& container) {
  container->addSubview(view);
  view->setTranslatesAutoresizingMaskIntoConstraints(false);
  const auto inner = view->boxGuide();
  const auto outer = container->boxGuide();
  inner.topAnchor().constraintEqualToAnchor(outer.topAnchor())->setActive(true);
  inner.leftAnchor().constraintEqualToAnchor(outer.leftAnchor())->setActive(true);
  inner.rightAnchor().constraintEqualToAnchor(outer.rightAnchor())->setActive(true);
  inner.bottomAnchor().constraintEqualToAnchor(outer.bottomAnchor())->setActive(true);
}

}  // namespace

void VeltoUIAnimation::animatePresentView(const std::shared_ptr<UIView>& presentedView,
                                          const std::shared_ptr<UIView>& containerView,
                                          const std::shared_ptr<UIView>& transitionView, CGRect finalFrame,
                                          int64_t animation, double duration, double delay,
                                          std::function<void(bool)> completion) {
  if (animation == VeltoAnimationRandom) animation = randomSlide();

  CGRect start = finalFrame;
  const double containerRight = containerView->frame().maxX();
  if (animation == VeltoAnimationFromLeft || animation == VeltoAnimationFromLeftWithSpring)
    start.origin.x = finalFrame.origin.x - containerRight;
  else if (animation == VeltoAnimationFromRight || animation == VeltoAnimationFromRightWithSpring)
    start.origin.x = containerRight;

  if (transitionView) pinToEdges(presentedView, transitionView);
  presentedView->setFrame(start);
  presentedView->setAlpha(1);

  const ViewChange change{.frame = finalFrame, .alpha = std::nullopt};
  if (animation == VeltoAnimationFromLeft || animation == VeltoAnimationFromRight)
    animateWithDuration(duration, delay, presentedView, change, std::move(completion));
  else
    animateWithDuration(duration, delay, springDamping, springVelocity, presentedView, change,
                        std::move(completion));
}

std::shared_ptr<VeltoUIAnimatedTransitioning> VeltoUIAnimatedTransitioning::animatorForAnimation(
    int64_t animation) {
  auto animator = std::make_shared<VeltoUIAnimatedTransitioning>();
  animator->animation = animation;
  return animator;
}

double VeltoUIAnimatedTransitioning::transitionDuration() const {
  return transitionSeconds;
}

void VeltoUIAnimatedTransitioning::animateTransition(
    const std::shared_ptr<UIViewControllerContextTransitioning>& context) {
  if (operation == Present)
    presentAnimateTransitioningUsing(context);
  else if (operation == Dismiss)
    dismmissAnimateTransitioning(context);
}

void VeltoUIAnimatedTransitioning::presentAnimateTransitioningUsing(
    const std::shared_ptr<UIViewControllerContextTransitioning>& context) {
  const auto presented = context->presentedViewController();
  const auto container = context->containerView();
  VeltoUIAnimation::animatePresentView(
      presented->view(), container, container, context->finalFrameForViewController(*presented), animation,
      transitionSeconds, 0,
      [context](bool) { context->completeTransition(!context->transitionWasCancelled()); });
}

void VeltoUIAnimatedTransitioning::dismmissAnimateTransitioning(
    const std::shared_ptr<UIViewControllerContextTransitioning>& context) {
  const auto view = context->presentedViewController()->view();
  animateWithDuration(dismissSeconds, 0, view, {.frame = std::nullopt, .alpha = 0.0}, [context, view](bool) {
    const bool cancelled = context->transitionWasCancelled();
    if (cancelled)
      view->setAlpha(1);
    else
      view->removeFromSuperview();
    context->completeTransition(!cancelled);
  });
}

}  // namespace velto
