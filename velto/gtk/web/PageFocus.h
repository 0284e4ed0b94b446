// How the focus leaves a page by Tab: to the neighbour in the window, once for each key. Part of the web view;
// main thread.
#pragma once

#include "velto/platform/foundation/GMemory.h"

#include <webkit/webkit.h>

namespace velto::gtk {

class PageFocus {
 public:
  explicit PageFocus(WebKitWebView* view);
  PageFocus(const PageFocus&) = delete;
  PageFocus& operator=(const PageFocus&) = delete;
  ~PageFocus();

 private:
  static gboolean reachedPage(GtkEventControllerKey*, guint key, guint code, GdkModifierType,
                              PageFocus* self) noexcept;
  static gboolean reachedWindow(GtkEventControllerKey*, guint key, guint code, GdkModifierType,
                                PageFocus* self) noexcept;
  void watch(GtkRoot* window);

  GtkWidget* view_;
  GtkEventController* keys_;         // the view's
  GPtr<GtkEventController> guard_;   // its window's
  GtkWidget* window_ = nullptr;      // null as soon as it is gone
  guint32 time_ = GDK_CURRENT_TIME;  // of the Tab that the page got last
};

}  // namespace velto::gtk
