// The display link: the frame clock of a window that shows ads; a timer while there is none or it stands
// still, as it does for a window that is covered or on another desktop. So an animation ends either way. A
// busy machine's frames come late, but they come: the timer waits long enough not to run ahead of them.
#include "velto/gtk/views/DisplayLink.h"

#include "velto/gtk/views/HostWindow.h"

#include <vector>

namespace velto::gtk {
namespace {
constexpr guint timerInterval = 16;                    // milliseconds: 60 Hz, as near as a timer comes
constexpr gint64 frameClockPatience = G_USEC_PER_SEC;  // without a frame, before the timer steps in
}  // namespace

DisplayLink::~DisplayLink() {
  stop();
}

Handle DisplayLink::add(std::function<void(double)> tick) {
  const uint64_t id = nextTick_++;
  ticks_.emplace(id, std::move(tick));
  if (ticks_.size() == 1) start();
  return Handle([weak = weak_from_this(), id] {
    auto link = weak.lock();
    if (link && link->ticks_.erase(id) > 0 && link->ticks_.empty()) link->stop();
  });
}

void DisplayLink::start() {
  timer_ = g_timeout_add(timerInterval, timePassed, this);
  follow(HostWindow::mappedWidget());
  lastFrame_ = widget_ ? g_get_monotonic_time() : 0;
}

void DisplayLink::stop() {
  if (timer_) g_source_remove(std::exchange(timer_, 0));
  follow(nullptr);
}

void DisplayLink::follow(GtkWidget* widget) {
  if (widget == widget_) return;
  if (widget_) {
    gtk_widget_remove_tick_callback(widget_, frameSource_);
    g_object_remove_weak_pointer(G_OBJECT(widget_), reinterpret_cast<gpointer*>(&widget_));
  }
  widget_ = widget;
  if (!widget_) return;
  g_object_add_weak_pointer(G_OBJECT(widget_), reinterpret_cast<gpointer*>(&widget_));
  frameSource_ = gtk_widget_add_tick_callback(widget_, frameShown, this, nullptr);
}

gboolean DisplayLink::frameShown(GtkWidget*, GdkFrameClock*, gpointer self) noexcept {
  auto& link = *static_cast<DisplayLink*>(self);
  link.lastFrame_ = g_get_monotonic_time();
  link.tick();
  return G_SOURCE_CONTINUE;  // stop() has removed it already when that was the last
}

gboolean DisplayLink::timePassed(gpointer self) noexcept {
  auto& link = *static_cast<DisplayLink*>(self);
  if (link.widget_ && g_get_monotonic_time() - link.lastFrame_ < frameClockPatience) return G_SOURCE_CONTINUE;
  link.follow(HostWindow::mappedWidget());
  link.tick();
  return G_SOURCE_CONTINUE;
}

void DisplayLink::tick() {
  const auto self = shared_from_this();  // a callback may end the platform
  const double seconds = static_cast<double>(g_get_monotonic_time()) / G_USEC_PER_SEC;
  std::vector<uint64_t> due;
  for (const auto& [id, callback] : ticks_) due.push_back(id);
  for (const uint64_t id : due) {
    const auto found = ticks_.find(id);
    if (found == ticks_.end()) continue;
    const auto callback = found->second;  // it may cancel itself
    callback(seconds);
  }
}

}  // namespace velto::gtk
