// One reading and one timer for many.
#include "velto/gtk/web/UseWatch.h"

#include "velto/gtk/web/ProcessUse.h"

#include <glib.h>

#include <algorithm>
#include <utility>

namespace velto::gtk {
namespace {

constexpr double fresh = 0.01;  // seconds

}  // namespace

WebPageUse UseWatch::use(pid_t process) {
  const double now = static_cast<double>(g_get_monotonic_time()) / G_USEC_PER_SEC;
  if (readAt_ < 0 || now - readAt_ > fresh) {
    use_ = useOf(process);
    readAt_ = now;
  }
  return use_;
}

Handle UseWatch::after(pid_t process, double processorSeconds, std::function<void()> then) {
  std::erase_if(calls_, [](const auto& call) { return call.expired(); });
  if (calls_.empty()) alarm_ = afterProcessorTime(process, processorSeconds, [this] { ring(); });
  const auto call = std::make_shared<std::function<void()>>(std::move(then));
  calls_.push_back(call);
  return Handle([call] {});  // owning it is what keeps it
}

// A call may end the process, and this with it.
void UseWatch::ring() {
  for (const auto& call : std::exchange(calls_, {}))
    if (const Call alive = call.lock()) (*alive)();
}

}  // namespace velto::gtk
