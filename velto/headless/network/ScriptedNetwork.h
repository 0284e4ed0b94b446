// Reachability, interfaces, carrier, location and advertising identifier of the headless platform. A test
// changes the facts as it likes; they begin as those of a phone on Wi-Fi, without a SIM, whose place nobody
// knows. Main thread.
#pragma once

#include "velto/Export.h"
#include "velto/platform/ASIdentifierManager.h"
#include "velto/platform/Network.h"

#include <list>

namespace velto::headless {

class VirtualQueue;

class VELTO_EXPORT ScriptedNetwork : public NetworkInformation {
 public:
  explicit ScriptedNetwork(std::shared_ptr<VirtualQueue> queue);

  // Of every target; nothing: they cannot be read. A change calls the callbacks, later on the main queue.
  void setFlags(std::optional<uint32_t> flags);
  // Whether callbacks can be registered.
  void setWatchable(bool watchable);

  // The list of addresses; nothing: it cannot be read. The address is one for documentation (RFC 5737).
  std::optional<std::vector<NetworkInterfaceAddress>> interfaces{
      {{"en0", true, AddressFamily::IPv4, "192.0.2.10"}}};

  std::shared_ptr<SCNetworkReachability> reachabilityWithName(const std::string& host) override;
  std::shared_ptr<SCNetworkReachability> reachabilityWithAddress(const SocketAddress& address) override;
  std::optional<std::vector<NetworkInterfaceAddress>> interfaceAddresses() const override {
    return interfaces;
  }

 private:
  struct State;
  class Reachability;
  std::shared_ptr<State> state_;
};

class VELTO_EXPORT ScriptedTelephony : public CTTelephonyNetworkInfo {
 public:
  std::optional<CTCarrier> carrier;
  std::optional<std::string> radioAccessTechnology;

  std::optional<CTCarrier> subscriberCellularProvider() const override { return carrier; }
  std::optional<std::string> currentRadioAccessTechnology() const override { return radioAccessTechnology; }
};

class VELTO_EXPORT ScriptedLocation : public CLLocationManager {
 public:
  bool servicesEnabled = true;
  std::optional<CLLocation> lastKnown;

  bool locationServicesEnabled() const override { return servicesEnabled; }
  std::optional<CLLocation> location() const override { return lastKnown; }
};

class VELTO_EXPORT ScriptedAdvertising : public ASIdentifierManager, public ATTrackingManager {
 public:
  bool trackingEnabled = false;
  int64_t authorizationStatus = 0;  // not determined
  std::optional<std::string> identifier = "6D92078A-8246-4BA4-AE5B-76104861E7DC";

  bool isAdvertisingTrackingEnabled() const override { return trackingEnabled; }
  std::optional<std::string> advertisingIdentifier() const override { return identifier; }
  int64_t trackingAuthorizationStatus() const override { return authorizationStatus; }
};

}  // namespace velto::headless
