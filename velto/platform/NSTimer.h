// A repeating timer on the main queue. Shared by all platforms.
#pragma once

#include "velto/Export.h"
#include "velto/platform/Handle.h"

#include <functional>
#include <memory>

namespace velto {

class VELTO_EXPORT NSTimer {
 public:
  // Fires every `seconds` on the main thread, first after one interval, until it is destroyed; never for an
  // interval longer than any clock holds. Main thread.
  static std::unique_ptr<NSTimer> scheduledTimerWithTimeInterval(double seconds,
                                                                 std::function<void()> action);

 private:
  explicit NSTimer(Handle handle) : handle_(std::move(handle)) {}
  Handle handle_;
};

}  // namespace velto
