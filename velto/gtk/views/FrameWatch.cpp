// Questions are tick callbacks: the frame clock stands still until the compositor has taken the last frame.
#include "velto/gtk/views/FrameWatch.h"

#include <utility>

namespace velto::gtk {
namespace {
constexpr guint patience = 1000;                  // milliseconds: a busy machine's frames come late
constexpr gint64 together = G_USEC_PER_SEC / 10;  // paints no farther apart are one movement
}  // namespace

FrameWatch::FrameWatch(GtkWidget* window, std::function<void()> changed)
    : window_(window), changed_(std::move(changed)) {}

FrameWatch::~FrameWatch() {
  if (timer_) g_source_remove(timer_);
  if (question_) gtk_widget_remove_tick_callback(window_, question_);
}

void FrameWatch::painted() {
  const gint64 now = g_get_monotonic_time();
  const bool isMovement = now - std::exchange(lastPaint_, now) < together;
  const gint64 frame = gdk_frame_clock_get_frame_counter(gtk_widget_get_frame_clock(window_));
  if (frame == answer_ && !isMovement) return;  // it came only because it was asked for
  unasked_ = true;
  if (timer_ || stalled_) return;
  ask();
  // After all frames that are due.
  timer_ = g_timeout_add_full(G_PRIORITY_LOW, patience, timePassed, this, nullptr);
}

void FrameWatch::ask() {
  unasked_ = false;
  if (!question_) question_ = gtk_widget_add_tick_callback(window_, frameCame, this, nullptr);
}

gboolean FrameWatch::frameCame(GtkWidget*, GdkFrameClock* clock, gpointer watch) noexcept {
  auto& self = *static_cast<FrameWatch*>(watch);
  self.question_ = 0;
  self.answer_ = gdk_frame_clock_get_frame_counter(clock);
  if (std::exchange(self.stalled_, false)) self.changed_();
  return G_SOURCE_REMOVE;
}

gboolean FrameWatch::timePassed(gpointer watch) noexcept {
  auto& self = *static_cast<FrameWatch*>(watch);
  if (!self.question_ && self.unasked_) {
    self.ask();
    return G_SOURCE_CONTINUE;
  }
  self.timer_ = 0;
  self.stalled_ = self.question_ != 0;
  if (self.stalled_) self.changed_();
  return G_SOURCE_REMOVE;
}

}  // namespace velto::gtk
