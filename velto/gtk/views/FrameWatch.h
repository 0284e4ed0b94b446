// Whether a window's frames still come to the screen. A compositor asks a window that nobody can see (on another
// workspace, wholly covered, the session locked) for no more of them; many say nothing else about it, and no toolkit
// before 4.12 could hear it. Owned by a host window while it is mapped; main thread.
//
// The first paint after a rest is followed by the question for another frame, and so is the last of many. An unanswered
// one is a standstill after a second. A window in which nothing is painted costs nothing.
#pragma once

#include <gtk/gtk.h>

#include <functional>

namespace velto::gtk {

class FrameWatch {
 public:
  // `changed` is told when isStalled() has changed.
  FrameWatch(GtkWidget* window, std::function<void()> changed);
  FrameWatch(const FrameWatch&) = delete;
  FrameWatch& operator=(const FrameWatch&) = delete;
  ~FrameWatch();

  // After each frame of the window.
  void painted();
  bool isStalled() const { return stalled_; }

 private:
  static gboolean frameCame(GtkWidget*, GdkFrameClock* clock, gpointer self) noexcept;
  static gboolean timePassed(gpointer self) noexcept;
  void ask();

  GtkWidget* window_;
  std::function<void()> changed_;
  guint question_ = 0;    // a tick callback; 0 when none is open
  guint timer_ = 0;       // once a second, from the first paint until all are answered
  gint64 answer_ = -1;    // the frame that came for the last question, maybe for nothing else
  gint64 lastPaint_ = 0;  // microseconds
  bool unasked_ = false;  // painted since the last question
  bool stalled_ = false;
};

}  // namespace velto::gtk
