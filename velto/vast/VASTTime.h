// Times as they stand in documents of video ads: "00:00:15", "00:00:15.500", "25%". Values; any thread.
#pragma once

#include "velto/Export.h"

#include <optional>
#include <string>
#include <string_view>

namespace velto {

// A moment of an ad, by time or as a share of its length (VAST 4.2, 3.8 skipoffset and 3.14.1 offset).
struct VELTO_EXPORT VASTOffset {
  double value = 0;  // seconds, or percent
  bool isPercent = false;

  // Seconds from the start of what is that many seconds long; a percentage of nothing known is nothing.
  std::optional<double> secondsOf(std::optional<double> duration) const;
  // Blanks around it count for nothing. Nothing for anything else than a time or a percentage of at most 100.
  static std::optional<VASTOffset> read(std::string_view text);
  bool operator==(const VASTOffset&) const = default;
};

// "HH:MM:SS" with or without ".mmm", also "MM:SS" and plain seconds, as some servers write them. Nothing for anything else.
VELTO_EXPORT std::optional<double> readVASTTime(std::string_view text);
// "HH:MM:SS.mmm"; less than nothing is nothing.
VELTO_EXPORT std::string vastTime(double seconds);

}  // namespace velto
