// A thread for work that would hold up the main queue, such as unpacking what was downloaded.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace velto::gtk {

// Any thread, unless stated. One piece of work at a time, in the order of the calls.
class Background {
 public:
  using Work = std::function<void()>;

  ~Background() { stop(); }

  // The thread starts with the first work.
  void perform(Work work);

  // Waits for what is being done and destroys the rest undone, also what comes later. Never inside work.
  void stop();

 private:
  void run();
  Work next();  // waits for it; empty at the end

  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Work> waiting_;
  bool stopping_ = false;
  std::thread thread_;
};

}  // namespace velto::gtk
