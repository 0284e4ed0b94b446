// The view that stands for a widget of the application: it lies in the window's root view, just over the
// widget, and is clipped where the widget is. Owned by the window's HostWindow, which says when to look
// again; main thread only.
#pragma once

#include "velto/platform/ui/UIView.h"

#include <gtk/gtk.h>

#include <functional>
#include <memory>

namespace velto::gtk {

class ClipPeer;

class HostView {
 public:
  // `layer` is the widget in whose coordinates the root view's subviews have their frames; `gone` is called
  // when the widget is destroyed, and must delete this.
  HostView(GtkWidget* widget, GtkWidget* layer, std::function<void()> gone);
  HostView(const HostView&) = delete;
  HostView& operator=(const HostView&) = delete;
  ~HostView();

  GtkWidget* widget() const { return widget_; }
  const std::shared_ptr<UIView>& view() const { return view_; }
  // Puts the view where the widget is now. Cheap, and changes nothing while the widget stays as it is.
  void follow();

 private:
  static void mappedOrNot(GtkWidget*, HostView* self) noexcept;
  static void destroyed(GtkWidget*, HostView* self) noexcept;

  GtkWidget* widget_;
  GtkWidget* layer_;
  std::function<void()> gone_;
  std::shared_ptr<UIView> view_;
  ClipPeer* peer_;  // the view's
};

}  // namespace velto::gtk
