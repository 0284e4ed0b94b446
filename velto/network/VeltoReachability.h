// Whether the network can be reached, and a notification when that changes.
#pragma once

#include "velto/platform/NSNotificationCenter.h"
#include "velto/platform/Network.h"

#include <cstdint>
#include <memory>
#include <string>

namespace velto {

enum VeltoNetworkStatus : uint64_t {
  VeltoNetworkNotReachable = 0,
  VeltoNetworkReachableViaWiFi = 1,
  VeltoNetworkReachableViaWWAN = 2,
};

// Posted on every change while a notifier runs, with the reachability object as its object.
inline constexpr char kVeltoNetworkReachabilityChangedNotification[] =
    "kVeltoNetworkReachabilityChangedNotification";

// Any thread; changes are told on the main thread.
class VeltoReachability : public NotificationObject, public std::enable_shared_from_this<VeltoReachability> {
 public:
  // Each is null when the platform cannot watch such a target.
  static std::shared_ptr<VeltoReachability> reachabilityWithHostName(const std::string& hostName);
  static std::shared_ptr<VeltoReachability> reachabilityWithAddress(const SocketAddress& address);
  static std::shared_ptr<VeltoReachability> reachabilityForInternetConnection();

  explicit VeltoReachability(std::shared_ptr<SCNetworkReachability> reference)
      : reference_(std::move(reference)) {}
  ~VeltoReachability() override { stopNotifier(); }

  bool startNotifier();  // false when changes cannot be watched
  void stopNotifier() { notifier_.cancel(); }
  VeltoNetworkStatus currentReachabilityStatus() const;
  bool connectionRequired() const;
  static VeltoNetworkStatus networkStatusForFlags(uint32_t flags);

 private:
  std::shared_ptr<SCNetworkReachability> reference_;
  Handle notifier_;
};

}  // namespace velto
