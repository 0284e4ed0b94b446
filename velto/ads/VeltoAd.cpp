// The ad model.
#include "velto/ads/VeltoAd.h"

#include "velto/ads/AdSDKVelto.h"
#include "velto/ads/VeltoAdMediationCoreAdapter.h"
#include "velto/core/VeltoDataStore.h"
#include "velto/platform/Clock.h"
#include "velto/platform/Platform.h"
#include "velto/platform/foundation/Description.h"

namespace velto {

std::shared_ptr<VeltoAd> VeltoAd::adWithHTML(std::string html, std::optional<int64_t> bannerSize,
                                             Headers headers) {
  const auto timer = headers ? headers->timerSeconds() : std::nullopt;
  return adWithHTML(std::move(html), bannerSize, std::move(headers), timer);
}

std::shared_ptr<VeltoAd> VeltoAd::adWithHTML(std::string html, std::optional<int64_t> bannerSize,
                                             Headers headers, std::optional<double> timer) {
  const bool isMRAID = AdSDKVelto::isAdMRAID(html);
  auto ad = std::make_shared<VeltoAd>();
  ad->sourceType = isMRAID ? VeltoAdSourceMRAID : VeltoAdSourceMarkup;
  ad->html = std::move(html);
  ad->_init(std::move(headers), bannerSize, isMRAID ? std::nullopt : timer);
  return ad;
}

std::shared_ptr<VeltoAd> VeltoAd::adWithMediation(
    std::shared_ptr<VeltoAdMediationCoreAdapterProtocol> adapter, std::optional<int64_t> bannerSize,
    Headers headers) {
  auto ad = std::make_shared<VeltoAd>();
  ad->sourceType = VeltoAdSourceMediation;
  ad->adapter = std::move(adapter);
  const auto timer = headers ? headers->timerSeconds() : std::nullopt;
  ad->_init(std::move(headers), bannerSize, timer);
  return ad;
}

void VeltoAd::_init(Headers ownHeaders, std::optional<int64_t> ownBannerSize,
                    std::optional<double> ownTimer) {
  headers = std::move(ownHeaders);
  size = headers ? headers->size() : CGSize{};
  timer = ownTimer;
  identifier = uuidString();
  createdAt = Platform::current().clock().secondsSince1970();
  veltoKey = VeltoDataStore::getVeltoKey();
  ttl = headers ? headers->ttl() : std::nullopt;
  bannerSize = ownBannerSize;
}

bool VeltoAd::canBeCached() const {
  return veltoKey && createdAt && ttl && bannerSize;
}

bool VeltoAd::canBeUsedFor(VeltoBannerSize wanted) const {
  if (!canBeCached()) return false;
  const auto currentKey = VeltoDataStore::getVeltoKey();
  return currentKey && *bannerSize == wanted && *veltoKey == *currentKey &&
         *createdAt + *ttl <= Platform::current().clock().secondsSince1970();
}

void VeltoAd::setOrdId(std::optional<std::string> ord, std::optional<std::string> banner,
                       std::optional<std::string> publisher) {
  ordId = std::move(ord);
  bannerId = std::move(banner);
  publisherId = std::move(publisher);
}

void VeltoAd::resetAdInformations() {
  setOrdId(std::nullopt, std::nullopt, std::nullopt);
}

std::string VeltoAd::description() const {
  return Description("VeltoAd", this)
      .field("SourceType", sourceType)
      .field("Width", size.width)
      .field("Height", size.height)
      .field("Timer", timer)
      .field("Adapter", adapter ? std::optional(adapter->description()) : std::nullopt)
      .text();
}

}  // namespace velto
