// How the focus leaves a page by Tab: to the neighbour in the window, once for each key. Part of the web view;
// main thread.
#pragma once

#include "velto/gtk/web/WindowEars.h"

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

  GtkWidget* view_;
  GtkEventController* keys_;  // the view's
  WindowEars guard_;
  guint32 time_ = GDK_CURRENT_TIME;  // of the Tab that the page got last
};

}  // namespace velto::gtk
