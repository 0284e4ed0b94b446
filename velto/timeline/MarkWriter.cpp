// Marks.
#include "velto/timeline/MarkWriter.h"

namespace velto {
namespace {

std::string nameOfLoad(const std::string& placement, uint64_t load) {
  return placement + " " + std::to_string(load);
}

}  // namespace

void MarkWriter::added(const std::string& placement, uint64_t load, const VeltoTimelineEntry& entry) {
  using Kind = VeltoTimelineKind;
  std::lock_guard lock(mutex_);
  if (entry.kind == Kind::Asked) open_[load].asked = entry.seconds;
  const auto found = open_.find(load);
  if (found == open_.end()) return;
  auto& open = found->second;
  const auto name = nameOfLoad(placement, load);
  if (const auto span = open.spans.take(entry))
    output_({span->from, span->to - span->from, span->name, name});
  const bool isFilled = entry.kind == Kind::Ready || entry.kind == Kind::LoadFinished;
  if (isFilled && !std::exchange(open.isFilled, true))
    output_({open.asked, entry.seconds - open.asked, "load", name + ": filled"});
  output_({entry.seconds, 0, std::string(nameOf(entry.kind)), name});
}

void MarkWriter::ended(const VeltoAdTimeline& timeline) {
  std::lock_guard lock(mutex_);
  const auto open = open_.extract(timeline.load);
  if (!open) return;
  const double from = open.mapped().isFilled ? timeline.endSeconds : open.mapped().asked;
  output_({from, timeline.endSeconds - from, open.mapped().isFilled ? "end" : "load",
           nameOfLoad(timeline.placement, timeline.load) + ": " + std::string(wordsOf(*timeline.end).name)});
}

}  // namespace velto
