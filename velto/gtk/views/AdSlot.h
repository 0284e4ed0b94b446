// A widget of the application that is a view of the library: what is put into the view is the widget's child.
// It has a controller of its own, which is a child of its window's while it is in one. An ad that needs more
// room than the widget has leaves it for the window's layer, and comes back; its widgets are moved, not made
// anew. One hangs on each widget of adSlot() (Slot.h) and goes with it. Main thread only.
#pragma once

#include "velto/gtk/Slot.h"
#include "velto/gtk/views/Peer.h"
#include "velto/platform/ui/AdRoom.h"
#include "velto/platform/ui/UIViewController.h"

#include <memory>
#include <optional>

namespace velto::gtk {

class AdSlot;
class HostWindow;

// Of the slot's view. Its widget lies in the slot, or, while the ad is outside, where the superview's peer
// puts it.
class SlotPeer final : public Peer {
 public:
  explicit SlotPeer(AdSlot* slot) : slot_(slot) {}
  void setFrame(const CGRect& frame) override;
  void removeFromSuperview() override;
  bool knowsSight() const override { return slot_ && !outside_; }
  WindowSight windowSight() const override;

  bool isOutside() const { return outside_; }

 private:
  friend class AdSlot;
  AdSlot* slot_;  // null once it is gone
  bool outside_ = false;
};

class AdSlot {
 public:
  static GtkWidget* make(const SlotOptions& options);
  static AdSlot* of(GtkWidget* widget);  // null when it is no slot

  AdSlot(const AdSlot&) = delete;
  AdSlot& operator=(const AdSlot&) = delete;
  ~AdSlot();

  const std::shared_ptr<UIViewController>& controller() const { return controller_; }
  // Joins the window that the widget is in, if that can be done at once; else a moment later. Throws as
  // HostWindow::make() does.
  void joinNow();
  void keepRoom(std::optional<CGSize> room);

  // By the host window: puts the view where the widget is now; says that the window goes.
  void follow();
  void windowGone();

 private:
  class View;
  friend class SlotPeer;
  struct Widget;

  AdSlot(GtkWidget* widget, const SlotOptions& options);
  static GType widgetType();
  static void classInit(gpointer klass, gpointer) noexcept;
  static void measure(GtkWidget*, GtkOrientation, int forSize, int* minimum, int* natural, int*,
                      int*) noexcept;
  static GtkSizeRequestMode requestMode(GtkWidget*) noexcept;
  static void allocate(GtkWidget*, int width, int height, int) noexcept;
  static void dispose(GObject*) noexcept;
  static void rootChanged(GtkWidget*, GParamSpec*, AdSlot* self) noexcept;
  static gboolean joinLater(gpointer self) noexcept;

  void join(bool wraps);
  void leave();
  void contentChanged();
  bool isEmpty() const { return room_.isEmpty() && !options_.room; }
  static void visibleChanged(GtkWidget*, GParamSpec*, AdSlot* self) noexcept;
  void moveContent(bool outside);

  GtkWidget* widget_;
  SlotOptions options_;
  std::shared_ptr<View> view_;
  std::shared_ptr<UIViewController> controller_;
  SlotPeer* peer_;  // the view's
  HostWindow* host_ = nullptr;
  guint joining_ = 0;   // the source that will
  AdRoom room_;         // what the ad wants
  bool hides_ = false;  // itself, since it is empty
};

}  // namespace velto::gtk
