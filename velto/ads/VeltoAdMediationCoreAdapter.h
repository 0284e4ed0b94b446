// What an adapter of another ad network looks like to the controllers that show its ads. Main thread.
#pragma once

#include "velto/Export.h"
#include "velto/ads/VeltoAdMediationAdapterDelegate.h"
#include "velto/ads/VeltoAdMediationAdapterNotifications.h"
#include "velto/platform/NSNotificationCenter.h"
#include "velto/platform/foundation/Description.h"

#include <cstdint>
#include <memory>
#include <string>

namespace velto {

class UIView;
class UIViewController;
class VeltoAd;

// An adapter that shows its ads over a view controller. Without this capability an adapter's ads are not
// shown.
class VELTO_EXPORT VeltoAdMediationRootViewControllerUser {
 public:
  virtual ~VeltoAdMediationRootViewControllerUser() = default;
  // The controller to present the network's screens from. An interstitial's comes when it is the ad's turn: an
  // adapter that has presented nothing from it, nor put a view into it, ten seconds later has nothing to show,
  // and the interstitial closes.
  virtual void setAdRootViewController(const std::shared_ptr<UIViewController>& controller) = 0;
};

class VELTO_EXPORT VeltoAdMediationCoreAdapterProtocol : public NotificationObject {
 public:
  virtual uint64_t adType() const = 0;  // 1 banner, 2 interstitial, 0 unknown

  // Optional, all of these. For logs; by itself an adapter tells its base and its address.
  virtual std::string description() const { return Description("VeltoAdMediationCoreAdapter", this).text(); }
  // Null: the adapter takes no root view controller.
  virtual VeltoAdMediationRootViewControllerUser* rootViewControllerUser() { return nullptr; }
  virtual std::shared_ptr<UIView> getBannerView() { return nullptr; }
  virtual void gadAdLoaded(const std::shared_ptr<VeltoAd>& /*ad*/, const std::shared_ptr<UIView>& /*view*/) {}
};

// The base of adapters.
class VELTO_EXPORT VeltoAdMediationCoreAdapter : public VeltoAdMediationCoreAdapterProtocol {
 public:
  uint64_t adType() const override { return 0; }
  void setDelegate(std::weak_ptr<VeltoAdMediationAdapterDelegate> delegate) {
    delegate_ = std::move(delegate);
  }
  // Whether somebody shows its ad, or is about to.
  bool hasDelegate() const { return !delegate_.expired(); }

 protected:
  std::shared_ptr<VeltoAdMediationAdapterDelegate> delegate() const { return delegate_.lock(); }

 private:
  std::weak_ptr<VeltoAdMediationAdapterDelegate> delegate_;
};

}  // namespace velto
