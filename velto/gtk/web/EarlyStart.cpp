// Waiting for the application's first frame.
#include "velto/gtk/web/EarlyStart.h"

#include "velto/gtk/web/WebSession.h"

#include <utility>

namespace velto::gtk {
namespace {
constexpr guint earlyLife = 300;  // seconds
}

void EarlyStart::expect(std::function<Handle()> meanwhile) {
  if (isOver_ || engine_ || !signals_.empty()) return;
  meanwhile_ = std::move(meanwhile);
  watchWindows();
}

std::shared_ptr<PreparedEngine> EarlyStart::take() {
  auto taken = std::move(engine_);
  stop();
  return taken;
}

void EarlyStart::stop() {
  isOver_ = true;
  signals_.clear();
  engine_.reset();
  companion_.cancel();
}

void EarlyStart::watchWindows() {
  signals_.clear();
  GListModel* windows = gtk_window_get_toplevels();
  signals_.emplace_back(windows, "items-changed", G_CALLBACK(windowsChanged), this);
  for (guint i = 0; i < g_list_model_get_n_items(windows); ++i) {
    const auto window = GPtr<GtkWidget>::adopt(static_cast<GtkWidget*>(g_list_model_get_item(windows, i)));
    if (gtk_widget_get_realized(window))
      watchFrames(window);
    else
      signals_.emplace_back(window.get(), "realize", G_CALLBACK(windowRealized), this);
    if (engine_) return;
  }
}

void EarlyStart::windowsChanged(GListModel*, guint, guint, guint, EarlyStart* self) noexcept {
  self->watchWindows();
}

void EarlyStart::windowRealized(GtkWidget* window, EarlyStart* self) noexcept {
  self->watchFrames(window);
}

// A window that stands still since its first frame paints no other.
void EarlyStart::watchFrames(GtkWidget* window) {
  GdkFrameClock* frames = gtk_widget_get_frame_clock(window);
  if (gtk_widget_get_mapped(window) && gdk_frame_clock_get_frame_counter(frames) >= 0)
    afterFirstFrame();
  else
    signals_.emplace_back(frames, "after-paint", G_CALLBACK(framePainted), this);
}

void EarlyStart::framePainted(GdkFrameClock*, EarlyStart* self) noexcept {
  self->afterFirstFrame();
}

void EarlyStart::afterFirstFrame() {
  signals_.clear();
  const guint source = g_idle_add_full(G_PRIORITY_LOW, idle, this, nullptr);
  companion_ = Handle([source] { g_source_remove(source); });
  engine_ = std::make_shared<PreparedEngine>(session_, earlyLife);
  const auto memory = GPtr<GMemoryMonitor>::adopt(g_memory_monitor_dup_default());
  signals_.emplace_back(memory.get(), "low-memory-warning", G_CALLBACK(memoryIsShort), this);
}

gboolean EarlyStart::idle(gpointer self) noexcept {
  auto& early = *static_cast<EarlyStart*>(self);
  early.companion_ = early.meanwhile_();
  return G_SOURCE_REMOVE;
}

void EarlyStart::memoryIsShort(GMemoryMonitor*, GMemoryMonitorWarningLevel, EarlyStart* self) noexcept {
  const auto gone = std::move(self->engine_);
  self->companion_.cancel();
  self->isOver_ = true;
}

}  // namespace velto::gtk
