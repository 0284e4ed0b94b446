// The public interstitial: forwards everything to its working controller.
#include "velto/ui/VeltoInterstitialViewController.h"

#include "velto/platform/Platform.h"
#include "velto/ui/VeltoInterstitialViewControllerPrivate.h"

namespace velto {

std::shared_ptr<VeltoInterstitialViewController> VeltoInterstitialViewController::initWithDelegate(
    const Delegate& delegate) {
  return std::make_shared<VeltoInterstitialViewController>(
      VeltoInterstitialViewControllerPrivate::initWithDelegate(delegate));
}

// The host's view controller owns a shown interstitial; without its handle nobody could take it off again.
VeltoInterstitialViewController::~VeltoInterstitialViewController() {
  if (Platform::currentOrNull()) vc_->abandon();
}

void VeltoInterstitialViewController::setAutoShowWhenReady(bool autoShow) {
  vc_->setAutoShowWhenReady(autoShow);
}
void VeltoInterstitialViewController::load() {
  vc_->load();
}
void VeltoInterstitialViewController::load(const VeltoSettings& settings) {
  vc_->load(settings);
}
bool VeltoInterstitialViewController::isReady() const {
  return vc_->isReady();
}
bool VeltoInterstitialViewController::isLoading() const {
  return vc_->isLoading();
}
void VeltoInterstitialViewController::show() {
  vc_->show();
}
std::optional<VeltoErrorAd> VeltoInterstitialViewController::show(
    const std::shared_ptr<UIViewController>& over) {
  return vc_->show(over);
}
std::vector<VeltoAdTimeline> VeltoInterstitialViewController::veltoAdTimeline() const {
  return vc_->placement().timelines();
}
void VeltoInterstitialViewController::addTimelineObserver(std::weak_ptr<VeltoAdTimelineObserver> observer) {
  vc_->placement().observe(std::move(observer));
}
void VeltoInterstitialViewController::setPlacement(const std::string& name) {
  vc_->placement().setName(name);
}
void VeltoInterstitialViewController::setHeavyAdPolicy(VeltoHeavyAdPolicy policy) {
  vc_->setHeavyAdPolicy(policy);
}
void VeltoInterstitialViewController::setHeavyAdLimits(const VeltoHeavyAdLimits& limits) {
  vc_->setHeavyAdLimits(limits);
}
std::optional<VeltoAdWeight> VeltoInterstitialViewController::adWeight() const {
  return vc_->adWeight();
}
VeltoInterstitialState VeltoInterstitialViewController::state() const {
  return vc_->state();
}
void VeltoInterstitialViewController::setAnimation(VeltoAnimation animation) {
  vc_->setAnimation(animation);
}

}  // namespace velto
