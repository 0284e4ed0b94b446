// How the focus leaves a page by Tab: to the neighbour in the window, once for each key. Part of the web view;
// main thread.
#pragma once

#include <webkit/webkit.h>

namespace velto::gtk {

class PageFocus {
 public:
  // `around` is the view widget that the view is in, and outlives this.
  PageFocus(WebKitWebView* view, GtkWidget* around);
  PageFocus(const PageFocus&) = delete;
  PageFocus& operator=(const PageFocus&) = delete;
  ~PageFocus();

 private:
  static gboolean reachedPage(GtkEventControllerKey*, guint key, guint code, GdkModifierType,
                              PageFocus* self) noexcept;
  static gboolean leftOver(GtkEventControllerKey*, guint key, guint code, GdkModifierType,
                           PageFocus* self) noexcept;
  bool keeps();

  GtkWidget* view_;
  GtkWidget* around_;
  GtkEventController* keys_;   // the view's
  GtkEventController* after_;  // around's
  bool atPage_ = false;        // a Tab that the page has not answered
};

}  // namespace velto::gtk
