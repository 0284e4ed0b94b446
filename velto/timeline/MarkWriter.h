// Marks loads in a profiler's recording: each load until its ad is there or it has none, its answer and its page as spans,
// the other steps as moments. Any thread.
#pragma once

#include "velto/platform/Diagnostics.h"
#include "velto/timeline/OpenSpans.h"
#include "velto/timeline/TimelineHub.h"

#include <cstdint>
#include <map>
#include <mutex>
#include <string>

namespace velto {

class MarkWriter : public TimelineSink {
 public:
  using Output = std::function<void(const ProfilerMark& mark)>;

  explicit MarkWriter(Output output) : output_(std::move(output)) {}

  void added(const std::string& placement, uint64_t load, const VeltoTimelineEntry& entry) override;
  void ended(const VeltoAdTimeline& timeline) override;

 private:
  struct Open {
    double asked = 0;
    bool isFilled = false;
    OpenSpans spans;
  };

  std::mutex mutex_;
  const Output output_;
  std::map<uint64_t, Open> open_;
};

}  // namespace velto
