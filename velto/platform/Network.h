// Supplied by the platform: reachability, network interfaces, the mobile carrier and the last known location.
#pragma once

#include "velto/Export.h"
#include "velto/platform/Handle.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velto {

// Reachability flags, as a phone's system configuration service counts them.
enum SCNetworkReachabilityFlags : uint32_t {
  SCNetworkReachabilityFlagsReachable = 2,
  SCNetworkReachabilityFlagsConnectionRequired = 4,
  SCNetworkReachabilityFlagsConnectionOnTraffic = 8,
  SCNetworkReachabilityFlagsInterventionRequired = 16,
  SCNetworkReachabilityFlagsConnectionOnDemand = 32,
  SCNetworkReachabilityFlagsIsWWAN = 262144,
};

// Whether one target can be reached. Flags may be asked on any thread and never wait for the network.
class VELTO_EXPORT SCNetworkReachability {
 public:
  virtual ~SCNetworkReachability() = default;
  virtual std::optional<uint32_t> flags() const = 0;  // nothing when they cannot be read
  // Calls back after each change, on the main thread, until the handle
  // goes. Nothing (an empty handle) when changes cannot be watched.
  virtual Handle setCallback(std::function<void()> changed) = 0;
};

// An IPv4 or IPv6 socket address as text, without port; "0.0.0.0" stands for the internet as such.
struct SocketAddress {
  std::string text;
};

enum class AddressFamily { IPv4, IPv6, Other };

struct NetworkInterfaceAddress {
  std::string interfaceName;  // "en0" is the local network and "pdp_ip0" the mobile one, whatever the kernel
                              // calls them
  bool isUp = false;
  AddressFamily family = AddressFamily::Other;
  std::string text;  // empty when the entry carries no address
};

class VELTO_EXPORT NetworkInformation {
 public:
  virtual ~NetworkInformation() = default;
  virtual std::shared_ptr<SCNetworkReachability> reachabilityWithName(const std::string& host) = 0;
  virtual std::shared_ptr<SCNetworkReachability> reachabilityWithAddress(const SocketAddress& address) = 0;
  // One entry an address, in the system's order; nothing when the list cannot be read. Any thread.
  virtual std::optional<std::vector<NetworkInterfaceAddress>> interfaceAddresses() const = 0;
};

struct CTCarrier {
  std::optional<std::string> carrierName;
  std::optional<std::string> mobileCountryCode;
  std::optional<std::string> mobileNetworkCode;
};

// Any thread; the last known values, never waiting for a service.
class VELTO_EXPORT CTTelephonyNetworkInfo {
 public:
  virtual ~CTTelephonyNetworkInfo() = default;
  virtual std::optional<CTCarrier> subscriberCellularProvider() const = 0;
  // One of the "CTRadioAccessTechnology…" words. May throw std::runtime_error.
  virtual std::optional<std::string> currentRadioAccessTechnology() const = 0;
};

struct CLLocation {
  double latitude = 0;             // degrees
  double longitude = 0;            // degrees
  double horizontalAccuracy = -1;  // metres; negative when unknown
  double timestamp = 0;            // seconds since 1970
};

// Any thread. Never asks the user, never starts a search: answers only what the host application obtained.
class VELTO_EXPORT CLLocationManager {
 public:
  virtual ~CLLocationManager() = default;
  virtual bool locationServicesEnabled() const = 0;
  virtual std::optional<CLLocation> location() const = 0;
};

}  // namespace velto
