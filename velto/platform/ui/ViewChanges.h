// Tells that what is on the screen may look different from now on: a view was
// moved, hidden, added, taken away, or the window around them changed. For who
// has to know what can be seen without asking all the time. Main thread only.
#pragma once

#include "velto/Export.h"
#include "velto/platform/Handle.h"

#include <functional>
#include <utility>

namespace velto {

class VELTO_EXPORT ViewChanges {
 public:
  // Called within each change, often many times in a row: the observer only takes note, and looks later.
  static Handle observe(std::function<void()> observer);
  static bool isObserved() { return observed_; }

  // While one lives, whatever changes is one change, which is told at its end.
  class VELTO_EXPORT AsOne {
   public:
    AsOne() { ++ViewChanges::held_; }
    AsOne(const AsOne&) = delete;
    AsOne& operator=(const AsOne&) = delete;
    ~AsOne() {
      if (--ViewChanges::held_ == 0 && std::exchange(ViewChanges::untold_, false)) note();
    }
  };

  // By views, and by platforms for changes around them. Costs next to nothing while nobody observes.
  static void note() {
    if (!observed_) return;
    if (held_ > 0)
      untold_ = true;
    else
      tell();
  }

 private:
  static void tell();
  static bool observed_;
  static int held_;
  static bool untold_;
};

}  // namespace velto
