// The promises that a walk looks after, the faults that prove it does, and where the first broken one is written down.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace velto::chaos {

// Each breaks one promise from outside the library, as a broken platform, host or build would.
enum class Fault {
  None,
  TwoEnds,          // a load's end is told twice
  LateCall,         // the host holds on to an ad that it has let go of
  LostCallback,     // a call of the delegate goes astray
  LostTrack,        // the store forgets what it has acknowledged
  UntouchedOpen,    // the platform lets pages open what they like
  StaleConsent,     // the host's withdrawal does not reach the library
  ForgottenTimer,   // each load leaves a timer behind
  ForgottenMemory,  // each load leaves memory behind
  Crash,            // a closed window brings the process down
};
inline constexpr std::array<std::string_view, 10> faultNames{
    "none",           "two-ends",      "late-call",       "lost-callback",    "lost-track",
    "untouched-open", "stale-consent", "forgotten-timer", "forgotten-memory", "crash"};

class Promises {
 public:
  explicit Promises(Fault fault) : fault_(fault) {}
  bool has(Fault fault) const { return fault_ == fault; }
  void require(bool holds, std::string_view promise) {
    if (!holds && !broken_) broken_ = promise;
  }
  const std::optional<std::string>& broken() const { return broken_; }

 private:
  const Fault fault_;
  std::optional<std::string> broken_;
};

}  // namespace velto::chaos
