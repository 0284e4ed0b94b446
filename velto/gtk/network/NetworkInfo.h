// Reachability, and the addresses of this machine.
#pragma once

#include "velto/gtk/services/BusService.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/Network.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace velto::gtk {

// All targets share one state: what NetworkManager says of the way to the internet, and where it is not
// there, whether the kernel has a default route. Made and destroyed on the main thread.
class NetworkInfo : public NetworkInformation, public BusService {
 public:
  // Calls `wayChanged`, on the bus's thread, when the way to the internet has become another.
  NetworkInfo(MainQueue& mainQueue, std::function<void()> wayChanged);
  ~NetworkInfo() override;

  // Null without a name.
  std::shared_ptr<SCNetworkReachability> reachabilityWithName(const std::string& host) override;
  // Null for a text that is no IPv4 or IPv6 address.
  std::shared_ptr<SCNetworkReachability> reachabilityWithAddress(const SocketAddress& address) override;
  std::optional<std::vector<NetworkInterfaceAddress>> interfaceAddresses() const override;

 private:
  class Flags;
  class Reachability;

  void begun() override;
  void ended() override;
  void read() override;
  void forget() override;
  void appeared() override;
  void heard(const std::string& path, const std::string& member, GVariant* parameters) override;
  void update();
  static gboolean onRoutesChanged(int socket, GIOCondition, gpointer info) noexcept;

  std::shared_ptr<Flags> flags_;
  const std::function<void()> wayChanged_;
  // On the bus's thread only.
  std::optional<uint32_t> managed_;  // flags by NetworkManager
  int routes_ = -1;                  // the kernel tells of changes here
  std::string way_;
  GSourceOwned routesChanged_;
};

}  // namespace velto::gtk
