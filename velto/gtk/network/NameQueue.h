// How many names the gate asks for at a time: GLib has a few threads for the name lookups of the whole application, and pages
// that name many slow ones would take them all. The gate's thread.
#pragma once

#include <deque>
#include <functional>

namespace velto::gtk {

class NameQueue {
 public:
  using Lookup = std::function<void()>;

  // Starts it, or does so later. Each that was started ends by ended().
  void add(Lookup lookup) {
    waiting_.push_back(std::move(lookup));
    startNext();
  }
  void ended() {
    --running_;
    startNext();
  }

 private:
  static constexpr int mostAtATime = 6;

  void startNext() {
    if (running_ == mostAtATime || waiting_.empty()) return;
    ++running_;
    const Lookup next = std::move(waiting_.front());
    waiting_.pop_front();
    next();
  }

  int running_ = 0;
  std::deque<Lookup> waiting_;
};

}  // namespace velto::gtk
