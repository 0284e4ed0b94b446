// One load as a chart: a row for each thing that took time (request, answer, each network that was tried, page, what was
// seen), with bars along one axis. Values; any thread.
#pragma once

#include "velto/timeline/VeltoAdTimeline.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velto {

struct WaterfallBar {
  enum class Phase : uint8_t {
    Preparing,  // by the library
    Waiting,    // for the first byte of an answer
    Receiving,  // the rest of it
    Asking,     // a network
    Loading,    // the page, in its engine
    Running,    // the page, until it says that it has loaded
    Holding,    // an interstitial that waits to be shown
    Visible,
  };
  Phase phase = Phase::Preparing;
  double from = 0, to = 0;  // seconds on the chart's axis
  int percent = 100;        // of the ad that is seen; 100 of all else
  bool operator==(const WaterfallBar&) const = default;
};

struct WaterfallRow {
  enum class Outcome : uint8_t { UnderWay, Fine, Failed };
  std::string name;  // "answer", or a network's
  std::string note;  // what is known of it, or why it failed
  std::vector<WaterfallBar> bars;
  Outcome outcome = Outcome::UnderWay;
  double from = 0;     // seconds since the load was asked for
  double seconds = 0;  // that it took, or has taken so far
};

struct Waterfall {
  std::vector<WaterfallRow> rows;
  // The axis begins with the question. It shows how the ad came; what is visible may go on beyond its end.
  double length = 0;
  // The wait of an interstitial for its turn can be longer than all else: this much of it is left out, at that place.
  double leftOut = 0, leftOutAt = 0;
  // The ad came at this place, or the load ended there without one.
  std::optional<double> filled, failed;
  bool isUnderWay =
      false;  // something goes on that has no entry yet: the chart is another one a moment later
};

// `now` is of the platform's monotonic clock, for what has not ended.
VELTO_EXPORT Waterfall waterfallOf(const VeltoAdTimeline& load, double now);

// How much of the ad was seen, from those moments on. Monotonic seconds.
struct SightPoint {
  double seconds = 0;
  int percent = 0;
  bool operator==(const SightPoint&) const = default;
};
VELTO_EXPORT std::vector<SightPoint> sightOf(const VeltoAdTimeline& load);

// What became of it, in one line: "filled in 412 ms", or the sentence of its end.
VELTO_EXPORT std::string headlineOf(const VeltoAdTimeline& load);
// "3.1 ms", "412 ms", "1.2 s", "3 min 20 s".
VELTO_EXPORT std::string durationText(double seconds);

}  // namespace velto
