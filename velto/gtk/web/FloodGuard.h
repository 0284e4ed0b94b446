// Whether a page says more than the application can hear. What the engine tells of a page comes before most of what an
// application does on its main loop, so a page that never stops would stop that. Owned by the web view's peer; main thread.
#pragma once

#include <glib.h>

#include <functional>
#include <utility>

namespace velto::gtk {

class FloodGuard {
 public:
  // `flooded` is called once a page, in a later turn of the main loop, in which it comes first.
  explicit FloodGuard(std::function<void()> flooded) : flooded_(std::move(flooded)) {}
  FloodGuard(const FloodGuard&) = delete;
  FloodGuard& operator=(const FloodGuard&) = delete;
  ~FloodGuard() { begin(); }

  // For another page, or none.
  void begin() {
    if (turn_) g_source_remove(std::exchange(turn_, 0));
    if (end_) g_source_remove(std::exchange(end_, 0));
    heard_ = 0;
    isOver_ = false;
  }

  // One message, navigation or the like.
  void hear() {
    if (isOver_) return;  // what was on its way
    const gint64 now = g_get_monotonic_time();
    if (now - began_ > G_USEC_PER_SEC) {
      began_ = now;
      heard_ = 0;
    }
    if (!turn_) {
      turn_ = g_idle_add_full(G_PRIORITY_LOW, applicationHadItsTurn, this, nullptr);
      waitsSince_ = now;
    }
    ++heard_;
    const bool stopsAll = heard_ >= notFew && now - waitsSince_ > longestWait;
    if ((stopsAll || heard_ >= tooMany) && !end_)
      end_ = g_idle_add_full(G_PRIORITY_HIGH, told, this, nullptr);
  }

 private:
  // In a second. A creative's busiest script sends a thousand commands in one message.
  static constexpr int tooMany = 10'000;
  // This many are too many when nothing else of the application has run for so long (microseconds).
  static constexpr int notFew = 1000;
  static constexpr gint64 longestWait = G_USEC_PER_SEC / 2;

  static gboolean applicationHadItsTurn(gpointer guard) noexcept {
    static_cast<FloodGuard*>(guard)->turn_ = 0;
    return G_SOURCE_REMOVE;
  }
  static gboolean told(gpointer guard) noexcept {
    auto& self = *static_cast<FloodGuard*>(guard);
    self.end_ = 0;
    self.isOver_ = true;
    self.flooded_();
    return G_SOURCE_REMOVE;
  }

  std::function<void()> flooded_;
  gint64 began_ = 0, waitsSince_ = 0;
  int heard_ = 0;
  guint turn_ = 0, end_ = 0;
  bool isOver_ = false;
};

}  // namespace velto::gtk
