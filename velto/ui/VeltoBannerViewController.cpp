// The public banner: forwards everything to its working controller.
#include "velto/ui/VeltoBannerViewController.h"

#include "velto/platform/Platform.h"
#include "velto/ui/VeltoBannerViewControllerPrivate.h"

namespace velto {
namespace {

std::shared_ptr<VeltoBannerViewController> around(std::shared_ptr<VeltoBannerViewControllerPrivate> vc) {
  return std::make_shared<VeltoBannerViewController>(std::move(vc));
}

}  // namespace

std::shared_ptr<VeltoBannerViewController> VeltoBannerViewController::initWithDelegate(
    const Delegate& delegate, VeltoBannerSize andSize, VeltoBannerPosition andPosition) {
  return around(
      VeltoBannerViewControllerPrivate::initWithDelegate(delegate, andSize, andPosition, {}, nullptr));
}

std::shared_ptr<VeltoBannerViewController> VeltoBannerViewController::initWithDelegate(
    const Delegate& delegate, VeltoBannerSize andSize, CGPoint andLocation) {
  return around(VeltoBannerViewControllerPrivate::initWithDelegate(
      delegate, andSize, VeltoBannerPositionLocation, andLocation, nullptr));
}

std::shared_ptr<VeltoBannerViewController> VeltoBannerViewController::initWithDelegate(
    const Delegate& delegate, VeltoBannerSize andSize, const std::shared_ptr<UIView>& andView) {
  return around(VeltoBannerViewControllerPrivate::initWithDelegate(delegate, andSize, VeltoBannerPositionTop,
                                                                   {}, andView));
}

std::shared_ptr<VeltoBannerViewController> VeltoBannerViewController::initWithDelegate(
    const Delegate& delegate, VeltoBannerSize andSize, const std::shared_ptr<UIView>& andView,
    CGPoint andLocation) {
  return around(VeltoBannerViewControllerPrivate::initWithDelegate(
      delegate, andSize, VeltoBannerPositionLocation, andLocation, andView));
}

// The host view controller owns a shown banner as its child; without its handle nobody could take it off
// again.
VeltoBannerViewController::~VeltoBannerViewController() {
  if (Platform::currentOrNull()) vc_->abandon();
}

void VeltoBannerViewController::load() {
  vc_->load();
}
void VeltoBannerViewController::load(const VeltoSettings& settings) {
  vc_->load(settings);
}
void VeltoBannerViewController::removeBanner() {
  vc_->removeBanner();
}
void VeltoBannerViewController::setRefreshPaused(bool paused) {
  vc_->setRefreshPaused(paused);
}
std::vector<VeltoAdTimeline> VeltoBannerViewController::veltoAdTimeline() const {
  return vc_->placement().timelines();
}
void VeltoBannerViewController::addTimelineObserver(std::weak_ptr<VeltoAdTimelineObserver> observer) {
  vc_->placement().observe(std::move(observer));
}
void VeltoBannerViewController::setPlacement(const std::string& name) {
  vc_->placement().setName(name);
}
void VeltoBannerViewController::setHeavyAdPolicy(VeltoHeavyAdPolicy policy) {
  vc_->setHeavyAdPolicy(policy);
}
void VeltoBannerViewController::setHeavyAdLimits(const VeltoHeavyAdLimits& limits) {
  vc_->setHeavyAdLimits(limits);
}
std::optional<VeltoAdWeight> VeltoBannerViewController::adWeight() const {
  return vc_->adWeight();
}
VeltoBannerState VeltoBannerViewController::state() const {
  return vc_->state();
}
CGSize VeltoBannerViewController::adSize() const {
  return vc_->adSize();
}
void VeltoBannerViewController::setSize(VeltoBannerSize size) {
  vc_->setSize(size);
}
void VeltoBannerViewController::setRefreshTimeSeconds(int64_t seconds) {
  vc_->setRefreshTimeSeconds(seconds);
}
void VeltoBannerViewController::setEnableAutoRefresh(bool enable) {
  vc_->setEnableAutoRefresh(enable);
}
void VeltoBannerViewController::setAnimation(VeltoAnimation animation) {
  vc_->setAnimation(animation);
}

}  // namespace velto
