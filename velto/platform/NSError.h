// A system error: a domain (such as "libcurl" or "NSURLErrorDomain"),
// a number of that domain and a text for people.
#pragma once

#include <cstdint>
#include <string>

namespace velto {

struct NSError {
  std::string domain;
  int64_t code = 0;
  std::string localizedDescription;
};

}  // namespace velto
