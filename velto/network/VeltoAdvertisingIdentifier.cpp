// Identifiers of the device and its user.
#include "velto/network/VeltoAdvertisingIdentifier.h"

#include "velto/network/FoundationSDKVelto.h"
#include "velto/network/VeltoDevice.h"
#include "velto/platform/ASIdentifierManager.h"
#include "velto/platform/Platform.h"
#include "velto/platform/UIDevice.h"

namespace velto {
namespace {
constexpr int64_t authorized = 3;
}

bool VeltoAdvertisingIdentifier::isTrackingLimited() {
  auto& platform = Platform::current();
  if (platform.device().isSystemVersionAtLeast(14))
    return platform.trackingManager().trackingAuthorizationStatus() != authorized;
  // Taken as it is, so older systems report limited exactly when tracking is enabled; the server reckons with
  // that.
  return platform.identifierManager().isAdvertisingTrackingEnabled();
}

std::optional<std::string> VeltoAdvertisingIdentifier::advertisingIdentifier() {
  if (isTrackingLimited()) return std::nullopt;
  return Platform::current().identifierManager().advertisingIdentifier();
}

std::string VeltoAdvertisingIdentifier::veltoIdentifier() {
  std::string device = VeltoDevice::name() + "|" + VeltoDevice::model() + "|" + VeltoDevice::os() + "|" +
                       VeltoDevice::systemVersion();
  if (const auto country = VeltoDevice::mobileCountryCode()) device += "|" + *country;
  if (const auto network = VeltoDevice::mobileNetworkCode()) device += "|" + *network;
  const CGSize screen = VeltoDevice::screenSize();
  const std::string display = fixedDecimals(screen.width, 2) + "x" + fixedDecimals(screen.height, 2) + "|" +
                              fixedDecimals(VeltoDevice::screenScale(), 2);
  return MD5SDKVelto::md5Velto(device + "|" + display);
}

}  // namespace velto
