// One watch on the system's network, shared by all reachability objects.
#include "velto/gtk/NetworkInfo.h"

#include "velto/gtk/Interfaces.h"
#include "velto/gtk/Signal.h"

#include <gio/gio.h>

#include <atomic>
#include <list>
#include <mutex>

namespace velto::gtk {
namespace {

uint32_t flagsOf(GNetworkMonitor* monitor) {
  const auto connectivity = g_network_monitor_get_connectivity(monitor);
  if (!g_network_monitor_get_network_available(monitor) && connectivity == G_NETWORK_CONNECTIVITY_LOCAL)
    return 0;
  uint32_t flags = SCNetworkReachabilityFlagsReachable;
  if (connectivity == G_NETWORK_CONNECTIVITY_PORTAL)  // somebody has to log in first
    flags |= SCNetworkReachabilityFlagsConnectionRequired | SCNetworkReachabilityFlagsInterventionRequired;
  if (isDefaultRouteMobile()) flags |= SCNetworkReachabilityFlagsIsWWAN;
  return flags;
}

}  // namespace

// Started and called back on the main thread; everything else on any.
class NetworkInfo::Monitor : public std::enable_shared_from_this<Monitor> {
 public:
  using Observer = std::function<void()>;

  Monitor() {
    if (hasNonLocalAddress()) flags_ = SCNetworkReachabilityFlagsReachable;
  }

  uint32_t flags() const { return flags_; }

  void start() {
    monitor_ = GPtr<GNetworkMonitor>::retain(g_network_monitor_get_default());
    changed_ = Signal(monitor_.get(), "network-changed", G_CALLBACK(onChanged), this);
    update();
  }

  // The platform goes while reachability objects may stay, on any thread.
  void stop() {
    changed_ = Signal();
    monitor_.reset();
  }

  Handle observe(Observer observer) {
    auto entry = std::make_shared<Observer>(std::move(observer));
    std::lock_guard lock(mutex_);
    forgetExpired();  // many observe for one request only
    observers_.push_back(entry);
    return Handle([entry = std::move(entry)] {});  // owning it is what keeps it observed
  }

 private:
  static void onChanged(GNetworkMonitor*, gboolean, gpointer self) noexcept {
    static_cast<Monitor*>(self)->shared_from_this()->update();
  }

  void update() {
    const uint32_t now = flagsOf(monitor_);
    if (flags_.exchange(now) == now) return;
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

  std::atomic<uint32_t> flags_{0};
  std::mutex mutex_;
  std::list<std::weak_ptr<Observer>> observers_;
  GPtr<GNetworkMonitor> monitor_;
  Signal changed_;
};

class NetworkInfo::Reachability : public SCNetworkReachability {
 public:
  explicit Reachability(std::shared_ptr<Monitor> monitor) : monitor_(std::move(monitor)) {}
  std::optional<uint32_t> flags() const override { return monitor_->flags(); }
  Handle setCallback(std::function<void()> changed) override { return monitor_->observe(std::move(changed)); }

 private:
  std::shared_ptr<Monitor> monitor_;
};

NetworkInfo::NetworkInfo(MainQueue& mainQueue) : mainQueue_(mainQueue) {}

NetworkInfo::~NetworkInfo() {
  if (monitor_) monitor_->stop();
}

std::shared_ptr<SCNetworkReachability> NetworkInfo::reachability() {
  std::call_once(started_, [this] {
    monitor_ = std::make_shared<Monitor>();
    mainQueue_.post([monitor = monitor_] { monitor->start(); });
  });
  return std::make_shared<Reachability>(monitor_);
}

std::shared_ptr<SCNetworkReachability> NetworkInfo::reachabilityWithName(const std::string& host) {
  return host.empty() ? nullptr : reachability();
}

std::shared_ptr<SCNetworkReachability> NetworkInfo::reachabilityWithAddress(const SocketAddress& address) {
  const auto parsed = GPtr<GInetAddress>::adopt(g_inet_address_new_from_string(address.text.c_str()));
  return parsed ? reachability() : nullptr;
}

std::optional<std::vector<NetworkInterfaceAddress>> NetworkInfo::interfaceAddresses() const {
  return systemInterfaceAddresses();
}

}  // namespace velto::gtk
