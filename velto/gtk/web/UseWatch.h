// What a web process uses, for all the pages in it: what one of them asks, the others ask at the same moment, and reading it
// for each would cost an application with many of them its frames. Owned by the process; main thread.
#pragma once

#include "velto/platform/Handle.h"
#include "velto/platform/WebPageUse.h"

#include <sys/types.h>

#include <functional>
#include <memory>
#include <vector>

namespace velto::gtk {

class UseWatch {
 public:
  // As of now, or of some milliseconds ago.
  WebPageUse use(pid_t process);
  // Calls back when the process has used that much more; somewhat earlier when another waits already.
  Handle after(pid_t process, double processorSeconds, std::function<void()> then);

 private:
  using Call = std::shared_ptr<std::function<void()>>;
  void ring();

  WebPageUse use_;
  double readAt_ = -1;  // monotonic seconds
  std::vector<std::weak_ptr<std::function<void()>>> calls_;
  Handle alarm_;
};

}  // namespace velto::gtk
