// The system's clocks. Any thread.
#pragma once

#include "velto/platform/Clock.h"

#include <glib.h>

namespace velto::gtk {

class SystemClock : public Clock {
 public:
  double secondsSince1970() const override { return static_cast<double>(g_get_real_time()) / G_USEC_PER_SEC; }
  double monotonicSeconds() const override {
    return static_cast<double>(g_get_monotonic_time()) / G_USEC_PER_SEC;
  }
};

}  // namespace velto::gtk
