// A property that must hold for every input: a fuzz target that breaks one stops here.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>

inline void require(bool holds) {
  if (!holds) std::abort();
}

inline std::string_view asText(const uint8_t* data, size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

// Random bytes hardly ever spell a word, so some of them stand for one.
inline std::string spelled(std::string_view text, const std::map<char, std::string_view>& words) {
  std::string all;
  for (const char c : text) {
    if (const auto word = words.find(c); word != words.end())
      all += word->second;
    else
      all += c;
  }
  return all;
}
