// The machine and its screen as the library sees them.
#pragma once

#include "velto/gtk/Signal.h"
#include "velto/platform/UIDevice.h"

#include <gtk/gtk.h>

#include <mutex>
#include <optional>
#include <string>

namespace velto::gtk {

// Facts are read from the system at each call, and may be set by files of /etc as systemd knows them
// (machine-info(5)). `root` stands before every path, for tests.
class Device : public UIDevice {
 public:
  explicit Device(const UIScreen& screen, std::string root = "");

  std::string name() const override;
  std::string model() const override;       // the kind of case: "Desktop", "Laptop", "Tablet", "Handset"
  std::string systemName() const override;  // the distribution's, whose version it is
  std::string systemVersion() const override;
  // The product's name in the firmware's tables or the device tree, else the processor's architecture.
  std::string machine() const override;
  int64_t bootTime() const override;
  // Everything but a handset counts as a tablet; what does not tell
  // its case is a handset when its screen is as narrow as one.
  UIUserInterfaceIdiom userInterfaceIdiom() const override;
  bool isCarried() const override;
  bool isSystemVersionAtLeast(int) const override {
    return true;
  }  // the interfaces offered are the current ones
  // What was set, or sensed, last. Without a sensor it is that of the
  // application's window, once one is shown: upright when it is higher than
  // wide; before, that of a screen which is upright, and otherwise unknown.
  UIDeviceOrientation orientation() const override;
  void setOrientation(UIDeviceOrientation orientation) override { orientation_ = orientation; }
  void turned(UIDeviceOrientation sensed) {
    hasSensor_ = sensed != 0;  // 0: the sensor went
    orientation_ = hasSensor_ ? std::optional(sensed) : std::nullopt;
  }
  // What it was set to last, 0 for nothing; the window may not have got there yet.
  UIDeviceOrientation wanted() const { return orientation_.value_or(0); }

 private:
  std::string chassis() const;  // systemd's word for the kind of case; empty when unknown

  const UIScreen& screen_;
  std::string root_;
  std::optional<UIDeviceOrientation> orientation_;
  bool hasSensor_ = false;
};

// Whether the built-in display is higher than wide where nothing turns it.
bool isPanelUpright(UIUserInterfaceIdiom idiom, const std::string& root = "");

// The first monitor. GDK answers on the main thread only, so its values are kept, and renewed when they
// change. Made and destroyed on the main thread.
class Screen : public UIScreen {
 public:
  Screen();

  // The application's word counts more than the monitor's.
  void setSize(std::optional<CGSize> points);

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
  std::optional<CGSize> set_;

  GPtr<GListModel> monitors_;
  GPtr<GdkMonitor> monitor_;
  Signal monitorsChanged_, geometryChanged_, scaleChanged_;
};

}  // namespace velto::gtk
