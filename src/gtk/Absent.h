// What a device without a mobile carrier, without a location service and without an advertising identifier
// answers. Any thread.
#pragma once

#include "velto/platform/ASIdentifierManager.h"
#include "velto/platform/Network.h"

namespace velto::gtk {

class NoCarrier : public CTTelephonyNetworkInfo {
 public:
  std::optional<CTCarrier> subscriberCellularProvider() const override { return std::nullopt; }
  std::optional<std::string> currentRadioAccessTechnology() const override { return std::nullopt; }
};

class NoLocation : public CLLocationManager {
 public:
  bool locationServicesEnabled() const override { return false; }
  std::optional<CLLocation> location() const override { return std::nullopt; }
};

class NoAdvertisingIdentifier : public ASIdentifierManager {
 public:
  bool isAdvertisingTrackingEnabled() const override { return false; }
  std::optional<std::string> advertisingIdentifier() const override { return std::nullopt; }
};

// Nobody can allow tracking on such a device.
class NoTracking : public ATTrackingManager {
 public:
  int64_t trackingAuthorizationStatus() const override { return 1; }  // restricted
};

}  // namespace velto::gtk
