// Figures of all loads, placement by placement, for those who watch many devices.
//
//   const auto metrics = velto::VeltoMetrics::collect();
//   …
//   respond("application/openmetrics-text; version=1.0.0", metrics->openMetrics());
#pragma once

#include "velto/Export.h"
#include "velto/timeline/VeltoAdEndReason.h"
#include "velto/timeline/VeltoAdWeight.h"

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace velto {

// How values were spread, counted in classes: each bound is the largest value of its class, the last class has none.
struct VELTO_EXPORT VeltoDistribution {
  std::vector<double> bounds;
  std::vector<uint64_t> counts;  // one more than bounds
  uint64_t count = 0;
  double sum = 0;

  explicit VeltoDistribution(std::vector<double> ownBounds);
  void add(double value);
  // The value that this part (0 … 1) of all values does not exceed, as far as the classes tell. 0 without values.
  double quantile(double part) const;
};

struct VELTO_EXPORT VeltoPlacementFigures {
  VeltoPlacementFigures();
  double fill() const { return loads == 0 ? 0 : static_cast<double>(filled) / static_cast<double>(loads); }

  std::string placement;
  uint64_t loads = 0;      // that have ended
  uint64_t refreshes = 0;  // of these
  uint64_t filled = 0;     // of all: those whose ad has loaded
  std::map<VeltoAdEndReason, uint64_t> ends;
  VeltoDistribution loadSeconds;  // of those filled, from the question to the ad
  VeltoDistribution
      visiblePercent;  // of those that were measured: how much of the ad was seen, on average over its time
  // What the pages of ads cost, each where it was known.
  VeltoDistribution processorSeconds, networkBytes, memoryBytes;
  std::map<VeltoAdLimit, uint64_t> heavy;  // loads whose ad has crossed the limit
};

class VELTO_EXPORT VeltoMetrics {
 public:
  // Placements beyond this many are counted together as "other".
  static constexpr size_t mostPlacements = 64;

  // Counts the loads that begin from here on, while it is held and its platform stands. Main thread; all else any thread.
  static std::shared_ptr<VeltoMetrics> collect();

  std::vector<VeltoPlacementFigures> placements() const;  // by name
  // OpenMetrics 1.0, with its end.
  std::string openMetrics() const;

  class Counter;
  explicit VeltoMetrics(std::shared_ptr<Counter> counter) : counter_(std::move(counter)) {}

 private:
  std::shared_ptr<Counter> counter_;
};

}  // namespace velto
