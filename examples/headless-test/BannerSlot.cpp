// See BannerSlot.h.
#include "BannerSlot.h"

void BannerSlot::open(const velto::VeltoSettings& reader) {
  banner_ = velto::VeltoBannerViewController::initWithDelegate(
      shared_from_this(), velto::VeltoBannerSize320x50, velto::VeltoBannerPositionBottom);
  banner_->setEnableAutoRefresh(true);
  banner_->setRefreshTimeSeconds(30);
  banner_->load(reader);
}

void BannerSlot::close() {
  if (banner_) banner_->removeBanner();
  banner_.reset();
  isFilled_ = false;
}

void BannerSlot::veltoBannerViewControllerDidFinishLoad(velto::VeltoBannerViewControllerPrivate&) {
  isFilled_ = true;
  hasFailed_ = false;
}

void BannerSlot::veltoBannerViewControllerDidPress(velto::VeltoBannerViewControllerPrivate&) {
  ++taps_;
}

// Only the first load reports a failure. The refreshes go on, so an ad may still come.
void BannerSlot::veltoBannerViewControllerDidFail(velto::VeltoBannerViewControllerPrivate&,
                                                  const velto::VeltoErrorAd&) {
  hasFailed_ = true;
}
