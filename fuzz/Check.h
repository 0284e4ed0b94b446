// A property that must hold for every input: a fuzz target that breaks one stops here.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <string_view>

inline void require(bool holds) {
  if (!holds) std::abort();
}

inline std::string_view asText(const uint8_t* data, size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}
