// Device and environment, read from the platform.
#include "velto/network/VeltoDevice.h"

#include "velto/platform/Platform.h"
#include "velto/platform/UIDevice.h"

#include <array>
#include <exception>

namespace velto {
namespace {

Platform& platform() {
  return Platform::current();
}

std::optional<CLLocation> lastLocation() {
  auto& manager = platform().location();
  return manager.locationServicesEnabled() ? manager.location() : std::nullopt;
}

template <class Read>
auto fromLocation(Read read) -> std::optional<double> {
  const auto location = lastLocation();
  return location ? std::optional<double>(read(*location)) : std::nullopt;
}

// The generation of a radio technology; nothing for newer ones and unknown words.
std::optional<std::string> generation(const std::string& technology) {
  static const std::map<std::string, std::string> generations{
      {"CTRadioAccessTechnologyGPRS", "2G"},         {"CTRadioAccessTechnologyEdge", "2G"},
      {"CTRadioAccessTechnologyCDMA1x", "2G"},       {"CTRadioAccessTechnologyWCDMA", "3G"},
      {"CTRadioAccessTechnologyHSDPA", "3G"},        {"CTRadioAccessTechnologyHSUPA", "3G"},
      {"CTRadioAccessTechnologyCDMAEVDORev0", "3G"}, {"CTRadioAccessTechnologyCDMAEVDORevA", "3G"},
      {"CTRadioAccessTechnologyCDMAEVDORevB", "3G"}, {"CTRadioAccessTechnologyeHRPD", "3G"},
      {"CTRadioAccessTechnologyLTE", "4G"},
  };
  const auto found = generations.find(technology);
  return found == generations.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace

std::string VeltoDevice::name() {
  return platform().device().name();
}

std::string VeltoDevice::model() {
  try {
    return platform().device().machine();
  } catch (const std::exception&) {
    return {};
  }
}

std::string VeltoDevice::modelProductName() {
  return platform().device().model();
}
// What the server side knows this library's devices as, whatever they are.
std::string VeltoDevice::manufacturerName() {
  return "Apple";
}
std::string VeltoDevice::os() {
  return "ios";
}
std::string VeltoDevice::systemVersion() {
  return platform().device().systemVersion();
}
CGSize VeltoDevice::screenSize() {
  return platform().mainScreen().bounds().size;
}
double VeltoDevice::screenScale() {
  return platform().mainScreen().scale();
}
std::string VeltoDevice::locale() {
  return platform().currentLocale().localeIdentifier();
}

std::optional<std::string> VeltoDevice::language() {
  const auto languages = platform().currentLocale().preferredLanguages();
  return languages.empty() ? std::nullopt : std::optional(languages.front());
}

std::optional<std::string> VeltoDevice::ip() {
  static constexpr std::array keys{"en0/ipv4", "en0/ipv6", "pdp_ip0/ipv4", "pdp_ip0/ipv6"};
  const auto addresses = _getIPAddresses();
  for (const auto* key : keys)
    if (const auto found = addresses.find(key); found != addresses.end()) return found->second;
  return std::nullopt;
}

std::map<std::string, std::string> VeltoDevice::_getIPAddresses() {
  std::map<std::string, std::string> addresses;
  const auto interfaces = platform().network().interfaceAddresses();
  if (!interfaces) return addresses;
  for (const auto& entry : *interfaces) {
    if (!entry.isUp || entry.text.empty() || entry.family == AddressFamily::Other) continue;
    addresses[entry.interfaceName + (entry.family == AddressFamily::IPv4 ? "/ipv4" : "/ipv6")] = entry.text;
  }
  return addresses;
}

std::string VeltoDevice::connection() {
  try {
    return _networkStatus() == VeltoNetworkReachableViaWiFi ? "WIFI" : "CARRIER";
  } catch (const std::exception&) {
    return "CARRIER";
  }
}

std::optional<std::string> VeltoDevice::connectionType() {
  try {
    return _connectionTypeFor(_networkStatus());
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

std::optional<std::string> VeltoDevice::_connectionTypeFor(VeltoNetworkStatus status) {
  if (status == VeltoNetworkReachableViaWiFi) return "WIFI";
  if (status != VeltoNetworkReachableViaWWAN) return std::nullopt;
  const auto technology = platform().telephony().currentRadioAccessTechnology();
  return technology ? generation(*technology) : std::nullopt;
}

// The status is read and not passed on: the server has always been told "CARRIER", and the two operations
// above keep their branches for the day it is.
VeltoNetworkStatus VeltoDevice::_networkStatus() {
  if (const auto reachability = VeltoReachability::reachabilityForInternetConnection()) {
    reachability->startNotifier();
    reachability->currentReachabilityStatus();
  }
  return VeltoNetworkNotReachable;
}

std::optional<std::string> VeltoDevice::simOperatorCode() {
  const auto country = mobileCountryCode();
  const auto network = mobileNetworkCode();
  return country && network ? std::optional(*country + "-" + *network) : std::nullopt;
}

std::optional<std::string> VeltoDevice::simOperatorName() {
  const auto carrier = _currentCurrier();
  return carrier ? carrier->carrierName : std::nullopt;
}

std::optional<std::string> VeltoDevice::mobileCountryCode() {
  const auto carrier = _currentCurrier();
  return carrier ? carrier->mobileCountryCode : std::nullopt;
}

std::optional<std::string> VeltoDevice::mobileNetworkCode() {
  const auto carrier = _currentCurrier();
  return carrier ? carrier->mobileNetworkCode : std::nullopt;
}

std::optional<CTCarrier> VeltoDevice::_currentCurrier() {
  return platform().telephony().subscriberCellularProvider();
}

bool VeltoDevice::isLocationServiceEnabled() {
  return lastLocation().has_value();
}

std::optional<double> VeltoDevice::locationLatitude() {
  return fromLocation([](const CLLocation& location) { return location.latitude; });
}
std::optional<double> VeltoDevice::locationLongitude() {
  return fromLocation([](const CLLocation& location) { return location.longitude; });
}
std::optional<double> VeltoDevice::locationAccuracy() {
  return fromLocation([](const CLLocation& location) { return location.horizontalAccuracy; });
}
std::optional<double> VeltoDevice::locationTimestampInSeconds() {
  return fromLocation([](const CLLocation& location) { return location.timestamp; });
}
std::optional<double> VeltoDevice::locationTimestampInMilliseconds() {
  return fromLocation([](const CLLocation& location) { return location.timestamp * 1000; });
}

}  // namespace velto
