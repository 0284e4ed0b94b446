// The rich-media state of one displayed ad. Main thread.
#pragma once

#include "velto/mraid/VeltoMRAIDProperties.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace velto {

// Only what the controllers read of a handler stands here so far; the state machine behind it does not.
class VeltoMRAIDHandler {
 public:
  static std::shared_ptr<VeltoMRAIDHandler> handler() { return std::make_shared<VeltoMRAIDHandler>(); }

  uint64_t orientationMask = 30;  // orientations that the ad allows
  VeltoMRAIDPropertyOrientation orientationProperty;
};

}  // namespace velto
