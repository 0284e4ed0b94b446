// Where all timelines of a platform come together: what writes traces, logs and figures listens here. One for a
// platform; any thread.
#pragma once

#include "velto/timeline/VeltoAdTimeline.h"

#include <atomic>
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

  TimelineHub();  // with what the platform's diagnostics want

  uint64_t nextLoad() { return ++loads_; }
  // Held weakly.
  void add(std::weak_ptr<TimelineSink> sink);
  std::vector<std::shared_ptr<TimelineSink>> sinks();

 private:
  std::atomic<uint64_t> loads_ = 0;
  std::atomic<bool> hasSinks_ = false;
  std::mutex mutex_;
  std::vector<std::weak_ptr<TimelineSink>> sinks_;
  std::vector<std::shared_ptr<TimelineSink>> own_;
};

}  // namespace velto
