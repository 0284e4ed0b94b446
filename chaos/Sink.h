// What timelines promise, whoever writes into them: one end for each load, entries in the order of their times, nothing
// after the end. It also tells the walk what it waits for.
#pragma once

#include <set>

#include "World.h"

namespace velto::chaos {

class World::Sink : public TimelineSink {
 public:
  explicit Sink(World& world) : world_(&world) {}
  void added(const std::string& placement, uint64_t load, const VeltoTimelineEntry& entry) override;
  void ended(const VeltoAdTimeline& timeline) override;
  // Of a process that is killed nobody hears.
  void stop() { world_ = nullptr; }
  const std::set<uint64_t>& open() const { return open_; }

 private:
  World* world_;
  std::set<uint64_t> open_;
};

}  // namespace velto::chaos
