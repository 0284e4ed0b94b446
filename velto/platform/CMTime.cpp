// Rational arithmetic without a loss where the numbers allow it.
#include "velto/platform/CMTime.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace velto {
namespace {

constexpr int64_t finest = 1'000'000'000;  // the timescale of nanoseconds

CMTime orZero(CMTime time) {
  return time.timescale > 0 ? time : kCMTimeZero;
}

bool fits(long double value) {
  constexpr long double limit = 9.2e18L;
  return value > -limit && value < limit;
}

// What overflows stops at the ends, so that later stays later.
int64_t sum(int64_t a, int64_t b) {
  int64_t result = 0;
  if (!__builtin_add_overflow(a, b, &result)) return result;
  return b < 0 ? INT64_MIN : INT64_MAX;
}

// In whole numbers: where a "long double" has no more digits than a "double", as on 32-bit ARM, that would lose some.
CMTime inScale(CMTime time, int64_t timescale) {
  const int64_t rest = time.value % time.timescale * timescale;  // at most 62 bits
  const int64_t half = rest < 0 ? -time.timescale / 2 : time.timescale / 2;
  int64_t seconds = 0;
  if (__builtin_mul_overflow(time.value / time.timescale, timescale, &seconds))
    return {time.value < 0 ? INT64_MIN : INT64_MAX, static_cast<int32_t>(timescale)};
  return {sum(seconds, (rest + half) / time.timescale), static_cast<int32_t>(timescale)};
}

}  // namespace

double CMTimeGetSeconds(CMTime time) {
  time = orZero(time);
  return static_cast<double>(time.value) / time.timescale;
}

CMTime CMTimeAdd(CMTime a, CMTime b) {
  a = orZero(a);
  b = orZero(b);
  int64_t timescale = std::lcm<int64_t>(a.timescale, b.timescale);
  if (timescale > INT32_MAX) timescale = finest;
  a = inScale(a, timescale);
  b = inScale(b, timescale);
  return {sum(a.value, b.value), static_cast<int32_t>(timescale)};
}

CMTime CMTimeMultiplyByFloat64(CMTime time, double multiplier) {
  time = orZero(time);
  const long double product = static_cast<long double>(time.value) * multiplier;
  if (!std::isfinite(product) || !fits(product)) return {};
  const auto inSteps = [&](int64_t steps) { return product * static_cast<long double>(steps); };
  const auto result = [&](int64_t steps) {
    return CMTime{std::llroundl(inSteps(steps)), static_cast<int32_t>(time.timescale * steps)};
  };
  // Halves, quarters and so on of a step come out whole.
  for (int64_t steps = 1; time.timescale * steps <= INT32_MAX && fits(inSteps(steps)); steps *= 2)
    if (inSteps(steps) == std::floor(inSteps(steps))) return result(steps);
  const int64_t steps = std::max<int64_t>(finest / time.timescale, 1);
  return result(fits(inSteps(steps)) ? steps : 1);
}

int32_t CMTimeCompare(CMTime a, CMTime b) {
  a = orZero(a);
  b = orZero(b);
  // Whole seconds first, then what is left over: no product is larger than 62 bits.
  const auto floorOf = [](CMTime time) {
    const int64_t whole = time.value / time.timescale;
    return time.value % time.timescale < 0 ? whole - 1 : whole;
  };
  const int64_t wholeA = floorOf(a);
  const int64_t wholeB = floorOf(b);
  if (wholeA != wholeB) return wholeA < wholeB ? -1 : 1;
  const int64_t restA = (a.value - wholeA * a.timescale) * b.timescale;
  const int64_t restB = (b.value - wholeB * b.timescale) * a.timescale;
  return restA == restB ? 0 : restA < restB ? -1 : 1;
}

}  // namespace velto
