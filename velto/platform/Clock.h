// Supplied by the platform: the time. Nothing in the library
// reads a clock of its own, so tests run in virtual time.
#pragma once

#include "velto/Export.h"

namespace velto {

class VELTO_EXPORT Clock {
 public:
  virtual ~Clock() = default;

  // Seconds since 1970 (UTC), with fraction. May jump when somebody sets the device's clock. Any thread.
  virtual double secondsSince1970() const = 0;

  // Seconds of a clock that never jumps or runs backwards; its zero is arbitrary. Any thread.
  virtual double monotonicSeconds() const = 0;
};

}  // namespace velto
