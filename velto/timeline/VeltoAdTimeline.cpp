// Timelines in words.
#include "velto/timeline/VeltoAdTimeline.h"

#include <algorithm>

namespace velto {

const VeltoTimelineEntry* VeltoAdTimeline::first(VeltoTimelineKind kind) const {
  const auto found =
      std::find_if(entries.begin(), entries.end(), [kind](const auto& entry) { return entry.kind == kind; });
  return found == entries.end() ? nullptr : &*found;
}

const VeltoTimelineEntry* VeltoAdTimeline::filled() const {
  const auto* ready = first(VeltoTimelineKind::Ready);
  return ready ? ready : first(VeltoTimelineKind::LoadFinished);
}

JSON::Object VeltoAdTimeline::json() const {
  JSON::Array list;
  for (const auto& entry : entries) {
    JSON::Object written = entry.fields();
    written.emplace("what", std::string(nameOf(entry.kind)));
    written.emplace("at", entry.seconds);
    list.emplace_back(std::move(written));
  }
  JSON::Object told{
      {"load", static_cast<int64_t>(load)}, {"placement", placement}, {"entries", std::move(list)}};
  if (leftOut > 0) told.emplace("leftOut", static_cast<int64_t>(leftOut));
  if (end) {
    told.emplace("end", std::string(wordsOf(*end).name));
    told.emplace("endAt", endSeconds);
  }
  return told;
}

}  // namespace velto
