// Sends what video ads tell their servers: each address once, and what the network kept from leaving again later, for as long
// as the process lives. One for the platform, so that what is told at the end of an ad outlives its player. Main thread.
//
// A request that may have reached its server is not sent again: the server would count twice. So only those are repeated that
// never found one (no network, no name, no connection, no secure one): after 1 s, then twice as long each time, at most 5 min,
// one of them at a time until one arrives, and then all. Beyond 1,000 that wait, the oldest is let go, and so is one that three
// times did not arrive while others did, or fifty times at all: its server is gone, or may not be reached.
#pragma once

#include "velto/Export.h"
#include "velto/platform/foundation/NSURL.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace velto {

class VASTMacros;

// What became of one address.
struct VASTSent {
  enum class Result : uint8_t {
    Arrived,  // its server answered
    Perhaps,  // it left, and no answer came
    Waits,    // it never left, and is sent again; told once
    GivenUp,  // it is no address, or was let go of
  };
  Result result = Result::Arrived;
  int status = 0;  // of the answer; 0: none
};

class VELTO_EXPORT VASTSender {
 public:
  static constexpr size_t mostWaiting = 1000;
  static constexpr std::chrono::seconds firstPause{1}, longestPause{300};

  // The one of the installed platform.
  static std::shared_ptr<VASTSender> shared();
  VASTSender();
  ~VASTSender();
  VASTSender(const VASTSender&) = delete;
  VASTSender& operator=(const VASTSender&) = delete;

  using Heard = std::function<void(const VASTSent&)>;

  // Puts the macros in and sends, those of https first, else in order. What is no address is left out. `heard` is called when
  // it is known what became of each, in a later turn, for as long as the process lives.
  void send(const std::vector<std::string>& urls, const VASTMacros& macros, const Heard& heard = nullptr);

  size_t waiting() const;

 private:
  struct State;
  std::shared_ptr<State> state_;  // completions hold it weakly
};

}  // namespace velto
