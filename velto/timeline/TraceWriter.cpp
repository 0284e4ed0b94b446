// Trace events.
#include "velto/timeline/TraceWriter.h"

namespace velto {

TraceWriter::TraceWriter(Output output) : output_(std::move(output)) {
  output_("[\n");
}

TraceWriter::~TraceWriter() {
  output_("\n]\n");
}

// The comma comes before each event but the first: none dangles when the process is killed.
void TraceWriter::write(const char* phase, uint64_t load, std::string_view name, double seconds,
                        JSON::Object arguments) {
  constexpr double microseconds = 1e6;
  const JSON event = JSON::Object{{"ph", phase},
                                  {"cat", "velto"},
                                  {"id", static_cast<int64_t>(load)},
                                  {"pid", 1},
                                  {"tid", 1},
                                  {"ts", seconds * microseconds},
                                  {"name", std::string(name)},
                                  {"args", std::move(arguments)}};
  const auto text = writeJSON(event, false);
  if (!text) return;  // a placement's name that is no text
  output_((isFirst_ ? "" : ",\n") + *text);
  isFirst_ = false;
}

void TraceWriter::added(const std::string& placement, uint64_t load, const VeltoTimelineEntry& entry) {
  using Kind = VeltoTimelineKind;
  std::lock_guard lock(mutex_);
  if (entry.kind == Kind::Asked) {
    open_.emplace(load, OpenSpans());
    return write("b", load, placement, entry.seconds, entry.fields());
  }
  const auto found = open_.find(load);
  if (found == open_.end()) return;  // another thread was late
  if (const auto span = found->second.take(entry)) {
    write("b", load, span->name, span->from, {});
    write("e", load, span->name, span->to, {});
  }
  write("n", load, nameOf(entry.kind), entry.seconds, entry.fields());
}

void TraceWriter::ended(const VeltoAdTimeline& timeline) {
  std::lock_guard lock(mutex_);
  if (open_.erase(timeline.load) == 0) return;
  write("e", timeline.load, timeline.placement, timeline.endSeconds,
        {{"end", std::string(wordsOf(*timeline.end).name)}});
}

}  // namespace velto
