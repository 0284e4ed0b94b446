// The repeating timer over the platform's main queue.
#include "velto/platform/NSTimer.h"

#include "velto/platform/Durations.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"

namespace velto {

std::unique_ptr<NSTimer> NSTimer::scheduledTimerWithTimeInterval(double seconds,
                                                                 std::function<void()> action) {
  return std::unique_ptr<NSTimer>(
      new NSTimer(Platform::current().mainQueue().every(nanosecondsIn(seconds), std::move(action))));
}

}  // namespace velto
