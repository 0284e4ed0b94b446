// What the sandbox ad server answers: rules, each a condition and one or more answers. Scenario files are
// read into these records (Scenario.h); tests build them in code and hand them to Server::addRule.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velto::sandbox {

enum class Kind { Ad, Mediation, Install, Click, Vast, Download, Other, Tls };

// The word of a kind as scenario files and recorded lines spell it: "ad", "mediation", ...
const char* wordFor(Kind kind);

// What can go wrong on the wire. The fields combine: a slow body can also be cut. The connection is closed
// after any of them.
struct Fault {
  bool cutBeforeHeaders = false;                   // close without a byte of answer
  std::optional<std::size_t> cutAfterBytes = {};   // close after this many bytes of the body
  std::optional<std::size_t> declaredLength = {};  // Content-Length that differs from the body's length
  std::size_t chunkBytes = 0;                      // slow body: bytes a chunk; 0 sends it at once
  std::chrono::milliseconds interval{0};           // slow body: pause before each chunk but the first

  bool any() const { return cutBeforeHeaders || cutAfterBytes || declaredLength || chunkBytes > 0; }
};

struct Answer {
  int status = 200;
  std::vector<std::pair<std::string, std::string>> headers;
  std::string body;
  std::chrono::milliseconds delay{0};  // before the first byte
  bool expand = false;  // replace {{width}}, {{height}}, {{key}}, {{type}}, {{host}}, {{count}}
  Fault fault;

  // Ad markup with the headers that an ad needs: x-content "html", x-width and x-height.
  static Answer markup(std::string html, int width, int height);
  // Mediation instructions, given as the text of their JSON document.
  static Answer mediation(std::string json, int width, int height);
  static Answer text(int status, std::string body = {});

  Answer& header(std::string name, std::string value);
};

// Which of the requests that meet the other conditions: counted from 1, over all of them, whatever rule
// answered.
struct Count {
  std::size_t from = 1;
  std::size_t to = static_cast<std::size_t>(-1);
  std::size_t every = 1;  // of those: the every-th, counted from the first request

  static Count nth(std::size_t n) { return {n, n, 1}; }
  static Count starting(std::size_t n) { return {n, static_cast<std::size_t>(-1), 1}; }
  static Count multiplesOf(std::size_t n) { return {1, static_cast<std::size_t>(-1), n}; }

  bool admits(std::size_t n) const { return n >= from && n <= to && n % every == 0; }
};

// Every condition that is given must hold. A path ending in "*" matches by its beginning.
struct Match {
  std::optional<Kind> kind = {};
  std::optional<std::string> key = {};       // publisher key; for installs the key inside the identifier
  std::optional<std::string> type = {};      // "banner", "interstitial"
  std::optional<std::string> size = {};      // "Smart Banner", "320x50", "728x90", "300x250"
  std::optional<std::string> host = {};      // without port
  std::optional<std::string> endpoint = {};  // the sub-domain of the publisher host; "" is the ad server
  std::optional<std::string> path = {};
  std::optional<std::string> item = {};  // the data of a mediation item, as its request carries it
  Count count = {};
};

// TLS failures, selected by the host name in the client's hello.
enum class TlsFault { None, Refuse, WrongName, Expired, Untrusted };

struct Rule {
  std::string name = {};  // appears in the recorded lines
  Match when = {};
  std::vector<Answer> answers = {};  // given in turn; the last repeats
  TlsFault tls = TlsFault::None;     // a TLS rule looks only at host, endpoint and count, and has no answers
};

}  // namespace velto::sandbox
