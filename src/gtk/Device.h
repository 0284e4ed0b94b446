// The machine and its screen as the library sees them.
#pragma once

#include "velto/gtk/Signal.h"
#include "velto/platform/UIDevice.h"

#include <gtk/gtk.h>

#include <mutex>

namespace velto::gtk {

// Facts are read from the system at each call. A desktop counts as a tablet.
class Device : public UIDevice {
 public:
  // Windows have no device to turn. `orientation` is what counts while there is none.
  explicit Device(UIDeviceOrientation orientation) : orientation_(orientation) {}

  std::string name() const override;
  std::string model() const override;  // the kind of case: "Desktop", "Laptop", "Tablet"
  std::string systemVersion() const override;
  std::string machine() const override;
  int64_t bootTime() const override;
  UIUserInterfaceIdiom userInterfaceIdiom() const override { return UIUserInterfaceIdiom::Pad; }
  bool isSystemVersionAtLeast(int) const override {
    return true;
  }  // the interfaces offered are the current ones
  // That of the application's window, once one is shown: upright when it is higher than wide.
  UIDeviceOrientation orientation() const override;
  void setOrientation(UIDeviceOrientation orientation) override { orientation_ = orientation; }
  // What it was set to last; the window may not have got there yet.
  UIDeviceOrientation wanted() const { return orientation_; }

 private:
  UIDeviceOrientation orientation_;
};

// The first monitor. GDK answers on the main thread only, so its values are kept, and renewed when they
// change. Made and destroyed on the main thread.
class Screen : public UIScreen {
 public:
  Screen();

  CGRect bounds() const override;
  double scale() const override;

 private:
  static void onMonitorsChanged(GListModel*, guint, guint, guint, gpointer screen) noexcept;
  static void onMonitorChanged(GdkMonitor*, GParamSpec*, gpointer screen) noexcept;
  void watchFirstMonitor();
  void read();

  mutable std::mutex mutex_;
  CGRect bounds_{{0, 0}, {1280, 720}};  // without a display
  double scale_ = 1;

  GPtr<GListModel> monitors_;
  GPtr<GdkMonitor> monitor_;
  Signal monitorsChanged_, geometryChanged_, scaleChanged_;
};

}  // namespace velto::gtk
