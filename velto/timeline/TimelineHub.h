// Where all timelines of a platform come together: what writes traces, logs and figures listens here. One for a
// platform; any thread.
#pragma once

#include "velto/timeline/VeltoAdTimeline.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

namespace velto {

class InspectedPlacement;

// Told inside the call that writes the entry down, on its thread, with nothing locked but what the story needs.
// Calls nothing of the library.
class VELTO_EXPORT TimelineSink {
 public:
  virtual ~TimelineSink() = default;
  virtual void added(const std::string& placement, uint64_t load, const VeltoTimelineEntry& entry) = 0;
  virtual void ended(const VeltoAdTimeline& timeline) = 0;
  // A controller came, went, or is in another state. Main thread.
  virtual void placementsChanged() {}
};

class VELTO_EXPORT TimelineHub {
 public:
  static std::shared_ptr<TimelineHub> shared();

  TimelineHub();  // with what the platform's diagnostics want

  uint64_t nextLoad() { return ++loads_; }
  // Held weakly.
  void add(std::weak_ptr<TimelineSink> sink);
  std::vector<std::shared_ptr<TimelineSink>> sinks();

  // The controllers of now, oldest first. Main thread, and so are the two that change it.
  std::vector<std::shared_ptr<InspectedPlacement>> placements() const;
  void list(std::weak_ptr<InspectedPlacement> placement);
  void placementsChanged();

 private:
  std::atomic<uint64_t> loads_ = 0;
  std::atomic<bool> hasSinks_ = false;
  std::mutex mutex_;
  std::vector<std::weak_ptr<TimelineSink>> sinks_;
  std::vector<std::shared_ptr<TimelineSink>> own_;
  std::vector<std::weak_ptr<InspectedPlacement>> placements_;
};

}  // namespace velto
