// For how long a place of the window has been a page's. What comes under a finger that is on its way (an ad that expands,
// that is shown, that an application moves) was not what the person meant. Part of the web view; main thread.
//
// It looks at each frame that is painted anyway, and asks for none.
#pragma once

#include "velto/platform/Geometry.h"

#include <gtk/gtk.h>

#include <chrono>
#include <vector>

namespace velto::gtk {

class PlaceWatch {
 public:
  explicit PlaceWatch(GtkWidget* view);
  PlaceWatch(const PlaceWatch&) = delete;
  PlaceWatch& operator=(const PlaceWatch&) = delete;
  ~PlaceWatch();

  // Whether the event is where the view has been all that time.
  bool held(GdkEvent* event, std::chrono::milliseconds time) const;
  // The same of a point of the view's window.
  bool held(CGPoint point, std::chrono::milliseconds time) const;

 private:
  struct Place {
    CGRect bounds;
    gint64 until;  // monotonic, microseconds
  };
  static void mapped(GtkWidget*, PlaceWatch* self) noexcept;
  static void unmapped(GtkWidget*, PlaceWatch* self) noexcept;
  static void painted(GdkFrameClock*, PlaceWatch* self) noexcept;
  CGRect bounds() const;
  void moveTo(const CGRect& bounds);

  GtkWidget* view_;
  GdkFrameClock* clock_ = nullptr;  // while mapped
  std::vector<Place> before_;       // the latest last
  CGRect now_;                      // as it was painted last
};

}  // namespace velto::gtk
