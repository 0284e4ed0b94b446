// An adapter as the maker of another ad network writes one: it answers mediation items with that network's
// own ads, draws them itself, and tells Velto what people do with them. The network, Driftwood, is made up
// and lives in this program; a real one would be asked over the wire where adapt() looks into its list.
//
// An application calls linkDriftwoodAdapter() once, before its first load. From then on ad requests say that
// an adapter is there, and items of the class names "VeltoAdmobBannerAdapter" and
// "VeltoAdmobInterstitialAdapter" come here; their ad unit names the offer.
#pragma once

#include <velto/ads/VeltoAdMediationAdapterProtocol.h>
#include <velto/ads/VeltoAdMediationCoreAdapter.h>

#include <memory>
#include <string>

#include "DriftwoodViews.h"

// Makes the adapter known to Velto, or forgets it again.
void linkDriftwoodAdapter();
void unlinkDriftwoodAdapter();

// Stands for all adapters: each item that has an offer gets a new one. Called on the transport's thread.
class DriftwoodAdapterClass : public velto::VeltoAdMediationAdapterProtocol {
 public:
  void adapt(const std::shared_ptr<velto::VeltoMediationItemResponse>& item,
             std::optional<int64_t> bannerSize,
             const std::shared_ptr<velto::VeltoTaskResponseHeaders>& headers, uint64_t adType,
             velto::VeltoAdCompletion completionHandler) override;
};

// One ad of the network. The ad that Velto shows owns it; it owns nothing of Velto. Main thread.
class DriftwoodAdapter : public velto::VeltoAdMediationCoreAdapter,
                         public velto::VeltoAdMediationRootViewControllerUser,
                         public std::enable_shared_from_this<DriftwoodAdapter> {
 public:
  DriftwoodAdapter(uint64_t adType, DriftwoodOffer offer) : adType_(adType), offer_(std::move(offer)) {}
  ~DriftwoodAdapter() override;

  uint64_t adType() const override { return adType_; }
  std::string description() const override;
  VeltoAdMediationRootViewControllerUser* rootViewControllerUser() override { return this; }

  // A banner's view, always the same one.
  std::shared_ptr<velto::UIView> getBannerView() override;
  // An interstitial's screen comes over that controller at once: Velto gives it when it is the turn of the
  // ad.
  void setAdRootViewController(const std::shared_ptr<velto::UIViewController>& controller) override;
  // Tells Velto's controllers that this ad can be shown. They also hear when its screen could not be.
  void announce();

 private:
  DriftwoodActions actions();
  void post(const char* name);
  void pressed();
  void closed();

  const uint64_t adType_;
  const DriftwoodOffer offer_;
  std::shared_ptr<velto::UIView> banner_;
  std::weak_ptr<DriftwoodScreen> screen_;  // its presentation owns it
};
