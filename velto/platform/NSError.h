// A system error: a domain (such as "libcurl" or "NSURLErrorDomain"),
// a number of that domain and a text for people.
#pragma once

#include <cstdint>
#include <string>

namespace velto {

// What the library tells apart, whatever the domain.
enum class NSErrorCause : uint8_t {
  Unknown,
  // Of a transport.
  Offline,
  NameNotFound,
  NotConnected,
  Untrusted,  // the certificate; also of a page
  SecureConnectionFailed,
  TimedOut,
  ConnectionLost,
  TooLarge,
  RedirectRefused,
  NotFound,  // of a player: the file could not be had
  // Of a web view.
  ProcessCrashed,
  ProcessOutOfMemory,
  ProcessEnded,
  ProcessHung,        // it gave no answer for 5 s, and was ended
  EngineUnavailable,  // also of a player: nothing here plays files
};

struct NSError {
  std::string domain;
  int64_t code = 0;
  std::string localizedDescription;
  NSErrorCause cause = NSErrorCause::Unknown;

  // The page was lost with its process; the engine goes on with another.
  bool isOfProcess() const {
    return cause >= NSErrorCause::ProcessCrashed && cause <= NSErrorCause::ProcessHung;
  }
};

}  // namespace velto
