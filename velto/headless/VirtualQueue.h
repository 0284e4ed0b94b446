// The main queue and the clock of the headless platform: virtual time, moved only by the test.
//
// Tasks run inside runUntilIdle(), advance() and runUntil(), on the thread that made the queue, in the order
// of their due times; equal times in the order of the calls. Nothing sleeps: an hour passes in microseconds.
// An exception thrown by a task leaves through the running call; the queue stays usable.
#pragma once

#include "velto/Export.h"
#include "velto/platform/Clock.h"
#include "velto/platform/MainQueue.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

namespace velto::headless {

class VELTO_EXPORT VirtualQueue : public MainQueue, public Clock {
 public:
  using Nanoseconds = std::chrono::nanoseconds;

  // 2024-01-01T00:00:00Z.
  static constexpr double defaultStart = 1'704'067'200;

  VirtualQueue() = default;
  ~VirtualQueue() override;

  // For tests. Runs everything that is due now, also what those tasks post. Throws std::runtime_error when
  // the tasks never come to rest (a million in one call).
  void runUntilIdle();
  // Moves time forward, running each task at its due time.
  void advance(Nanoseconds duration);
  // Moves time from task to task until the condition holds; false when it does not within the limit. Without
  // a task left, time still moves to the limit, as it would for a user who waits.
  bool runUntil(const std::function<bool()>& condition, Nanoseconds limit = std::chrono::minutes(5));
  // Somebody sets the device's clock: the wall clock jumps, due times and monotonic seconds do not.
  void setSecondsSince1970(double seconds);
  // The device sleeps, as with its lid closed: the wall clock goes on, timers and monotonic seconds stand still.
  void suspend(Nanoseconds duration);
  // The process is held up, as one that was stopped: all clocks go on and nothing runs. What came due meanwhile runs
  // late, each repeating task once, when time is moved the next time.
  void stall(Nanoseconds duration);
  // Tasks that wait, due or not.
  size_t pending() const;
  bool isIdle() const;  // none of them is due
  // Repeating tasks that go on: a program that rests has few.
  size_t timers() const;

  // For the scripted services. A task that stands for another
  // thread (a transport's): isCurrent() is false while it runs.
  void postOffMain(Nanoseconds delay, Task task);
  // Throws std::logic_error naming the operation when the caller does not stand on the main thread.
  void requireMain(const char* operation) const;
  // The same for destructors, which must not throw: the running call throws once the task has returned.
  void reportUnlessMain(const char* operation) noexcept;
  // Drops all tasks unrun. The platform does it as it goes.
  void clear();

  void post(Task task) override { add({}, std::move(task), false); }
  void postAfter(Nanoseconds delay, Task task) override { add(delay, std::move(task), false); }
  [[nodiscard]] Handle every(Nanoseconds interval, Task task) override;
  bool isCurrent() const override;
  double secondsSince1970() const override;
  double monotonicSeconds() const override;

 private:
  struct Entry {
    Task task;
    bool offMain = false;
  };
  struct Repeating;
  using Due = std::pair<Nanoseconds, uint64_t>;

  void add(Nanoseconds delay, Task task, bool offMain);
  std::optional<Nanoseconds> nextDue() const;
  void runNext();
  void repeat(const std::shared_ptr<Repeating>& repeating);

  mutable std::mutex mutex_;  // for all below but the thread and its flag; never held while a task runs
  std::map<Due, Entry> tasks_;
  uint64_t sequence_ = 0;
  Nanoseconds now_{0};
  double start_ = defaultStart;
  std::shared_ptr<size_t> timers_ = std::make_shared<size_t>(0);
  const char* misuse_ = nullptr;  // from reportUnlessMain
  const std::thread::id thread_ = std::this_thread::get_id();
  bool offMain_ = false;  // a task that stands for another thread is running
};

}  // namespace velto::headless
