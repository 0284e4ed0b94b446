// What the benchmark programs measure with. They report in JSON, one object a line, which run.py reads.
#pragma once

#include <time.h>

namespace velto::bench {

inline double milliseconds(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

inline double wallMilliseconds() {
  return milliseconds(CLOCK_MONOTONIC);
}

// The calling thread's use of the processor: what a main loop could not do meanwhile, whatever else the
// machine does.
inline double threadMilliseconds() {
  return milliseconds(CLOCK_THREAD_CPUTIME_ID);
}

}  // namespace velto::bench
