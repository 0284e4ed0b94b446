// A view of the library on the screen: one view widget (ViewWidget.h). Base of the button's and the web
// view's peers. Made by the view system, owned by its UIView; main thread only.
#pragma once

#include "velto/gtk/views/ModalFocus.h"
#include "velto/gtk/views/ViewWidget.h"
#include "velto/platform/ViewPeer.h"
#include "velto/platform/foundation/GMemory.h"

#include <memory>
#include <optional>

namespace velto::gtk {

class Peer : public virtual ViewPeer {
 public:
  explicit Peer(GtkAccessibleRole role = GTK_ACCESSIBLE_ROLE_GROUP);
  Peer(const Peer&) = delete;
  Peer& operator=(const Peer&) = delete;
  ~Peer() override;

  void setFrame(const CGRect& frame) override;
  void setAlpha(double alpha) override;
  void setHidden(bool hidden) override;
  void setBackgroundColor(const UIColor& color) override;
  void setTouchable(bool touchable) override;
  void setModal(bool modal) override;
  void insertSubview(ViewPeer& child, ViewPeer* front) override;
  void removeFromSuperview() override;

  GtkWidget* widget() const { return widget_; }

 protected:
  // The widget that subviews go into: this view's own, unless a peer has another inside it.
  virtual GtkWidget* container() const { return widget_; }

 private:
  static void touchBegan(GtkGestureClick*, int presses, double x, double y, Peer* self) noexcept;
  static void touchEnded(GtkGestureClick*, int presses, double x, double y, Peer* self) noexcept;

  GPtr<GtkWidget> widget_;
  GtkGesture* tap_ = nullptr;  // the widget's
  std::unique_ptr<ModalFocus> modal_;
  std::optional<CGPoint> pressed_;  // where the touch began, while it lasts
};

}  // namespace velto::gtk
