// Reachability by GLib's network monitor, and the addresses of this machine.
#pragma once

#include "velto/platform/MainQueue.h"
#include "velto/platform/Network.h"

#include <memory>
#include <mutex>

namespace velto::gtk {

// All targets share one state: what the system says of the way to the internet. The system's monitor may have
// to ask other processes when it starts, so it is started by the first reachability object, in a turn of the
// main queue of its own; until then the flags tell what the interfaces show. Made and destroyed on the main
// thread.
class NetworkInfo : public NetworkInformation {
 public:
  explicit NetworkInfo(MainQueue& mainQueue);
  ~NetworkInfo() override;

  // Null without a name.
  std::shared_ptr<SCNetworkReachability> reachabilityWithName(const std::string& host) override;
  // Null for a text that is no IPv4 or IPv6 address.
  std::shared_ptr<SCNetworkReachability> reachabilityWithAddress(const SocketAddress& address) override;
  std::optional<std::vector<NetworkInterfaceAddress>> interfaceAddresses() const override;

 private:
  class Monitor;
  class Reachability;
  std::shared_ptr<SCNetworkReachability> reachability();

  MainQueue& mainQueue_;
  std::once_flag started_;
  std::shared_ptr<Monitor> monitor_;
};

}  // namespace velto::gtk
