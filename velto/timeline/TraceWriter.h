// Writes timelines as a trace that browsers' tracing pages and Perfetto open: the Trace Event Format's array, whose end
// may be missing. Each load is a row of its own, with its answer and its page as spans. Any thread.
#pragma once

#include "velto/timeline/OpenSpans.h"
#include "velto/timeline/TimelineHub.h"

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

namespace velto {

class TraceWriter : public TimelineSink {
 public:
  using Output = std::function<void(std::string_view piece)>;

  explicit TraceWriter(Output output);
  ~TraceWriter() override;

  void added(const std::string& placement, uint64_t load, const VeltoTimelineEntry& entry) override;
  void ended(const VeltoAdTimeline& timeline) override;

 private:
  void write(const char* phase, uint64_t load, std::string_view name, double seconds, JSON::Object arguments);

  std::mutex mutex_;
  const Output output_;
  bool isFirst_ = true;
  std::map<uint64_t, OpenSpans> open_;
};

}  // namespace velto
