// The widget that a banner's ad stands in, in a test: it asks for the ad's size as on the screen of a person, and shows in
// its place a card with the ad's size and words. One hangs on each widget, and goes with it. Main thread.
#pragma once

#include <gtk/gtk.h>

#include "velto-test-private.h"

namespace velto_test {

class TestSlot {
 public:
  static GtkWidget* make();
  static TestSlot* of(GtkWidget* widget);  // null when it is no slot
  // The view of another network's ad, which shows the widget in the slot that it comes into.
  static std::shared_ptr<velto::UIView> viewOf(GtkWidget* widget);

  TestSlot(const TestSlot&) = delete;
  TestSlot& operator=(const TestSlot&) = delete;
  ~TestSlot();

  velto::headless::HostSlot& host() { return host_; }
  velto::headless::HostWindow* window() const { return window_; }  // null: in none
  // The page of the ad; null while there is none.
  velto::headless::RecordingWebView* page() const;

  // Into the window that the widget is in.
  void join();
  void leave();
  void keepRoom(std::optional<velto::CGSize> room);
  // Puts the view where the widget is now.
  void follow();
  // Whether the toolkit has still to give it its place.
  bool awaitsLayout() const { return awaits_ && gtk_widget_get_mapped(widget_); }
  void giveUp() { awaits_ = false; }

 private:
  struct Widget;
  class AdView;

  explicit TestSlot(GtkWidget* widget);
  static GType widgetType();
  static void classInit(gpointer klass, gpointer) noexcept;
  static void measure(GtkWidget*, GtkOrientation, int forSize, int* minimum, int* natural, int*,
                      int*) noexcept;
  static void allocate(GtkWidget*, int width, int height, int) noexcept;
  static void snapshot(GtkWidget*, GtkSnapshot*) noexcept;
  static void dispose(GObject*) noexcept;
  static void rootChanged(GtkWidget*, GParamSpec*, TestSlot* self) noexcept;

  void changed();
  void showOrHide();
  void queueLayout();
  AdView* adViewIn(const velto::UIView& view) const;
  std::string words() const;

  GtkWidget* widget_;
  std::optional<velto::CGSize> kept_;
  velto::CGSize asked_;  // as far as the toolkit knows
  velto::headless::HostSlot host_;
  velto::headless::HostWindow* window_ = nullptr;
  guint joining_ = 0;  // the source that will
  bool awaits_ = true;
  std::string words_;  // on the card
};

}  // namespace velto_test
