// Runs the main loop, and knows its longest turns. A call into the library from outside counts as a turn. What a turn
// took is split by the kernel's own account of the thread: the processor's time, the time that it stood in line for
// a processor, and the rest, which it has waited for something. Milliseconds; main thread.
#pragma once

#include <glib.h>

#include <functional>
#include <string>

namespace velto::soak {

struct Turn {
  double used = 0, waited = 0;
  std::string in;  // the step that went before
};

class Turns {
 public:
  Turns();  // from here on the default main context's polls are watched
  ~Turns();
  Turns(const Turns&) = delete;
  Turns& operator=(const Turns&) = delete;

  void runFor(int milliseconds);
  // Whether the condition came to hold. Looks again now and then when nothing happens in the loop.
  bool runUntil(const std::function<bool()>& condition, int milliseconds);
  void call(const std::string& step, const std::function<void()>& what);

  const Turn& mostUsed() const { return mostUsed_; }
  const Turn& longestWait() const { return longestWait_; }
  void forget() { mostUsed_ = longestWait_ = {}; }

 private:
  struct Times {
    double wall = 0, used = 0, inLine = 0;
  };
  Times now() const;
  void begin() { began_ = now(); }
  void end();
  static int poll(GPollFD* sources, unsigned count, int timeout);

  static Turns* watched;
  int account_;  // the kernel's
  Times began_;
  std::string step_ = "start";
  Turn mostUsed_, longestWait_;
};

}  // namespace velto::soak
