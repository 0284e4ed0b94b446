// Lines of the log.
#include "velto/timeline/LogWriter.h"

#include "velto/platform/foundation/Text.h"

namespace velto {
namespace {

LogLine lineOf(LogLevel level, const std::string& placement, uint64_t load) {
  return {level,
          placement + " " + std::to_string(load) + ": ",
          {{"placement", placement}, {"load", std::to_string(load)}}};
}

}  // namespace

void LogWriter::added(const std::string& placement, uint64_t load, const VeltoTimelineEntry& entry) {
  if (!diagnostics_.wants(LogLevel::Debug)) return;
  auto line = lineOf(LogLevel::Debug, placement, load);
  line.text.append(nameOf(entry.kind));
  for (const auto& [name, value] : entry.fields()) {
    const auto* text = value.string();
    line.fields.emplace_back(name, text ? *text : numberText(value.number().value_or(0)));
    line.text.append(" ").append(name).append("=").append(line.fields.back().second);
  }
  diagnostics_.log(line);
}

void LogWriter::ended(const VeltoAdTimeline& timeline) {
  if (!diagnostics_.wants(LogLevel::Info)) return;
  auto line = lineOf(LogLevel::Info, timeline.placement, timeline.load);
  const auto& words = wordsOf(*timeline.end);
  line.text.append(words.name).append(". ").append(words.sentence);
  line.fields.emplace_back("reason", words.name);
  diagnostics_.log(line);
}

}  // namespace velto
