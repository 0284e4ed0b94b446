// Whether the engine takes a page for one that somebody sees. It asks whether its widget is mapped, and nothing else: a
// page that is scrolled out, or behind another window, would animate for nobody. Part of the web view; main thread.
//
// A page that is held back leaves a picture of itself in its place. It lives on behind it, all of its state with it: only its
// frames and timers rest. When it comes back, a frame or two may pass before it has been noticed, and some more until its
// process has drawn: for so long it is the picture that is seen.
#pragma once

#include "velto/platform/foundation/GMemory.h"

#include <webkit/webkit.h>

namespace velto::gtk {

class PageSight {
 public:
  // The page is drawn in `place`, its parent: a view widget (ViewWidget.h) whose painter is this object's from here on.
  PageSight(WebKitWebView* view, GtkWidget* place);
  PageSight(const PageSight&) = delete;
  PageSight& operator=(const PageSight&) = delete;
  ~PageSight();

  // Out of sight it stays mapped as long as the focus is in it, which would be lost.
  void set(bool inSight);
  bool isHidden() const { return !gtk_widget_get_mapped(view_); }
  // The picture is of another document, or of none.
  void dropPicture();

 private:
  static void focusLeft(GtkEventControllerFocus*, PageSight* self) noexcept;
  static void mapped(GtkWidget*, PageSight* self) noexcept;
  static gboolean hasDrawn(gpointer self) noexcept;
  void apply(bool hasFocus);
  void takePicture();
  void paint(GtkSnapshot* snapshot, float width, float height) const;

  GtkWidget* view_;
  GtkWidget* place_;
  GtkEventController* focus_;  // the view's
  bool inSight_ = true;
  GPtr<GdkTexture> picture_;
  int width_ = 0, height_ = 0;  // of the page then, in points
  guint drawing_ = 0;           // the source that ends the picture, while the page comes back
};

}  // namespace velto::gtk
