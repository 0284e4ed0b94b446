// Turning the interface where there is no device to turn: a window that people may resize changes places of
// its width and height. Owned by the platform; main thread only.
#pragma once

#include "velto/platform/NSNotificationCenter.h"
#include "velto/platform/UIDevice.h"

#include <cstdint>

namespace velto::gtk {

class Rotation {
 public:
  explicit Rotation(NSNotificationCenter& center);

  // Turns the application's windows to that orientation, unless an ad that is shown allows only others. A
  // maximised window, and one of a fixed size, stays as it is.
  void attempt(UIDeviceOrientation orientation) const;

 private:
  int64_t mask_;  // orientations allowed, a bit each
  Handle observer_;
};

}  // namespace velto::gtk
