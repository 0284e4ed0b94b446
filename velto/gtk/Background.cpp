// A queue and the thread that empties it.
#include "velto/gtk/Background.h"

#include "velto/gtk/Threads.h"

namespace velto::gtk {

void Background::perform(Work work) {
  if (!work) return;
  std::lock_guard lock(mutex_);
  if (stopping_) return;
  waiting_.push_back(std::move(work));
  if (!thread_.joinable()) thread_ = std::thread(&Background::run, this);
  changed_.notify_one();
}

void Background::run() {
  beginThread("velto-work");
  while (const Work work = next()) work();
}

Background::Work Background::next() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return stopping_ || !waiting_.empty(); });
  if (stopping_) return nullptr;
  Work work = std::move(waiting_.front());
  waiting_.pop_front();
  return work;
}

void Background::stop() {
  std::deque<Work> dropped;  // goes after the lock
  std::thread ending;
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
    dropped.swap(waiting_);
    ending.swap(thread_);
    changed_.notify_one();
  }
  if (ending.joinable()) ending.join();
}

}  // namespace velto::gtk
