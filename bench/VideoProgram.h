// What the two programs that play video ads share (Video.cpp, bare/Video.cpp).
#pragma once

#include <gtk/gtk.h>

#include <functional>
#include <string>
#include <utility>

namespace velto::bench {

inline std::string videoDocumentURL(const std::string& key) {
  return "https://ads.velto.example/vast?vvers=3&key=" + key;
}

// What changed by now is on the screen then.
inline void afterNextPaint(GtkWindow* window, std::function<void()> then) {
  struct Waiting {
    std::function<void()> then;
    gulong handler = 0;
  };
  auto* waiting = new Waiting{std::move(then)};
  auto* frames = gtk_widget_get_frame_clock(GTK_WIDGET(window));
  const auto painted = +[](GdkFrameClock* clock, Waiting* held) {
    g_signal_handler_disconnect(clock, held->handler);
    const auto next = std::move(held->then);
    delete held;
    next();
  };
  waiting->handler = g_signal_connect(frames, "after-paint", G_CALLBACK(painted), waiting);
  gtk_widget_queue_draw(GTK_WIDGET(window));
}

}  // namespace velto::bench
