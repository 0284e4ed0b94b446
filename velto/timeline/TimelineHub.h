// Where all timelines of a platform come together: what writes traces, logs and figures listens here. One for a
// platform; any thread.
#pragma once

#include "velto/platform/Handle.h"
#include "velto/timeline/VeltoAdTimeline.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace velto {

// Told inside the call that writes the entry down, on its thread, with nothing locked but what the story needs.
// Calls nothing of the library.
class TimelineSink {
 public:
  virtual ~TimelineSink() = default;
  virtual void added(const std::string& placement, uint64_t load, const VeltoTimelineEntry& entry) = 0;
  virtual void ended(const VeltoAdTimeline& timeline) = 0;
};

class TimelineHub {
 public:
  static std::shared_ptr<TimelineHub> shared();

  uint64_t nextLoad() { return ++loads_; }
  void add(std::shared_ptr<TimelineSink> sink);
  std::vector<std::shared_ptr<TimelineSink>> sinks() const;

 private:
  std::atomic<uint64_t> loads_ = 0;
  std::atomic<bool> hasSinks_ = false;
  mutable std::mutex mutex_;
  std::vector<std::shared_ptr<TimelineSink>> sinks_;
};

}  // namespace velto
