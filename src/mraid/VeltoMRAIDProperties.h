// What a rich-media page has asked for with its property calls: plain records.
#pragma once

#include "velto/platform/Geometry.h"

#include <cstdint>
#include <optional>
#include <string>

namespace velto {

struct VeltoMRAIDPropertyResize {
  std::optional<std::string> customClosePosition;
  int64_t customClosePositionType = 0;
  std::optional<double> allowOffscreen;  // a boolean; absent counts as false
  CGRect frame;                          // offset and size, points
};

struct VeltoMRAIDPropertyOrientation {
  bool allowOrientationChange = true;
  std::string forceOrientation = "none";
};

}  // namespace velto
