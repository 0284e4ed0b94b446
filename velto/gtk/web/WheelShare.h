// Who gets the wheel over a web view: the page where it listens for it or has something to scroll under the
// pointer, else what the view stands in, such as the application's list. Part of the web view; main thread.
#pragma once

#include "velto/platform/foundation/GMemory.h"

#include <webkit/webkit.h>

namespace velto::gtk {

class WheelShare {
 public:
  // `around` is the widget that the view is in, and outlives this.
  WheelShare(WebKitWebView* view, GtkWidget* around);
  WheelShare(const WheelShare&) = delete;
  WheelShare& operator=(const WheelShare&) = delete;
  ~WheelShare();

  // The page as a whole scrolls, so that it wants every turn.
  void setPageScrolls(bool scrolls);
  void documentChanged();

 private:
  static void told(WebKitUserContentManager*, JSCValue* uses, WheelShare* self) noexcept;
  static gboolean turned(GtkEventControllerScroll*, double dx, double dy, WheelShare* self) noexcept;
  bool pageGetsIt() const { return pageScrolls_ || pageUses_; }
  void apply();

  WebKitWebView* view_;
  GtkWidget* around_;
  GtkEventController* end_;         // of the way of a turn that is the page's; around's
  GPtr<GtkEventController> wheel_;  // the engine's; null when it has none
  GtkPropagationPhase phase_ = GTK_PHASE_BUBBLE;
  bool pageScrolls_ = true;
  bool pageUses_ = false;
};

}  // namespace velto::gtk
