// Virtual time: an ordered map of tasks, and a loop that takes the first one out.
#include "velto/headless/VirtualQueue.h"

#include "velto/platform/Durations.h"

#include <algorithm>
#include <stdexcept>

namespace velto::headless {
namespace {

constexpr int tasksBeforeGivingUp = 1'000'000;
constexpr VirtualQueue::Nanoseconds lastInstant = never - VirtualQueue::Nanoseconds(1);

double seconds(std::chrono::nanoseconds duration) {
  return std::chrono::duration<double>(duration).count();
}

[[noreturn]] void throwRestless() {
  throw std::runtime_error("velto::headless: the main queue does not come to rest; tasks keep posting tasks");
}

[[noreturn]] void throwOffMain(const char* operation) {
  throw std::logic_error(std::string("velto::headless: called off the main thread: ") + operation);
}

}  // namespace

struct VirtualQueue::Repeating {
  Nanoseconds interval;
  Task task;
};

VirtualQueue::~VirtualQueue() {
  clear();
}

void VirtualQueue::add(Nanoseconds delay, Task task, bool offMain) {
  delay = std::max(delay, Nanoseconds(0));
  std::lock_guard lock(mutex_);
  tasks_.emplace(Due{sumWithin(now_, delay), sequence_++}, Entry{std::move(task), offMain});
}

void VirtualQueue::postOffMain(Nanoseconds delay, Task task) {
  add(delay, std::move(task), true);
}

Handle VirtualQueue::every(Nanoseconds interval, Task task) {
  requireMain("MainQueue::every");
  interval = std::max<Nanoseconds>(interval, std::chrono::milliseconds(1));
  auto repeating = std::make_shared<Repeating>(Repeating{interval, std::move(task)});
  repeat(repeating);
  ++*timers_;
  return Handle([repeating, timers = timers_] {
    repeating->task = nullptr;
    --*timers;
  });
}

void VirtualQueue::repeat(const std::shared_ptr<Repeating>& repeating) {
  postAfter(repeating->interval, [this, weak = std::weak_ptr(repeating)] {
    const auto alive = weak.lock();
    if (!alive || !alive->task) return;
    repeat(alive);
    const Task task = alive->task;  // a copy: the task may cancel itself
    task();
  });
}

bool VirtualQueue::isCurrent() const {
  return std::this_thread::get_id() == thread_ && !offMain_;
}

void VirtualQueue::requireMain(const char* operation) const {
  if (!isCurrent()) throwOffMain(operation);
}

void VirtualQueue::reportUnlessMain(const char* operation) noexcept {
  if (isCurrent()) return;
  std::lock_guard lock(mutex_);
  misuse_ = operation;
}

double VirtualQueue::secondsSince1970() const {
  std::lock_guard lock(mutex_);
  return start_ + seconds(now_);
}

double VirtualQueue::monotonicSeconds() const {
  std::lock_guard lock(mutex_);
  return seconds(now_);
}

void VirtualQueue::setSecondsSince1970(double value) {
  std::lock_guard lock(mutex_);
  start_ = value - seconds(now_);
}

void VirtualQueue::suspend(Nanoseconds duration) {
  std::lock_guard lock(mutex_);
  start_ += seconds(duration);
}

void VirtualQueue::stall(Nanoseconds duration) {
  std::lock_guard lock(mutex_);
  now_ = std::min(sumWithin(now_, std::max(duration, Nanoseconds(0))), lastInstant);
}

size_t VirtualQueue::timers() const {
  requireMain("VirtualQueue::timers");
  return *timers_;
}

size_t VirtualQueue::pending() const {
  std::lock_guard lock(mutex_);
  return tasks_.size();
}

bool VirtualQueue::isIdle() const {
  std::lock_guard lock(mutex_);
  return tasks_.empty() || tasks_.begin()->first.first > now_;
}

void VirtualQueue::clear() {
  // Destroying a task may post or cancel others, so they are taken out first.
  for (;;) {
    std::map<Due, Entry> dropped;
    {
      std::lock_guard lock(mutex_);
      dropped.swap(tasks_);
    }
    if (dropped.empty()) return;
  }
}

std::optional<VirtualQueue::Nanoseconds> VirtualQueue::nextDue() const {
  std::lock_guard lock(mutex_);
  return tasks_.empty() ? std::nullopt : std::optional(tasks_.begin()->first.first);
}

void VirtualQueue::runNext() {
  std::map<Due, Entry>::node_type node;
  {
    std::lock_guard lock(mutex_);
    if (tasks_.empty()) return;
    node = tasks_.extract(tasks_.begin());
    now_ = std::max(now_, node.key().first);
  }
  struct Restore {
    bool& flag;
    bool before;
    ~Restore() { flag = before; }
  };
  {
    const Restore restore{offMain_, std::exchange(offMain_, node.mapped().offMain)};
    node.mapped().task();
    node.mapped().task = nullptr;  // what it holds goes on the same thread
  }
  const char* misuse = nullptr;
  {
    std::lock_guard lock(mutex_);
    misuse = std::exchange(misuse_, nullptr);
  }
  if (misuse) throwOffMain(misuse);
}

void VirtualQueue::runUntilIdle() {
  advance(Nanoseconds(0));
}

void VirtualQueue::advance(Nanoseconds duration) {
  const Nanoseconds end = [&] {
    std::lock_guard lock(mutex_);
    return std::min(sumWithin(now_, std::max(duration, Nanoseconds(0))), lastInstant);
  }();
  // Time that passes is no restlessness: only tasks within one instant count.
  int inThisInstant = 0;
  Nanoseconds instant{-1};
  for (auto due = nextDue(); due && *due <= end; due = nextDue()) {
    inThisInstant = *due == instant ? inThisInstant + 1 : 0;
    instant = *due;
    if (inThisInstant > tasksBeforeGivingUp) throwRestless();
    runNext();
  }
  std::lock_guard lock(mutex_);
  now_ = std::max(now_, end);
}

bool VirtualQueue::runUntil(const std::function<bool()>& condition, Nanoseconds limit) {
  const double end = monotonicSeconds() + seconds(limit);
  int count = 0;
  while (!condition()) {
    const auto due = nextDue();
    if (!due || seconds(*due) > end) {
      advance(nanosecondsIn(end - monotonicSeconds()));
      return condition();
    }
    if (++count > tasksBeforeGivingUp) throwRestless();
    runNext();
  }
  return true;
}

}  // namespace velto::headless
