// What a device without an advertising identifier answers. Any thread.
#pragma once

#include "velto/platform/ASIdentifierManager.h"

namespace velto::gtk {

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
