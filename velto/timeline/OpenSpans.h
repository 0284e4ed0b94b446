// Where spans of a load that is under way began, for those who write spans down. Values.
#pragma once

#include "velto/timeline/VeltoTimelineEntry.h"

#include <optional>
#include <utility>

namespace velto {

class OpenSpans {
 public:
  struct Span {
    const char* name;
    double from, to;  // monotonic seconds
  };

  // The span that ends with this entry, if one does.
  std::optional<Span> take(const VeltoTimelineEntry& entry) {
    using Kind = VeltoTimelineKind;
    if (entry.kind == Kind::Sent) sent_ = entry.seconds;
    if (entry.kind == Kind::MarkupGiven) markupGiven_ = entry.seconds;
    if (entry.kind == Kind::Answered) return close("answer", sent_, entry);
    if (entry.kind == Kind::LoadFinished) return close("page", markupGiven_, entry);
    return std::nullopt;
  }

 private:
  static std::optional<Span> close(const char* name, std::optional<double>& from,
                                   const VeltoTimelineEntry& at) {
    const auto began = std::exchange(from, std::nullopt);
    return began ? std::optional(Span{name, *began, at.seconds}) : std::nullopt;
  }

  std::optional<double> sent_, markupGiven_;
};

}  // namespace velto
