// On the hub's list, and off it.
#include "velto/timeline/InspectedPlacement.h"

#include "velto/timeline/TimelineHub.h"

#include <array>

namespace velto {

InspectedPlacement::~InspectedPlacement() {
  tellChanged();
}

std::span<const VeltoAdEndReason> InspectedPlacement::simulatedReasons() {
  static constexpr std::array reasons{VeltoAdEndReason::StatusNoFill, VeltoAdEndReason::Offline,
                                      VeltoAdEndReason::TimedOut, VeltoAdEndReason::StatusServerError,
                                      VeltoAdEndReason::PageProcessCrashed};
  return reasons;
}

void InspectedPlacement::list(std::weak_ptr<InspectedPlacement> self) {
  const auto hub = TimelineHub::shared();
  hub_ = hub;
  hub->list(std::move(self));
}

void InspectedPlacement::tellChanged() const {
  if (const auto hub = hub_.lock()) hub->placementsChanged();
}

}  // namespace velto
