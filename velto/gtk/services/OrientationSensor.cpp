// The sensor is claimed once it is known to be there; only then does the service keep it running.
#include "velto/gtk/services/OrientationSensor.h"

#include <map>

namespace velto::gtk {
namespace {
constexpr char path[] = "/net/hadess/SensorProxy";
}

UIDeviceOrientation orientationOf(const std::string& sensed, bool isPanelUpright) {
  // A device whose left edge is up was turned to the right. A lying
  // panel counts as an upright one that was turned to the left.
  static const std::map<std::string, UIDeviceOrientation> upright{
      {"normal", 1}, {"bottom-up", 2}, {"right-up", 3}, {"left-up", 4}};
  static const std::map<std::string, UIDeviceOrientation> lying{
      {"normal", 3}, {"bottom-up", 4}, {"right-up", 2}, {"left-up", 1}};
  const auto& words = isPanelUpright ? upright : lying;
  const auto found = words.find(sensed);
  return found == words.end() ? 0 : found->second;
}

OrientationSensor::OrientationSensor(MainQueue& mainQueue, bool isPanelUpright, Turned turned)
    : BusService(interface),
      mainQueue_(mainQueue),
      isPanelUpright_(isPanelUpright),
      turned_(std::move(turned)) {}

void OrientationSensor::heard(const std::string&, const std::string&, GVariant* parameters) {
  if (mentions(parameters, {"HasAccelerometer", "AccelerometerOrientation"})) readAgain();
}

void OrientationSensor::read() {
  getAll(path, interface, [this](GVariant* properties) {
    const auto has = property(properties, "HasAccelerometer", "b");
    if (!has || !g_variant_get_boolean(has.get())) return tellNone();
    const auto now = orientationOf(textProperty(properties, "AccelerometerOrientation"), isPanelUpright_);
    if (now != 0 && now != last_) mainQueue_.post([turned = turned_, now] { turned(now); });
    if (now != 0) last_ = now;
    if (!std::exchange(claimed_, true))
      call(path, interface, "ClaimAccelerometer", nullptr, "()", [this](GVariant*) { readAgain(); });
  });
}

void OrientationSensor::forget() {
  claimed_ = false;
  tellNone();
}

// There is no sensor any more, or none that can be asked: 0.
void OrientationSensor::tellNone() {
  if (std::exchange(last_, 0) != 0) mainQueue_.post([turned = turned_] { turned(0); });
}

void OrientationSensor::leaving() {
  if (claimed_) tell(path, interface, "ReleaseAccelerometer");
}

}  // namespace velto::gtk
