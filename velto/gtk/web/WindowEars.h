// An event controller on the window that a widget is in, which hears of everything before anything in it does.
// Part of the web view; main thread.
#pragma once

#include "velto/platform/foundation/GMemory.h"

#include <gtk/gtk.h>

#include <functional>

namespace velto::gtk {

class WindowEars {
 public:
  // `make` makes the controller, with handlers that have `owner` as their data.
  WindowEars(gpointer owner, std::function<GtkEventController*()> make);
  WindowEars(const WindowEars&) = delete;
  WindowEars& operator=(const WindowEars&) = delete;
  ~WindowEars() { moveTo(nullptr); }

  void moveTo(GtkRoot* window);
  GtkWidget* window() const { return window_; }

 private:
  const gpointer owner_;
  const std::function<GtkEventController*()> make_;
  GPtr<GtkEventController> controller_;
  GtkWidget* window_ = nullptr;  // null as soon as it is gone
};

}  // namespace velto::gtk
