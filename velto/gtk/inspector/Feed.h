// What the inspector's page hears of loads: that something changed, once for all that did in a turn, and how much of each
// ad was seen, of which a timeline keeps only the beginning.
#pragma once

#include "velto/timeline/TimelineHub.h"
#include "velto/timeline/Waterfall.h"

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace velto::gtk {

class InspectorFeed : public TimelineSink, public std::enable_shared_from_this<InspectorFeed> {
 public:
  // Called on the main thread, in a turn of its own.
  explicit InspectorFeed(std::function<void()> changed) : changed_(std::move(changed)) {}
  // Calls nobody any more, whoever holds it still. Main thread.
  void stop() { changed_ = nullptr; }

  // Listens to the platform that is installed now. Main thread.
  void connect();
  bool isConnected() const { return !hub_.expired(); }
  std::vector<std::shared_ptr<InspectedPlacement>> placements() const;
  // What was heard from when it listened on, after what the timeline has of before.
  std::vector<SightPoint> sight(const VeltoAdTimeline& load) const;

  void added(const std::string& placement, uint64_t load, const VeltoTimelineEntry& entry) override;
  void ended(const VeltoAdTimeline&) override { wake(); }
  void placementsChanged() override { wake(); }

 private:
  static constexpr size_t mostLoads = 64, mostPoints = 512;
  void wake();

  std::function<void()> changed_;
  std::weak_ptr<TimelineHub> hub_;
  std::atomic<bool> isWoken_ = false;
  mutable std::mutex mutex_;
  std::map<uint64_t, std::vector<SightPoint>> sight_;
};

}  // namespace velto::gtk
