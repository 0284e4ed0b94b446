// Reachability over the platform's flags.
#include "velto/network/VeltoReachability.h"

#include "velto/platform/Platform.h"

namespace velto {
namespace {

std::shared_ptr<VeltoReachability> watching(std::shared_ptr<SCNetworkReachability> reference) {
  return reference ? std::make_shared<VeltoReachability>(std::move(reference)) : nullptr;
}

}  // namespace

std::shared_ptr<VeltoReachability> VeltoReachability::reachabilityWithHostName(const std::string& hostName) {
  return watching(Platform::current().network().reachabilityWithName(hostName));
}

std::shared_ptr<VeltoReachability> VeltoReachability::reachabilityWithAddress(const SocketAddress& address) {
  return watching(Platform::current().network().reachabilityWithAddress(address));
}

std::shared_ptr<VeltoReachability> VeltoReachability::reachabilityForInternetConnection() {
  return reachabilityWithAddress({"0.0.0.0"});
}

bool VeltoReachability::startNotifier() {
  notifier_ = reference_->setCallback([weak = weak_from_this()] {
    if (auto self = weak.lock())
      Platform::current().notificationCenter().postNotification(
          {kVeltoNetworkReachabilityChangedNotification, self});
  });
  return static_cast<bool>(notifier_);
}

VeltoNetworkStatus VeltoReachability::currentReachabilityStatus() const {
  const auto flags = reference_->flags();
  return flags ? networkStatusForFlags(*flags) : VeltoNetworkNotReachable;
}

bool VeltoReachability::connectionRequired() const {
  return (reference_->flags().value_or(0) & SCNetworkReachabilityFlagsConnectionRequired) != 0;
}

VeltoNetworkStatus VeltoReachability::networkStatusForFlags(uint32_t flags) {
  const auto has = [flags](SCNetworkReachabilityFlags flag) { return (flags & flag) != 0; };
  if (!has(SCNetworkReachabilityFlagsReachable)) return VeltoNetworkNotReachable;
  if (has(SCNetworkReachabilityFlagsIsWWAN)) return VeltoNetworkReachableViaWWAN;
  const bool byItself =
      has(SCNetworkReachabilityFlagsConnectionOnTraffic) || has(SCNetworkReachabilityFlagsConnectionOnDemand);
  if (has(SCNetworkReachabilityFlagsInterventionRequired) || !byItself)
    return has(SCNetworkReachabilityFlagsConnectionRequired) ? VeltoNetworkNotReachable
                                                             : VeltoNetworkReachableViaWiFi;
  return VeltoNetworkReachableViaWiFi;
}

}  // namespace velto
