// Calls back for every frame that the display shows, for animations. Owned by the view system; main thread
// only.
#pragma once

#include "velto/platform/Handle.h"

#include <gtk/gtk.h>

#include <functional>
#include <map>
#include <memory>

namespace velto::gtk {

class DisplayLink : public std::enable_shared_from_this<DisplayLink> {
 public:
  DisplayLink() = default;
  DisplayLink(const DisplayLink&) = delete;
  DisplayLink& operator=(const DisplayLink&) = delete;
  ~DisplayLink();

  // With monotonic seconds, until the handle goes. Nothing ticks while there is no handle.
  Handle add(std::function<void(double seconds)> tick);

 private:
  static gboolean frameShown(GtkWidget*, GdkFrameClock*, gpointer self) noexcept;
  static gboolean timePassed(gpointer self) noexcept;
  void start();
  void stop();
  void follow(GtkWidget* widget);
  void tick();

  std::map<uint64_t, std::function<void(double)>> ticks_;
  uint64_t nextTick_ = 0;
  GtkWidget* widget_ = nullptr;  // whose frames are followed; cleared when it dies
  guint frameSource_ = 0;
  guint timer_ = 0;
  gint64 lastFrame_ = 0;  // microseconds
};

}  // namespace velto::gtk
