// The main queue over GLib's default main context: one source for all tasks,
// woken at the time the next one is due. The host application runs the loop;
// a loop that it nests inside a callback keeps the library's tasks going.
#pragma once

#include "velto/platform/MainQueue.h"
#include "velto/platform/foundation/GMemory.h"

#include <glib.h>

#include <memory>
#include <thread>

namespace velto::gtk {

class GLibMainQueue : public MainQueue {
 public:
  // The calling thread becomes the main thread: the one that runs, or will run, the default main context.
  GLibMainQueue();
  // Tasks that are still waiting are destroyed, not run.
  ~GLibMainQueue() override;

  void post(Task task) override;
  void postAfter(std::chrono::nanoseconds delay, Task task) override;
  Handle every(std::chrono::nanoseconds interval, Task task) override;
  bool isCurrent() const override { return std::this_thread::get_id() == thread_; }

 private:
  class Schedule;

  std::shared_ptr<Schedule> schedule_;
  GOwned<GSource, g_source_unref> source_;
  std::thread::id thread_ = std::this_thread::get_id();
};

}  // namespace velto::gtk
