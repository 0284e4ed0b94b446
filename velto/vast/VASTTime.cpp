// Times out of texts, and into them.
#include "velto/vast/VASTTime.h"

#include "velto/platform/foundation/Text.h"
#include "velto/vast/VASTNode.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>

namespace velto {
namespace {

constexpr double longestTime = 1'000'000;  // no ad, and no content, is longer: eleven days

std::optional<double> amount(std::string_view text) {
  if (text.empty() || text.front() == '-' || text.front() == '+') return std::nullopt;
  const auto number = parseNumber(text);
  return number && std::isfinite(*number) && *number <= longestTime ? number : std::nullopt;
}

}  // namespace

std::optional<double> readVASTTime(std::string_view text) {
  double seconds = 0;
  const auto parts = split(trimmedVAST(text), ":");
  if (parts.empty() || parts.size() > 3) return std::nullopt;
  for (const auto& part : parts) {
    const auto number = amount(part);
    if (!number) return std::nullopt;
    seconds = seconds * 60 + *number;
  }
  return seconds <= longestTime ? std::optional(seconds) : std::nullopt;
}

std::string vastTime(double seconds) {
  const auto all = std::isfinite(seconds) ? std::clamp(seconds, 0.0, longestTime) : 0.0;
  const auto milliseconds = static_cast<int64_t>(std::llround(all * 1000));
  std::array<char, 32> text{};
  (void)std::snprintf(text.data(), text.size(), "%02d:%02d:%02d.%03d",
                      static_cast<int>(milliseconds / 3'600'000),
                      static_cast<int>(milliseconds / 60'000 % 60),
                      static_cast<int>(milliseconds / 1000 % 60), static_cast<int>(milliseconds % 1000));
  return text.data();
}

std::optional<VASTOffset> VASTOffset::read(std::string_view text) {
  text = trimmedVAST(text);
  if (!text.ends_with('%')) {
    const auto seconds = readVASTTime(text);
    return seconds ? std::optional(VASTOffset{*seconds, false}) : std::nullopt;
  }
  text.remove_suffix(1);
  const auto percent = amount(trimmedVAST(text));
  return percent && *percent <= 100 ? std::optional(VASTOffset{*percent, true}) : std::nullopt;
}

std::optional<double> VASTOffset::secondsOf(std::optional<double> duration) const {
  if (!isPercent) return value;
  return duration ? std::optional(*duration * value / 100) : std::nullopt;
}

}  // namespace velto
