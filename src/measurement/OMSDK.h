// Open Measurement: activation of the engine and injection of its service script into markup.
#pragma once

#include <string>
#include <utility>

// Nothing is measured yet: the operations are called where they will be needed and change nothing so far.
namespace velto::OMSDK {

inline void initOMSDK() {}
inline std::string htmlWithOMSDKInjection(std::string html) {
  return html;
}

}  // namespace velto::OMSDK
