// Fetching ads, and the list of those not shown yet.
#include "velto/ads/VeltoAdManager.h"

#include "velto/core/SDKVeltoBundle.h"
#include "velto/core/VeltoUtilities.h"
#include "velto/network/VeltoTaskManager.h"
#include "velto/platform/AnswerOnMain.h"
#include "velto/platform/Clock.h"
#include "velto/platform/foundation/Text.h"
#include "velto/timeline/LoadRecord.h"

namespace velto {

std::shared_ptr<VeltoAdManager> VeltoAdManager::shared() {
  return Platform::shared<VeltoAdManager>();
}

void VeltoAdManager::fetchFor(VeltoAdType type, VeltoBannerSize size,
                              const std::optional<VeltoSettings>& settings,
                              VeltoAdCompletion completionHandler) {
  shared()->_fetch(type, size, settings, std::move(completionHandler));
}

VeltoAdManager::VeltoAdManager() {
  shownObserver_ = Platform::current().notificationCenter().addObserver(
      constNotificationAdShowed,
      [this](const NSNotification& notification) { _veltoNotificationAdShowed(notification); });
}

void VeltoAdManager::_fetch(VeltoAdType type, VeltoBannerSize size,
                            const std::optional<VeltoSettings>& settings,
                            VeltoAdCompletion completionHandler) {
  if (auto ad = usableAd(size)) {
    LoadScope::add(VeltoTimelineKind::ListHit,
                   VeltoSeconds{Platform::current().clock().secondsSince1970() - *ad->createdAt - *ad->ttl});
    return answerOnMain(completionHandler, std::move(ad), std::optional<VeltoErrorAd>());
  }

  VeltoTaskManager::executeTaskFor(
      type, size, settings,
      [weak = weak_from_this(), completion = std::move(completionHandler),
       bannerSize = static_cast<int64_t>(size)](const VeltoTaskResponsePointer& response) {
        VeltoAdManagerAdResolver::handleTaskResponse(
            response, bannerSize,
            [weak, completion](const std::shared_ptr<VeltoAd>& ad, const std::optional<VeltoErrorAd>& error) {
              if (auto manager = weak.lock()) manager->_addAdInCache(ad);
              answerOnMain(completion, ad, error);
            });
      });
}

void VeltoAdManager::_addAdInCache(const std::shared_ptr<VeltoAd>& ad) {
  if (!ad || !ad->canBeCached()) return;
  std::lock_guard lock(mutex_);
  ads_.push_back(ad);
}

void VeltoAdManager::_veltoNotificationAdShowed(const NSNotification& notification) {
  const auto shown = notification.objectAs<VeltoAd>();
  if (!shown) return;
  std::lock_guard lock(mutex_);
  std::erase(ads_, shown);
}

std::optional<std::string> VeltoAdManager::getOMSDK() {
  if (!VeltoUtilities::isOMSDKActive()) return std::nullopt;
  if (!omsdkJs_) {
    if (const auto bundle = SDKVelto::veltoResourcesBundle())
      omsdkJs_ = bundle->contentsOfResource("omsdk-v1", "js");
    if (omsdkJs_ && !isValidUTF8(*omsdkJs_)) omsdkJs_.reset();
  }
  return omsdkJs_;
}

std::vector<std::shared_ptr<VeltoAd>> VeltoAdManager::ads() const {
  std::lock_guard lock(mutex_);
  return ads_;
}

std::shared_ptr<VeltoAd> VeltoAdManager::usableAd(VeltoBannerSize size) const {
  for (const auto& ad : ads())
    if (ad->canBeUsedFor(size)) return ad;
  return nullptr;
}

}  // namespace velto
