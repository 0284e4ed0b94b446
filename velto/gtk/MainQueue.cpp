// Tasks sorted by due time, and the GLib source that runs them.
#include "velto/gtk/MainQueue.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <optional>

namespace velto::gtk {
namespace {

using std::chrono::microseconds;
using std::chrono::nanoseconds;

struct Repeating {
  microseconds interval;
  MainQueue::Task task;
};

struct Entry {
  MainQueue::Task task;              // to run once, or
  std::weak_ptr<Repeating> repeats;  // again and again while its handle lives
};

microseconds now() {
  return microseconds(g_get_monotonic_time());
}

// Never earlier than asked for.
microseconds roundedUp(nanoseconds delay) {
  return std::chrono::ceil<microseconds>(std::max(delay, nanoseconds(0)));
}

// The next multiple of the interval that is still to come.
microseconds nextTick(microseconds due, microseconds interval) {
  const auto late = std::max(now() - due, microseconds(0));
  return due + (late / interval + 1) * interval;
}

}  // namespace

class GLibMainQueue::Schedule {
 public:
  explicit Schedule(GSource* source) : source_(source) {}

  void add(microseconds delay, Entry entry) {
    std::lock_guard lock(mutex_);
    insert(now() + delay, entry);
  }

  // Takes one task out at a time, so that tasks run unlocked,
  // may add others, and may nest a loop that goes on here.
  void runDue() {
    const auto until = now();
    while (auto node = takeDue(until)) {
      if (node.mapped().task)
        node.mapped().task();
      else if (auto repeating = node.mapped().repeats.lock())
        tick(std::move(repeating), node.key());
    }
  }

  void close() {
    decltype(entries_) dropped;  // goes after the lock: destroying a task may post another
    std::lock_guard lock(mutex_);
    source_ = nullptr;
    dropped.swap(entries_);
  }

 private:
  using Entries = std::multimap<microseconds, Entry>;  // equal times keep the order of insertion

  // Once closed the entry stays with the caller, to be destroyed after the lock: what a task holds may post.
  void insert(microseconds due, Entry& entry) {
    if (!source_) return;
    entries_.emplace(due, std::move(entry));
    wakeAtNext();
  }

  Entries::node_type takeDue(microseconds until) {
    std::lock_guard lock(mutex_);
    Entries::node_type node;
    if (!entries_.empty() && entries_.begin()->first <= until) node = entries_.extract(entries_.begin());
    wakeAtNext();
    return node;
  }

  void tick(std::shared_ptr<Repeating> repeating, microseconds due) {
    repeating->task();
    Entry next{nullptr, repeating};
    const auto interval = repeating->interval;
    repeating.reset();
    if (next.repeats.expired()) return;  // cancelled by itself
    std::lock_guard lock(mutex_);
    insert(nextTick(due, interval), next);
  }

  void wakeAtNext() {
    if (source_) g_source_set_ready_time(source_, entries_.empty() ? -1 : entries_.begin()->first.count());
  }

  std::mutex mutex_;
  Entries entries_;
  GSource* source_;  // null once closed
};

namespace {

gboolean dispatch(GSource*, GSourceFunc callback, gpointer data) noexcept {
  return callback(data);
}

GSourceFuncs sourceFunctions{nullptr, nullptr, dispatch, nullptr, nullptr, nullptr};

}  // namespace

GLibMainQueue::GLibMainQueue() : source_(g_source_new(&sourceFunctions, sizeof(GSource))) {
  schedule_ = std::make_shared<Schedule>(source_.get());
  g_source_set_name(source_.get(), "velto main queue");
  g_source_set_can_recurse(source_.get(), TRUE);
  // The source has a share of its own: GLib keeps it through a dispatch, even one that destroys this queue.
  g_source_set_callback(
      source_.get(),
      [](gpointer data) noexcept -> gboolean {
        (*static_cast<std::shared_ptr<Schedule>*>(data))->runDue();
        return G_SOURCE_CONTINUE;
      },
      new std::shared_ptr<Schedule>(schedule_),
      [](gpointer data) noexcept { delete static_cast<std::shared_ptr<Schedule>*>(data); });
  g_source_attach(source_.get(), nullptr);
}

GLibMainQueue::~GLibMainQueue() {
  schedule_->close();
  g_source_destroy(source_.get());
}

void GLibMainQueue::post(Task task) {
  postAfter(nanoseconds(0), std::move(task));
}

void GLibMainQueue::postAfter(nanoseconds delay, Task task) {
  if (task) schedule_->add(roundedUp(delay), {std::move(task), {}});
}

Handle GLibMainQueue::every(nanoseconds interval, Task task) {
  const auto period = std::max<microseconds>(roundedUp(interval), std::chrono::milliseconds(1));
  auto repeating = std::make_shared<Repeating>(Repeating{period, std::move(task)});
  schedule_->add(period, {nullptr, repeating});
  return Handle([repeating = std::move(repeating)] {});  // owning it is what keeps it going
}

}  // namespace velto::gtk
