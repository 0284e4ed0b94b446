// See DriftwoodAdapter.h.
#include "DriftwoodAdapter.h"

#include <velto/ads/VeltoAd.h>
#include <velto/ads/VeltoAdMediationAdapterRegistry.h>
#include <velto/platform/MainQueue.h>
#include <velto/platform/Platform.h>
#include <velto/platform/UIApplication.h>
#include <velto/velto.h>

#include <map>

using namespace velto;

namespace {

constexpr char className[] = "VeltoAdMediationAdapterAdMob";

std::optional<DriftwoodOffer> offerFor(const VeltoMediationItemResponse& item) {
  static const std::map<std::string, DriftwoodOffer> offers{
      {"driftwood/sails",
       {"Driftwood Sails", "Mended while you have your tea", "Visit",
        "https://driftwood.example/landing/sails"}},
      {"driftwood/regatta",
       {"The Driftwood Regatta", "Saturday, from the first light to the last buoy", "Take part",
        "https://driftwood.example/landing/regatta"}}};
  const auto found = item.e() ? offers.find(item.e()->adUnit().value_or("")) : offers.end();
  return found == offers.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace

void linkDriftwoodAdapter() {
  VeltoAdMediationAdapterRegistry::registerAdapter(className, std::make_shared<DriftwoodAdapterClass>());
}

void unlinkDriftwoodAdapter() {
  VeltoAdMediationAdapterRegistry::registerAdapter(className, nullptr);
}

void DriftwoodAdapterClass::adapt(const std::shared_ptr<VeltoMediationItemResponse>& item,
                                  std::optional<int64_t> bannerSize,
                                  const std::shared_ptr<VeltoTaskResponseHeaders>& headers, uint64_t adType,
                                  VeltoAdCompletion completionHandler) {
  const auto offer = offerFor(*item);
  if (!offer) return completionHandler(nullptr, VeltoErrorAd::veltoErrorAdWithCode(VeltoErrorNoFill));
  // Everything of an adapter belongs to the main thread, its end included.
  Platform::current().mainQueue().post([=, completion = std::move(completionHandler)] {
    const auto adapter = std::make_shared<DriftwoodAdapter>(adType, *offer);
    completion(VeltoAd::adWithMediation(adapter, bannerSize, headers), std::nullopt);
    // The ad reaches its controller one turn later, and is announced to it after that.
    Platform::current().mainQueue().post([adapter] { adapter->announce(); });
  });
}

DriftwoodAdapter::~DriftwoodAdapter() {
  if (const auto screen = screen_.lock()) screen->dismissViewControllerAnimated(false, nullptr);
}

std::string DriftwoodAdapter::description() const {
  return "<DriftwoodAdapter: " + offer_.title + ">";
}

void DriftwoodAdapter::announce() {
  post(adType_ == VeltoAdTypeInterstitial ? constNotificationAdMobAdapterGADInterstitialReady
                                          : constNotificationAdMobAdapterGADBannerReady);
}

void DriftwoodAdapter::post(const char* name) {
  Platform::current().notificationCenter().postNotification({name, shared_from_this()});
}

std::shared_ptr<UIView> DriftwoodAdapter::getBannerView() {
  if (!banner_) banner_ = makeDriftwoodBanner(offer_, actions());
  return banner_;
}

void DriftwoodAdapter::setAdRootViewController(const std::shared_ptr<UIViewController>& controller) {
  // A banner is told its controller as well, and has no use for it.
  if (adType_ != VeltoAdTypeInterstitial || !screen_.expired()) return;
  const auto screen = DriftwoodScreen::make(offer_, actions());
  screen_ = screen;
  controller->presentViewController(screen, false, [weak = weak_from_this()] {
    const auto alive = weak.lock();
    const auto shown = alive ? alive->screen_.lock() : nullptr;
    if (alive && !(shown && shown->view()->isInWindow()))
      alive->post(constNotificationAdMobAdapterGADInterstitialError);
  });
}

// The views may outlive the adapter by the turn in which both go.
DriftwoodActions DriftwoodAdapter::actions() {
  const auto call = [weak = weak_from_this()](void (DriftwoodAdapter::*action)()) {
    return [weak, action] {
      if (const auto alive = weak.lock()) (alive.get()->*action)();
    };
  };
  return {call(&DriftwoodAdapter::pressed), call(&DriftwoodAdapter::closed)};
}

void DriftwoodAdapter::pressed() {
  if (const auto told = delegate()) told->mediationBannerDidPress();
  if (const auto url = NSURL::URLWithString(offer_.url)) Platform::current().application().openURL(*url);
}

// The network takes its own screen down, then Velto its screen below.
void DriftwoodAdapter::closed() {
  const auto tell = [alive = shared_from_this()] {
    if (const auto told = alive->delegate()) told->mediationBannerDidClose();
  };
  if (banner_) banner_->setHidden(true);
  if (const auto screen = screen_.lock()) return screen->dismissViewControllerAnimated(false, tell);
  tell();
}
