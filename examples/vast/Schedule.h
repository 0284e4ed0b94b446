// When a film is interrupted by ads: the breaks of a schedule (VMAP), in the order in which this player comes to them. Main thread.
#pragma once

#include <velto/platform/Handle.h>
#include <velto/vast/VMAPDocument.h>

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace player {

// A break whose turn comes. `plan` is in the document.
struct Due {
  double at = 0;  // seconds of the film; where that has no known length, the end is infinity
  const velto::VMAPAdBreak* plan = nullptr;
  double end = 0;  // of the film

  bool isAtEnd() const { return at >= end; }
  bool isAtStart() const { return at <= 0; }
};

// One that is given by hand: ads from that address.
velto::VMAPAdBreak breakAt(velto::VMAPOffset offset, const std::string& address);

// All breaks of a film of that length (nothing: not known). Its own opportunities, in seconds, are what breaks of a number
// ("#2") are for. What lies behind the film's end is left out; what comes again does so until then.
std::deque<Due> breaksOf(const velto::VMAPDocument& schedule, std::optional<double> duration,
                         const std::vector<double>& opportunities);

// Calls back later, unless the handle goes before. Without an answer the document says that it is none.
velto::Handle fetchSchedule(const std::string& address, std::function<void(velto::VMAPDocument)> done);

// Tells the schedule's servers: that a break starts or ends, or with an error why it has no ads.
void tell(const std::vector<std::string>& addresses, double filmAt,
          std::optional<velto::VMAPError> error = std::nullopt);

}  // namespace player
