// Durations that stay inside their type. One that is too long to be held becomes the longest, and on a main
// queue the longest never comes. Any thread.
#pragma once

#include <chrono>

namespace velto {

// What no clock here reaches: 292 years.
inline constexpr std::chrono::nanoseconds never = std::chrono::nanoseconds::max();

// Not a number and less than nothing are no time at all.
inline std::chrono::nanoseconds nanosecondsIn(double seconds) {
  using Seconds = std::chrono::duration<double>;
  if (!(seconds > 0)) return std::chrono::nanoseconds(0);
  if (Seconds(seconds) >= Seconds(never)) return never;
  return std::chrono::duration_cast<std::chrono::nanoseconds>(Seconds(seconds));
}

// Of two that are not negative.
inline std::chrono::nanoseconds sumWithin(std::chrono::nanoseconds a, std::chrono::nanoseconds b) {
  return a < never - b ? a + b : never;
}

}  // namespace velto
