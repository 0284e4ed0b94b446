// When to look.
#include "velto/measurement/ViewabilityWatcher.h"

#include "velto/platform/Clock.h"
#include "velto/platform/Durations.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"
#include "velto/platform/ui/ViewChanges.h"

namespace velto {

std::shared_ptr<ViewabilityWatcher> ViewabilityWatcher::watch(
    std::function<AdSight()> look, std::function<void(const Viewability&)> changed) {
  std::shared_ptr<ViewabilityWatcher> made(new ViewabilityWatcher(std::move(look), std::move(changed)));
  made->changes_ = ViewChanges::observe([own = made.get()] { own->noteChange(); });
  return made;
}

ViewabilityWatcher::ViewabilityWatcher(std::function<AdSight()> look,
                                       std::function<void(const Viewability&)> changed)
    : look_(std::move(look)),
      changed_(std::move(changed)),
      latest_(viewabilityOf(look_())),
      lastLook_(Platform::current().clock().monotonicSeconds()) {}

void ViewabilityWatcher::hurry() {
  if (auto* platform = Platform::currentOrNull())
    hurriesUntil_ = platform->clock().monotonicSeconds() + interval;
}

void ViewabilityWatcher::noteChange() {
  auto* platform = Platform::currentOrNull();
  if (!platform) return;
  const double now = platform->clock().monotonicSeconds();
  const double wait = now < hurriesUntil_ ? 0 : lastLook_ + interval - now;
  if (scheduled_ && (wait > 0 || dueSoon_)) return;
  scheduled_ = true;
  dueSoon_ = wait <= 0;
  auto task = [weak = weak_from_this()] {
    const auto alive = weak.lock();
    if (alive && alive->scheduled_) alive->lookNow();
  };
  if (wait <= 0) return platform->mainQueue().post(std::move(task));
  platform->mainQueue().postAfter(nanosecondsIn(wait), std::move(task));
}

void ViewabilityWatcher::lookNow() {
  scheduled_ = dueSoon_ = false;
  auto* platform = Platform::currentOrNull();
  if (!platform) return;
  lastLook_ = platform->clock().monotonicSeconds();
  Viewability now = viewabilityOf(look_());
  if (now == latest_) return;
  latest_ = std::move(now);
  changed_(latest_);
}

}  // namespace velto
