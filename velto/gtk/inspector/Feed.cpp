// Listening.
#include "velto/gtk/inspector/Feed.h"

#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"

#include <algorithm>

namespace velto::gtk {

void InspectorFeed::connect() {
  if (!Platform::currentOrNull()) return;
  const auto hub = TimelineHub::shared();
  if (hub == hub_.lock()) return;
  hub_ = hub;
  isWoken_ = false;  // what another platform was to do is never done
  {
    std::lock_guard lock(mutex_);
    sight_.clear();  // loads are counted anew
  }
  hub->add(weak_from_this());
}

std::vector<std::shared_ptr<InspectedPlacement>> InspectorFeed::placements() const {
  const auto hub = hub_.lock();
  return hub ? hub->placements() : std::vector<std::shared_ptr<InspectedPlacement>>();
}

std::vector<SightPoint> InspectorFeed::sight(const VeltoAdTimeline& load) const {
  auto points = sightOf(load);
  std::lock_guard lock(mutex_);
  const auto found = sight_.find(load.load);
  if (found == sight_.end()) return points;
  const double heardFrom = found->second.front().seconds;
  std::erase_if(points, [&](const auto& point) { return point.seconds >= heardFrom; });
  points.insert(points.end(), found->second.begin(), found->second.end());
  return points;
}

void InspectorFeed::added(const std::string&, uint64_t load, const VeltoTimelineEntry& entry) {
  if (const auto* share = std::get_if<VeltoShare>(&entry.detail)) {
    std::lock_guard lock(mutex_);
    auto& points = sight_[load];
    if (points.size() == mostPoints) points.erase(points.begin(), points.begin() + mostPoints / 2);
    points.push_back({entry.seconds, share->percent});
    if (sight_.size() > mostLoads) sight_.erase(sight_.begin());
  }
  wake();
}

void InspectorFeed::wake() {
  auto* platform = Platform::currentOrNull();
  if (!platform || isWoken_.exchange(true)) return;
  platform->mainQueue().post([weak = weak_from_this()] {
    const auto alive = weak.lock();
    if (!alive || !alive->changed_) return;
    alive->isWoken_ = false;
    alive->changed_();
  });
}

}  // namespace velto::gtk
