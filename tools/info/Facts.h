// Every value that the library would send now, each with what it means, where it comes from, and who has to
// agree. They are taken from requests that the library builds, so that none is missing.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace velto::info {

struct Fact {
  std::string request;               // "ad", "video", "track" or "page"
  std::string name;                  // as the server or the page calls it
  std::optional<std::string> value;  // nothing: it would not be sent
  std::string meaning;
  std::string source;  // empty for a value that nobody has described here
  std::string gate;    // whose agreement it takes; empty: nobody's
};

// Of the installed platform. Values that the host application gives with each request are not in it, but
// named.
std::vector<Fact> facts();

}  // namespace velto::info
