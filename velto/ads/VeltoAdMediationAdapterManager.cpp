// The table of adapter names.
#include "velto/ads/VeltoAdMediationAdapterManager.h"

#include "velto/ads/VeltoAdMediationAdapterMonetize.h"
#include "velto/ads/VeltoAdMediationAdapterPassback.h"
#include "velto/ads/VeltoAdMediationAdapterRegistry.h"
#include "velto/platform/foundation/Description.h"

namespace velto {

std::shared_ptr<VeltoAdMediationAdapterManager> VeltoAdMediationAdapterManager::adapterForMediationItem(
    const std::shared_ptr<VeltoMediationItemResponse>& item) {
  auto made = std::make_shared<VeltoAdMediationAdapterManager>();
  if (item) made->cn = item->cn();
  return made;
}

std::shared_ptr<VeltoAdMediationAdapterProtocol> VeltoAdMediationAdapterManager::handler() const {
  if (!cn) return nullptr;
  if (*cn == "VeltoAdmobBannerAdapter" || *cn == "VeltoAdmobInterstitialAdapter")
    return VeltoAdMediationAdapterRegistry::adapterNamed("VeltoAdMediationAdapterAdMob");
  if (*cn == "VeltoMonetizeBannerAdapter" || *cn == "VeltoMonetizeInterstitialAdapter")
    return std::make_shared<VeltoAdMediationAdapterMonetizeClass>();
  if (*cn == "VeltoPassbackBannerAdapter" || *cn == "VeltoPassbackInterstitialAdapter")
    return std::make_shared<VeltoAdMediationAdapterPassbackClass>();
  return nullptr;
}

uint64_t VeltoAdMediationAdapterManager::adType() const {
  const std::string name = lowercased(cn.value_or(""));
  if (name.find("banner") != std::string::npos) return VeltoAdTypeBanner;
  return name.find("interstitial") != std::string::npos ? VeltoAdTypeInterstitial : VeltoAdTypeNotValid;
}

std::string VeltoAdMediationAdapterManager::description() const {
  // Class names of the adapters; one of the application's goes by the name under which it is known.
  std::optional<std::string> className;
  if (handler()) {
    const bool isMonetize = cn->rfind("VeltoMonetize", 0) == 0;
    const bool isPassback = cn->rfind("VeltoPassback", 0) == 0;
    className = std::string("VeltoAdMediationAdapter") + (isMonetize   ? "Monetize"
                                                          : isPassback ? "Passback"
                                                                       : "AdMob");
  }
  return Description("VeltoAdMediationAdapterManager", this)
      .field("Cn", cn)
      .field("AdType", adType())
      .field("Handler", className)
      .text();
}

}  // namespace velto
