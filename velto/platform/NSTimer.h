// A repeating timer on the main queue. Shared by all platforms.
#pragma once

#include "velto/platform/Handle.h"

#include <functional>
#include <memory>

namespace velto {

class NSTimer {
 public:
  // Fires every `seconds` on the main thread, first after one
  // interval, until invalidated or destroyed. Main thread.
  static std::unique_ptr<NSTimer> scheduledTimerWithTimeInterval(double seconds,
                                                                 std::function<void()> action);

  // Ends it; no call comes afterwards. Allowed inside the action.
  void invalidate() { handle_.cancel(); }
  bool isValid() const { return static_cast<bool>(handle_); }

 private:
  explicit NSTimer(Handle handle) : handle_(std::move(handle)) {}
  Handle handle_;
};

}  // namespace velto
