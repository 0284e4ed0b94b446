// How the device is held, by its acceleration sensor (iio-sensor-proxy). Told on the main thread.
#pragma once

#include "velto/gtk/services/BusService.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/UIDevice.h"

#include <functional>
#include <string>

namespace velto::gtk {

class OrientationSensor : public BusService {
 public:
  using Turned = std::function<void(UIDeviceOrientation)>;
  // `turned` is called on the main thread after each turn that the sensor is sure of.
  OrientationSensor(MainQueue& mainQueue, bool isPanelUpright, Turned turned);

 private:
  void read() override;
  void forget() override;
  void appeared() override { listenForProperties(interface); }
  void heard(const std::string& path, const std::string& member, GVariant* parameters) override;
  void leaving() override;

  static constexpr char interface[] = "net.hadess.SensorProxy";
  MainQueue& mainQueue_;
  bool isPanelUpright_;
  Turned turned_;
  void tellNone();

  UIDeviceOrientation last_ = 0;
  bool claimed_ = false;
};

// The device's orientation for the sensor's word: "normal" means as
// the panel was built in, upright or lying. 0 for any other word.
UIDeviceOrientation orientationOf(const std::string& sensed, bool isPanelUpright);

}  // namespace velto::gtk
