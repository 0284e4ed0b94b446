// Animation by display link. A running animation is a handle on its view, so any other change of the frame
// ends it.
#include "velto/platform/ui/UIViewAnimation.h"

#include "velto/platform/Clock.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"
#include "velto/platform/UIApplication.h"

#include <algorithm>
#include <cmath>

namespace velto {
namespace {

double between(double from, double to, double part) {
  return from + (to - from) * part;
}

CGRect between(const CGRect& from, const CGRect& to, double part) {
  return {{between(from.origin.x, to.origin.x, part), between(from.origin.y, to.origin.y, part)},
          {between(from.size.width, to.size.width, part), between(from.size.height, to.size.height, part)}};
}

struct Running {
  std::weak_ptr<UIView> view;
  CGRect fromFrame;
  double fromAlpha = 1;
  double start = 0;
  double duration = 0;
  std::function<double(double)> curve;
  std::function<void(bool)> completion;
  Handle link;
  bool done = false;

  void end(bool finished) {
    if (std::exchange(done, true)) return;
    link.cancel();
    auto* platform = Platform::currentOrNull();
    if (completion && platform)
      platform->mainQueue().post([completion = std::move(completion), finished] { completion(finished); });
  }

  void step(double now) {
    auto target = view.lock();
    if (!target) return end(false);
    const double time = now - start;
    const double part = time < 0 ? 0 : curve(time);
    target->present(between(fromFrame, target->frame(), part), between(fromAlpha, target->alpha(), part));
    if (time < duration) return;
    target->present(target->frame(), target->alpha());
    end(true);
  }
};

void animate(double duration, double delay, const std::shared_ptr<UIView>& view, const ViewChange& change,
             std::function<double(double)> curve, std::function<void(bool)> completion) {
  auto& platform = Platform::current();
  auto running = std::make_shared<Running>();
  running->view = view;
  running->fromFrame = view->frame();
  running->fromAlpha = view->alpha();
  const bool moves = !platform.application().isReduceMotionEnabled();
  running->start = platform.clock().monotonicSeconds() + (moves ? delay : -duration);
  running->duration = duration;
  running->curve = std::move(curve);
  running->completion = std::move(completion);

  view->setAnimation({});
  if (change.frame) view->setFrame(*change.frame);
  if (change.alpha) view->setAlpha(*change.alpha);
  view->present(running->fromFrame, running->fromAlpha);
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
