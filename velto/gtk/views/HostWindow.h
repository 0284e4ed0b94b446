// A window of the application as the library sees it: a view controller whose root view lies over the
// window's content. One hangs on each window that was asked for (VeltoGtk.h) and goes when the window is
// destroyed. Main thread only.
#pragma once

#include "velto/gtk/Signal.h"
#include "velto/gtk/views/FrameWatch.h"
#include "velto/gtk/views/HostView.h"
#include "velto/gtk/views/PaintedOver.h"
#include "velto/platform/UIDevice.h"
#include "velto/platform/foundation/GMemory.h"
#include "velto/platform/ui/UIViewController.h"

#include <gtk/gtk.h>

#include <memory>
#include <optional>
#include <vector>

namespace velto::gtk {

class AdSlot;

class HostWindow {
 public:
  // The one of that window; null when there is none yet.
  static HostWindow* of(GtkWindow* window);
  // Throws std::invalid_argument when the window cannot be wrapped, and leaves it as it was.
  static HostWindow& make(GtkWindow* window);
  // A widget of some host window that is on the screen, or null: its frame clock drives animations.
  static GtkWidget* mappedWidget();
  // All windows on the screen take the upright or the other form, where they can.
  static void turnAll(UIDeviceOrientation orientation, bool onItsSide);
  // Whether a window on the screen is upright, or is about to be; nothing when there is none.
  static std::optional<bool> isUpright();

  HostWindow(const HostWindow&) = delete;
  HostWindow& operator=(const HostWindow&) = delete;
  ~HostWindow();

  const std::shared_ptr<UIViewController>& controller() const { return controller_; }
  // The one of that widget, which is in this window; made on first use.
  std::shared_ptr<UIView> viewOf(GtkWidget* widget);
  // How its root view is seen now; or a slot, whose view has its frame there.
  WindowSight sight(GtkWidget* widget, CGPoint origin) const;
  // In its coordinates the root view's subviews have their frames.
  GtkWidget* layer() const { return root_; }
  // Slots in this window, which it tells where to be.
  void add(AdSlot& slot) { slots_.push_back(&slot); }
  void remove(AdSlot& slot) { std::erase(slots_, &slot); }

 private:
  explicit HostWindow(GtkWindow* window);
  static void contentChanged(GtkWindow*, GParamSpec*, HostWindow* self) noexcept;
  static void realized(GtkWidget*, HostWindow* self) noexcept;
  static void unrealized(GtkWidget*, HostWindow* self) noexcept;
  static void mapped(GtkWidget*, HostWindow* self) noexcept;
  static void unmapped(GtkWidget*, HostWindow* self) noexcept;
  static void destroyed(GtkWidget* window, HostWindow* self) noexcept;
  static void laidOut(GdkFrameClock*, HostWindow* self) noexcept;
  static void stateChanged(GdkSurface*, GParamSpec*, HostWindow* self) noexcept;
  static void sightChanged();
  static void focusChanged(GtkWindow*, GParamSpec*, HostWindow* self) noexcept;
  static void painted(GdkFrameClock*, HostWindow* self) noexcept;
  static void tellVisibility();
  static bool hasFocus();
  bool fillsScreen() const;
  bool isVisible() const;
  void insertOverlay();
  void followWidgets();
  void turn(bool onItsSide);
  CGSize defaultSize() const;
  bool isTurning() const;
  void takeTurnedSize();
  void followTurn(CGSize now);
  void forget(GtkWidget* widget);

  GtkWindow* window_;
  GPtr<GtkWidget> overlay_;
  GtkWidget* root_ = nullptr;  // of the root view, in the overlay
  GPtr<GdkFrameClock> clock_;
  PaintedNodes nodes_;  // of the last frame, while there is anything of the library's in it
  Signal stateChanged_;
  Signal moved_;
  std::optional<FrameWatch> frames_;  // while mapped, where the display says nothing better
  bool inserting_ = false;
  // Of the content, by way of the window's default size.
  struct Turn {
    CGSize to, window;
    gint64 began;  // microseconds
  };
  std::optional<Turn> turned_;
  std::shared_ptr<UIViewController> controller_;
  std::vector<std::unique_ptr<HostView>> hostViews_;
  std::vector<AdSlot*> slots_;
};

}  // namespace velto::gtk
