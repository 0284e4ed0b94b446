// The rules of a running sandbox server with their counters: picks the answer for each request. Server.cpp
// asks it.
#pragma once

#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "sandbox/Rules.h"

namespace velto::sandbox {

// What rules look at in a request.
struct RequestFacts {
  Kind kind = Kind::Other;
  std::string host;
  std::string endpoint;
  std::string path;
  std::string key;
  std::string type;
  std::string size;
  std::string item;
};

// An answer picked for one request: a copy, so that rules may change meanwhile.
struct ChosenAnswer {
  std::string rule;
  Answer answer;
  std::size_t turn = 1;  // how often the rule has answered, this time included
};

// The ordered list of rules with their counters; the first rule that matches answers. Any thread may call it.
class RuleBook {
 public:
  void append(Rule rule);
  void prepend(Rule rule);

  // Counts the request for every rule whose conditions it meets, and picks the answer.
  std::optional<ChosenAnswer> choose(const RequestFacts& facts);
  // The same for a TLS handshake; the rule's name and its fault.
  std::optional<std::pair<std::string, TlsFault>> chooseTls(const RequestFacts& facts);

 private:
  struct Entry {
    Rule rule;
    std::size_t met = 0;
    std::size_t answered = 0;
  };
  Entry* pick(const RequestFacts& facts, bool handshake);

  std::mutex mutex_;
  std::vector<Entry> entries_;
  std::size_t unnamed_ = 0;
};

}  // namespace velto::sandbox
