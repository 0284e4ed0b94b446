// Supplied by the platform: the one queue on which views, delegates and timers live.
#pragma once

#include "velto/Export.h"
#include "velto/platform/Handle.h"

#include <chrono>
#include <functional>

namespace velto {

class VELTO_EXPORT MainQueue {
 public:
  using Task = std::function<void()>;

  virtual ~MainQueue() = default;

  // Runs the task later on the main thread, never inside this
  // call. Any thread. Tasks of one thread keep their order.
  virtual void post(Task task) = 0;

  // The same after a delay. Any thread. Equal due times run in the order of the calls. The longest delay
  // (`never` of Durations.h) does not come.
  virtual void postAfter(std::chrono::nanoseconds delay, Task task) = 0;

  // Runs the task again and again, first after one interval. Main thread only. A tick that comes late is not
  // made up for. The interval is at least one millisecond; the longest does not come.
  [[nodiscard]] virtual Handle every(std::chrono::nanoseconds interval, Task task) = 0;

  // Whether the caller is on the main thread. Any thread.
  virtual bool isCurrent() const = 0;
};

}  // namespace velto
