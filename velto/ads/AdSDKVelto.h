// Tests on ad markup. Any thread.
#pragma once

#include "velto/platform/foundation/Patterns.h"

#include <string>

namespace velto::AdSDKVelto {

// Whether the markup is the server's way of saying that it has no ad: a link to velto://noFillAd anywhere in
// it.
inline bool isAdNoFill(const std::string& markup) {
  return containsLinkWith(markup, "velto://noFillAd");
}

// Whether the markup is a rich-media ad.
inline bool isAdMRAID(const std::string& markup) {
  return markup.find("mraid.js") != std::string::npos;
}

}  // namespace velto::AdSDKVelto
