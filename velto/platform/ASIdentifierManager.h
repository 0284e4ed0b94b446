// Supplied by the platform: the advertising identifier and whether the user lets applications track.
#pragma once

#include "velto/Export.h"

#include <cstdint>
#include <optional>
#include <string>

namespace velto {

// Any thread.
class VELTO_EXPORT ASIdentifierManager {
 public:
  virtual ~ASIdentifierManager() = default;
  virtual bool isAdvertisingTrackingEnabled() const = 0;
  virtual std::optional<std::string> advertisingIdentifier() const = 0;  // UUID text
};

// Authorisation status: 0 not determined, 1 restricted, 2 denied, 3 authorised.
class VELTO_EXPORT ATTrackingManager {
 public:
  virtual ~ATTrackingManager() = default;
  virtual int64_t trackingAuthorizationStatus() const = 0;
};

}  // namespace velto
