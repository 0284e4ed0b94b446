// One state of the network, shared by all reachability objects: NetworkManager's, or the kernel's.
#include "velto/gtk/network/NetworkInfo.h"

#include "velto/gtk/network/Interfaces.h"

#include <glib-unix.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <list>
#include <mutex>

namespace velto::gtk {
namespace {

constexpr char networkManagerPath[] = "/org/freedesktop/NetworkManager";
constexpr char networkManagerInterface[] = "org.freedesktop.NetworkManager";

uint32_t kernelFlags() {
  if (!hasDefaultRoute()) return 0;
  const uint32_t flags = SCNetworkReachabilityFlagsReachable;
  return isDefaultRouteMobile() ? flags | SCNetworkReachabilityFlagsIsWWAN : flags;
}

// Nothing when NetworkManager does not know either.
std::optional<uint32_t> managedFlags(GVariant* properties) {
  constexpr uint32_t unknown = 0, connectedSite = 60;  // NMState
  constexpr uint32_t behindPortal = 2;                 // NMConnectivityState
  const uint32_t state = numberProperty(properties, "State");
  if (state == unknown) return std::nullopt;
  if (state < connectedSite) return 0;
  uint32_t flags = SCNetworkReachabilityFlagsReachable;
  if (numberProperty(properties, "Connectivity") == behindPortal)  // somebody has to log in first
    flags |= SCNetworkReachabilityFlagsConnectionRequired | SCNetworkReachabilityFlagsInterventionRequired;
  const auto type = textProperty(properties, "PrimaryConnectionType");
  const bool isMobile = type == "gsm" || type == "cdma" || (type.empty() && isDefaultRouteMobile());
  return isMobile ? flags | SCNetworkReachabilityFlagsIsWWAN : flags;
}

// A socket that becomes readable when links, addresses or routes change (rtnetlink(7)); -1 without one.
int openRouteSocket() {
  const int file = socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE);
  sockaddr_nl address{};
  address.nl_family = AF_NETLINK;
  address.nl_groups =
      RTMGRP_LINK | RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR | RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_ROUTE;
  if (file >= 0 && bind(file, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    close(file);
    return -1;
  }
  return file;
}

}  // namespace

// Any thread; observers are called on the main thread.
class NetworkInfo::Flags : public std::enable_shared_from_this<Flags> {
 public:
  using Observer = std::function<void()>;

  Flags(MainQueue& mainQueue, uint32_t flags) : mainQueue_(&mainQueue), flags_(flags) {}

  uint32_t get() const { return flags_; }

  void set(uint32_t flags) {
    if (flags_.exchange(flags) == flags) return;
    std::lock_guard lock(mutex_);
    if (mainQueue_) mainQueue_->post([self = shared_from_this()] { self->tell(); });
  }

  // The platform goes, while reachability objects may stay.
  void close() {
    std::lock_guard lock(mutex_);
    mainQueue_ = nullptr;
  }

  Handle observe(Observer observer) {
    auto entry = std::make_shared<Observer>(std::move(observer));
    std::lock_guard lock(mutex_);
    forgetExpired();  // many observe for one request only
    observers_.push_back(entry);
    return Handle([entry = std::move(entry)] {});  // owning it is what keeps it observed
  }

 private:
  void tell() {
    std::list<std::weak_ptr<Observer>> observers;
    {
      std::lock_guard lock(mutex_);
      forgetExpired();
      observers = observers_;
    }
    for (const auto& weak : observers)
      if (const auto observer = weak.lock()) (*observer)();
  }

  void forgetExpired() {
    observers_.remove_if([](const auto& observer) { return observer.expired(); });
  }

  std::mutex mutex_;
  MainQueue* mainQueue_;
  std::atomic<uint32_t> flags_;
  std::list<std::weak_ptr<Observer>> observers_;
};

class NetworkInfo::Reachability : public SCNetworkReachability {
 public:
  explicit Reachability(std::shared_ptr<Flags> flags) : flags_(std::move(flags)) {}
  std::optional<uint32_t> flags() const override { return flags_->get(); }
  Handle setCallback(std::function<void()> changed) override { return flags_->observe(std::move(changed)); }

 private:
  std::shared_ptr<Flags> flags_;
};

NetworkInfo::NetworkInfo(MainQueue& mainQueue, std::function<void()> wayChanged)
    : BusService(networkManagerInterface),
      flags_(std::make_shared<Flags>(mainQueue, kernelFlags())),
      wayChanged_(std::move(wayChanged)) {}

NetworkInfo::~NetworkInfo() {
  flags_->close();
}

std::shared_ptr<SCNetworkReachability> NetworkInfo::reachabilityWithName(const std::string& host) {
  return host.empty() ? nullptr : std::make_shared<Reachability>(flags_);
}

std::shared_ptr<SCNetworkReachability> NetworkInfo::reachabilityWithAddress(const SocketAddress& address) {
  const auto parsed = GPtr<GInetAddress>::adopt(g_inet_address_new_from_string(address.text.c_str()));
  return parsed ? std::make_shared<Reachability>(flags_) : nullptr;
}

std::optional<std::vector<NetworkInterfaceAddress>> NetworkInfo::interfaceAddresses() const {
  return systemInterfaceAddresses();
}

void NetworkInfo::begun() {
  routes_ = openRouteSocket();
  if (routes_ < 0) return;
  way_ = wayToInternet();
  routesChanged_.reset(g_unix_fd_source_new(routes_, G_IO_IN));
  const GUnixFDSourceFunc handler = onRoutesChanged;
  g_source_set_callback(routesChanged_.get(), G_SOURCE_FUNC(handler), this, nullptr);
  g_source_attach(routesChanged_.get(), g_main_context_get_thread_default());
  update();
}

void NetworkInfo::ended() {
  routesChanged_.reset();
  if (routes_ >= 0) close(routes_);
  routes_ = -1;
}

gboolean NetworkInfo::onRoutesChanged(int socket, GIOCondition, gpointer info) noexcept {
  char message[4096];  // what has changed does not matter
  while (recv(socket, message, sizeof message, 0) > 0) continue;
  auto& self = *static_cast<NetworkInfo*>(info);
  self.update();
  if (auto way = wayToInternet(); std::exchange(self.way_, way) != way) self.wayChanged_();
  return G_SOURCE_CONTINUE;
}

void NetworkInfo::appeared() {
  listenForProperties(networkManagerInterface);
}

void NetworkInfo::heard(const std::string&, const std::string&, GVariant* parameters) {
  if (mentions(parameters, {"State", "Connectivity", "PrimaryConnectionType"})) readAgain();
}

void NetworkInfo::read() {
  getAll(networkManagerPath, networkManagerInterface, [this](GVariant* properties) {
    managed_ = managedFlags(properties);
    update();
  });
}

void NetworkInfo::forget() {
  managed_.reset();
  update();
}

void NetworkInfo::update() {
  flags_->set(managed_ ? *managed_ : kernelFlags());
}

}  // namespace velto::gtk
