// A media time as a rational number of seconds, and what is
// computed with it. Shared by all platforms; any thread.
#pragma once

#include "velto/Export.h"

#include <cstdint>

namespace velto {

// value / timescale seconds. A timescale of 0 is no time at all; sums and comparisons take it for zero.
struct CMTime {
  int64_t value = 0;
  int32_t timescale = 0;
  bool operator==(const CMTime&) const = default;
};

inline constexpr CMTime kCMTimeZero{0, 1};

VELTO_EXPORT double CMTimeGetSeconds(CMTime time);
VELTO_EXPORT CMTime CMTimeAdd(CMTime a, CMTime b);
// Keeps the timescale where the product has a whole value in it, else takes a multiple as fine as fits.
VELTO_EXPORT CMTime CMTimeMultiplyByFloat64(CMTime time, double multiplier);
// -1, 0 or 1: whether a is earlier than, equal to or later than b.
VELTO_EXPORT int32_t CMTimeCompare(CMTime a, CMTime b);

}  // namespace velto
