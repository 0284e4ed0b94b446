// Passback: decodes the markup and makes the ad.
#include "velto/ads/VeltoAdMediationAdapterPassback.h"

#include "velto/ads/AdSDKVelto.h"
#include "velto/platform/foundation/Description.h"

namespace velto {

void VeltoAdMediationAdapterPassback::adapt(const std::shared_ptr<VeltoMediationItemResponse>& item,
                                            std::optional<int64_t> bannerSize, const Headers& headers,
                                            uint64_t adType, const VeltoAdCompletion& completionHandler) {
  auto html = item && item->e() ? item->e()->base64DecodedString() : std::nullopt;
  if (html)
    return std::make_shared<VeltoAdMediationAdapterPassback>()->_init(
        std::move(*html), item->e()->timeout(), bannerSize, headers, adType, completionHandler);
  if (completionHandler) completionHandler(nullptr, VeltoErrorAd::veltoErrorAdWithCode(VeltoErrorDeveloper));
}

void VeltoAdMediationAdapterPassback::_init(std::string html, std::optional<double> timer,
                                            std::optional<int64_t> bannerSize, const Headers& headers,
                                            uint64_t adType, const VeltoAdCompletion& completionHandler) {
  adType_ = adType;
  if (!completionHandler) return;
  if (AdSDKVelto::isAdNoFill(html))
    return completionHandler(nullptr, VeltoErrorAd::veltoErrorAdWithCode(VeltoErrorNoFill));
  completionHandler(VeltoAd::adWithHTML(std::move(html), bannerSize, headers, timer), std::nullopt);
}

std::string VeltoAdMediationAdapterPassback::description() const {
  return Description("VeltoAdMediationAdapterPassback", this).field("AdType", adType_).text();
}

}  // namespace velto
