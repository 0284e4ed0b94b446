// Who listens.
#include "velto/timeline/TimelineHub.h"

#include "velto/platform/Diagnostics.h"
#include "velto/platform/Platform.h"
#include "velto/timeline/InspectedPlacement.h"
#include "velto/timeline/LogWriter.h"
#include "velto/timeline/MarkWriter.h"
#include "velto/timeline/TraceWriter.h"

namespace velto {

std::shared_ptr<TimelineHub> TimelineHub::shared() {
  return Platform::shared<TimelineHub>();
}

TimelineHub::TimelineHub() {
  auto* diagnostics = Platform::current().diagnostics();
  if (!diagnostics) return;
  if (diagnostics->wants(LogLevel::Info)) own_.push_back(std::make_shared<LogWriter>(*diagnostics));
  if (auto output = diagnostics->traceOutput())
    own_.push_back(std::make_shared<TraceWriter>(std::move(output)));
  if (auto output = diagnostics->markOutput())
    own_.push_back(std::make_shared<MarkWriter>(std::move(output)));
  for (const auto& sink : own_) add(sink);
}

void TimelineHub::add(std::weak_ptr<TimelineSink> sink) {
  std::lock_guard lock(mutex_);
  sinks_.push_back(std::move(sink));
  hasSinks_ = true;
}

std::vector<std::shared_ptr<TimelineSink>> TimelineHub::sinks() {
  std::vector<std::shared_ptr<TimelineSink>> alive;
  if (!hasSinks_) return alive;
  std::lock_guard lock(mutex_);
  std::erase_if(sinks_, [](const auto& sink) { return sink.expired(); });
  for (const auto& sink : sinks_)
    if (auto held = sink.lock()) alive.push_back(std::move(held));
  hasSinks_ = !sinks_.empty();
  return alive;
}

std::vector<std::shared_ptr<InspectedPlacement>> TimelineHub::placements() const {
  std::vector<std::shared_ptr<InspectedPlacement>> alive;
  for (const auto& weak : placements_)
    if (auto placement = weak.lock()) alive.push_back(std::move(placement));
  return alive;
}

void TimelineHub::list(std::weak_ptr<InspectedPlacement> placement) {
  placements_.push_back(std::move(placement));
  placementsChanged();
}

void TimelineHub::placementsChanged() {
  std::erase_if(placements_, [](const auto& placement) { return placement.expired(); });
  for (const auto& sink : sinks()) sink->placementsChanged();
}

}  // namespace velto
