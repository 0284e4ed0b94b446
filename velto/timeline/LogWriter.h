// Writes timelines to the platform's log. Any thread.
#pragma once

#include "velto/platform/Diagnostics.h"
#include "velto/timeline/TimelineHub.h"

namespace velto {

class LogWriter : public TimelineSink {
 public:
  explicit LogWriter(Diagnostics& diagnostics) : diagnostics_(diagnostics) {}

  void added(const std::string& placement, uint64_t load, const VeltoTimelineEntry& entry) override;
  void ended(const VeltoAdTimeline& timeline) override;

 private:
  Diagnostics& diagnostics_;
};

}  // namespace velto
