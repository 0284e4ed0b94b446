// Animation by display link. A view has its final values from the start, and is shown displaced from them by
// less and less: so a layout pass may move or resize it on its way, and it still ends where it belongs.
#include "velto/platform/ui/UIViewAnimation.h"

#include "velto/platform/Clock.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"
#include "velto/platform/UIApplication.h"
#include "velto/platform/ViewSystem.h"

#include <algorithm>
#include <cmath>

namespace velto {
namespace {

// A frame that comes late slows the animation down instead of letting it jump over what is to be seen.
constexpr double longestStep = 0.05;  // seconds

struct Running {
  std::weak_ptr<UIView> view;
  CGRect frame;  // the displacement that it began with
  double alpha = 0;
  double before = 0;  // seconds, of the latest step
  double time = 0;    // since the start, negative during the delay
  double duration = 0;
  std::function<double(double)> curve;
  std::function<void(bool)> completion;
  Handle link;
  bool done = false;

  void end(bool finished) {
    if (std::exchange(done, true)) return;
    link.cancel();
    if (const auto target = view.lock()) target->displace({}, 0);
    auto* platform = Platform::currentOrNull();
    if (completion && platform)
      platform->mainQueue().post([completion = std::move(completion), finished] { completion(finished); });
  }

  void step(double now) {
    const auto target = view.lock();
    if (!target) return end(false);
    time += std::clamp(now - std::exchange(before, now), 0.0, longestStep);
    if (time >= duration) return end(true);
    const double left = 1 - (time < 0 ? 0 : curve(time));
    target->displace(
        {{frame.origin.x * left, frame.origin.y * left}, {frame.size.width * left, frame.size.height * left}},
        alpha * left);
  }
};

void animate(double duration, double delay, const std::shared_ptr<UIView>& view, const ViewChange& change,
             std::function<double(double)> curve, std::function<void(bool)> completion) {
  auto& platform = Platform::current();
  view->setAnimation({});
  const CGRect from = view->frame();
  const double fromAlpha = view->alpha();
  if (change.frame) view->setFrame(*change.frame);
  if (change.alpha) view->setAlpha(*change.alpha);
  const CGRect& to = view->frame();

  auto running = std::make_shared<Running>();
  running->view = view;
  running->frame = {{from.origin.x - to.origin.x, from.origin.y - to.origin.y},
                    {from.size.width - to.size.width, from.size.height - to.size.height}};
  running->alpha = fromAlpha - view->alpha();
  running->before = platform.clock().monotonicSeconds();
  running->time = platform.application().isReduceMotionEnabled() ? duration : -delay;
  running->duration = duration;
  running->curve = std::move(curve);
  running->completion = std::move(completion);
  view->displace(running->frame, running->alpha);
  running->link = platform.views().displayLink([running = std::weak_ptr(running)](double now) {
    if (auto alive = running.lock()) alive->step(now);
  });
  view->setAnimation(Handle([running] { running->end(false); }));
}

}  // namespace

double easeInOut(double time, double duration) {
  if (time >= duration) return 1;
  const double t = std::max(0.0, time) / duration;
  return t < 0.5 ? 4 * t * t * t : 1 - std::pow(-2 * t + 2, 3) / 2;
}

double springPosition(double time, double duration, double damping, double initialVelocity) {
  if (time >= duration) return 1;
  // The envelope exp(-damping * omega * t) falls to a thousandth at the end.
  const double decay = std::log(1000.0) / duration;
  const double omega = decay / damping;
  const double damped = omega * std::sqrt(std::max(1e-9, 1 - damping * damping));
  return 1 - std::exp(-decay * time) *
                 (std::cos(damped * time) + (decay - initialVelocity) / damped * std::sin(damped * time));
}

void animateWithDuration(double duration, double delay, const std::shared_ptr<UIView>& view,
                         const ViewChange& change, std::function<void(bool)> completion) {
  animate(
      duration, delay, view, change, [duration](double time) { return easeInOut(time, duration); },
      std::move(completion));
}

void animateWithDuration(double duration, double delay, double usingSpringWithDamping,
                         double initialSpringVelocity, const std::shared_ptr<UIView>& view,
                         const ViewChange& change, std::function<void(bool)> completion) {
  animate(
      duration, delay, view, change,
      [=](double time) {
        return springPosition(time, duration, usingSpringWithDamping, initialSpringVelocity);
      },
      std::move(completion));
}

}  // namespace velto
