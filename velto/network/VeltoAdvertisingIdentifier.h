// The advertising identifier, whether tracking is limited, and the library's own device fingerprint. Any
// thread.
#pragma once

#include <optional>
#include <string>

namespace velto {

class VeltoAdvertisingIdentifier {
 public:
  static bool isTrackingLimited();
  static std::optional<std::string> advertisingIdentifier();  // UUID text; nothing while tracking is limited
  // An MD5 digest over name, model, system, carrier and screen: it changes when one of them does.
  static std::string veltoIdentifier();
};

}  // namespace velto
