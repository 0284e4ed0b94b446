// Looks at an ad view again when something on the screen has changed: in the
// next turn of the main queue, but at most every 200 ms. While nothing changes
// it does nothing at all. Owned by a measurement session; main thread.
#pragma once

#include "velto/measurement/Viewability.h"
#include "velto/platform/Handle.h"

#include <functional>
#include <memory>

namespace velto {

class ViewabilityWatcher : public std::enable_shared_from_this<ViewabilityWatcher> {
 public:
  static constexpr double interval = 0.2;  // seconds

  // `look` is asked for what is seen now; `changed` is told when that differs from the last time.
  static std::shared_ptr<ViewabilityWatcher> watch(std::function<AdSight()> look,
                                                   std::function<void(const Viewability&)> changed);

  const Viewability& latest() const { return latest_; }
  // At once, whenever the last look was: for changes of the session itself.
  void lookNow();
  // For the next interval each change is looked at in the turn that follows it: the library makes them.
  void hurry();

 private:
  ViewabilityWatcher(std::function<AdSight()> look, std::function<void(const Viewability&)> changed);
  void noteChange();

  std::function<AdSight()> look_;
  std::function<void(const Viewability&)> changed_;
  Viewability latest_;
  double lastLook_ = 0;  // monotonic seconds, as the next
  double hurriesUntil_ = 0;
  bool scheduled_ = false;
  bool dueSoon_ = false;  // in the next turn
  Handle changes_;
};

}  // namespace velto
