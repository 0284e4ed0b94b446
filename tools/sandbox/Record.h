// One request as the sandbox ad server saw it: what tests assert on and what the log holds, one JSON line
// each.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "sandbox/Rules.h"
#include "sandbox/TrackIdentifier.h"

namespace velto::sandbox {

struct RecordedRequest {
  std::int64_t timeMs = 0;  // milliseconds since 1970, on arrival
  // Number of the TCP connection, from 1: equal numbers mean a reused connection.
  std::uint64_t connection = 0;
  bool tlsResumed = false;  // the TLS session was resumed
  // Tls: a handshake that a rule spoiled; then only host, rule and the fields above are set.
  Kind kind = Kind::Other;
  std::string host;  // Host header without port, lower case
  std::string method;
  std::string path;                                          // percent-decoded
  std::vector<std::pair<std::string, std::string>> query;    // percent-decoded, in order
  std::vector<std::pair<std::string, std::string>> headers;  // as sent, in order
  std::string body;
  std::optional<TrackIdentifier> track;  // installs and clicks whose identifier could be read
  std::string rule;                      // the rule that answered; "" if none did
  int status = 0;                        // the status sent; 0 when the connection was cut instead
  std::vector<std::string> problems;     // what a real server would not expect in this request

  std::string queryValue(std::string_view name) const;  // "" when absent
  bool hasQuery(std::string_view name) const;
  std::string header(std::string_view name) const;  // any case; "" when absent

  // The whole record as one line of JSON, without line end. Bodies are capped at 64 KiB.
  std::string toJsonLine() const;
};

}  // namespace velto::sandbox
