// Passback: decodes the markup and makes the ad.
#include "velto/ads/VeltoAdMediationAdapterPassback.h"

#include "velto/ads/AdSDKVelto.h"

namespace velto {

void VeltoAdMediationAdapterPassback::adapt(const Item& item, std::optional<int64_t> bannerSize,
                                            const Headers& headers, uint64_t adType,
                                            const VeltoAdCompletion& completionHandler) {
  auto html = item && item->e() ? item->e()->base64DecodedString() : std::nullopt;
  if (!html) return fail(completionHandler, VeltoAdEndReason::ItemWithoutData);
  std::make_shared<VeltoAdMediationAdapterPassback>()->_init(std::move(*html), item->e()->timeout(),
                                                             bannerSize, headers, adType, completionHandler);
}

void VeltoAdMediationAdapterPassback::_init(std::string html, std::optional<double> timer,
                                            std::optional<int64_t> bannerSize, const Headers& headers,
                                            uint64_t adType, const VeltoAdCompletion& completionHandler) {
  adType_ = adType;
  if (AdSDKVelto::isAdNoFill(html)) return fail(completionHandler, VeltoAdEndReason::MarkupNoFill);
  if (completionHandler)
    completionHandler(VeltoAd::adWithHTML(std::move(html), bannerSize, headers, timer), std::nullopt);
}

}  // namespace velto
