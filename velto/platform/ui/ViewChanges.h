// Tells that what is on the screen may look different from now on: a view was
// moved, hidden, added, taken away, or the window around them changed. For who
// has to know what can be seen without asking all the time. Main thread only.
#pragma once

#include "velto/Export.h"
#include "velto/platform/Handle.h"

#include <functional>

namespace velto {

class VELTO_EXPORT ViewChanges {
 public:
  // Called within each change, often many times in a row: the observer only takes note, and looks later.
  static Handle observe(std::function<void()> observer);
  static bool isObserved() { return observed_; }

  // By views, and by platforms for changes around them. Costs next to nothing while nobody observes.
  static void note() {
    if (observed_) tell();
  }

 private:
  static void tell();
  static bool observed_;
};

}  // namespace velto
