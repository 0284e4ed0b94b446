// Reading JSON that others wrote, for request bodies and scenario files: nothing nested so deep that it could
// exhaust the stack later, and repeated keys noticed.
#pragma once

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace velto::sandbox {

using Json = nlohmann::ordered_json;

// Throws Json::parse_error, also for nesting beyond 64 levels. Keys that an outermost object holds more than
// once are appended to repeatedKeys; the last one counts.
inline Json parseJson(const std::string& text, std::vector<std::string>* repeatedKeys = nullptr) {
  constexpr int kMaxDepth = 64;
  std::vector<std::string> keys;
  bool tooDeep = false;
  const auto watch = [&](int depth, Json::parse_event_t event, Json& value) {
    if (depth > kMaxDepth) tooDeep = true;
    if (depth == 1 && event == Json::parse_event_t::key && repeatedKeys) {
      const std::string key = value.get<std::string>();
      if (std::find(keys.begin(), keys.end(), key) == keys.end()) {
        keys.push_back(key);
      } else {
        repeatedKeys->push_back(key);
      }
    }
    return !tooDeep;
  };
  Json json = Json::parse(text, watch);
  if (tooDeep) {
    throw Json::parse_error::create(101, std::size_t{0}, "nested deeper than 64 levels", nullptr);
  }
  return json;
}

}  // namespace velto::sandbox
