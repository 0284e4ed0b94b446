// A shown ad's life, and what its page or adapter reports.
#include "velto/ui/VeltoShownAd.h"

#include "velto/ads/AdPublisherInfoSDKVelto.h"
#include "velto/ads/VeltoAdManager.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"
#include "velto/ui/VeltoAdViewController.h"

#include <utility>

namespace velto {

std::shared_ptr<VeltoShownAd> VeltoShownAd::shownBy(VeltoAdViewController& controller,
                                                    std::shared_ptr<VeltoAd> ad) {
  return std::shared_ptr<VeltoShownAd>(new VeltoShownAd(controller, std::move(ad)));
}

VeltoShownAd::~VeltoShownAd() {
  end(Why::ControllerGone);
}

void VeltoShownAd::end(Why why) {
  if (!controller_) return;
  endLoad(why);
  silence();
  watch_.reset();
  secondWatch_.reset();
  _restoreOriginalOrientation();
  controller_ = nullptr;
  for (const auto& page : {webView_, secondaryMRAIDWebView_}) {
    if (!page) continue;
    page->setNavigationDelegate({});
    page->setMuted(true);  // it may live on for its way out, and for what measures it
  }
  ad_.reset();
  adapter_.reset();
  mraidHandler_.reset();
}

void VeltoShownAd::endLoad(Why why) {
  if (const auto known = record() && !record()->hasEnded() ? weight() : std::nullopt)
    note(VeltoTimelineKind::Weighed, *known);
  LoadNotes::endLoad(why);
}

void VeltoShownAd::removeViews() {
  if (webView_) webView_->removeFromSuperview();
  if (secondaryMRAIDWebView_) secondaryMRAIDWebView_->removeFromSuperview();
  if (veltoCloseButton_) veltoCloseButton_->removeFromSuperview();
}

const VeltoShownAd::WebView& VeltoShownAd::makeWebView() {
  webView_ = controller_->addWKWebViewInViewWithNavigationDelegate(weak_from_this());
  note(VeltoTimelineKind::WebProcess,
       webView_->webPeer().hasWarmProcess() ? VeltoWebProcess::Warm : VeltoWebProcess::Cold);
  return webView_;
}

void VeltoShownAd::load() {
  watch_ = watch(webView_);
  loadBannerDataIn(webView_, ad_);
}

std::shared_ptr<AdWatch> VeltoShownAd::watch(const WebView& page) {
  return AdWatch::watch(page, controller_->heavyAdLimits(),
                        [weak = weak_from_this()](const VeltoAdExcess& excess) {
                          if (const auto alive = weak.lock()) alive->tooHeavy(excess);
                        });
}

void VeltoShownAd::tooHeavy(const VeltoAdExcess& excess) {
  if (!controller_) return;
  if (wereTouched()) return touched();
  note(VeltoTimelineKind::Heavy, excess);
  if (excess.ads > 1) return;  // it may be the work of another
  if (controller_->heavyAdPolicy() == VeltoHeavyAdPolicyPauseUnseen) pauseUnseen();
  if (controller_->heavyAdPolicy() == VeltoHeavyAdPolicyReplace) controller_->replaceHeavyAd();
}

void VeltoShownAd::takeHandler() {
  if (!ad_ || ad_->sourceType != VeltoAdSourceMRAID) return;
  mraidHandler_ = VeltoMRAIDHandler::handler();
  ad_->mraidHandler = mraidHandler_;
}

void VeltoShownAd::takeAdapter() {
  adapter_ = ad_->adapter;
  if (auto* core = dynamic_cast<VeltoAdMediationCoreAdapter*>(adapter_.get()))
    core->setDelegate(weak_from_this());
}

void VeltoShownAd::tellShown() const {
  Platform::current().notificationCenter().postNotification({constNotificationAdShowed, ad_});
}

void VeltoShownAd::setVeltoCloseButton(std::shared_ptr<VeltoCloseButton> button) {
  if (veltoCloseButton_) veltoCloseButton_->removeFromSuperview();
  veltoCloseButton_ = std::move(button);
}

void VeltoShownAd::after(std::chrono::milliseconds delay, std::function<void()> step) {
  Platform::current().mainQueue().postAfter(delay, [weak = weak_from_this(), step = std::move(step)] {
    const auto alive = weak.lock();
    if (alive && alive->controller_) step();
  });
}

// --- for the mixins

UIViewController& VeltoShownAd::viewController() {
  return *controller_;
}

PreparedPage& VeltoShownAd::preparedPage() {
  return controller_->preparedPage();
}

// Rich media works more, and waits for answers.
std::string VeltoShownAd::site() const {
  const bool shares = ad_ && ad_->sourceType == VeltoAdSourceMarkup && controller_->sharesProcess();
  return shares ? ad_->site : "";
}

// --- the page

void VeltoShownAd::veltoBannerInjected(WKWebView& injected) {
  if (!controller_ || &injected != webView_.get()) return;
  note(VeltoTimelineKind::MarkupGiven);
  controller_->pageInjected();
}

// What the second part says of itself is no news of the ad.
void VeltoShownAd::veltoAdLoaded(WKWebView& loaded) {
  if (!controller_ || &loaded != webView_.get()) return;
  note(VeltoTimelineKind::LoadFinished);
  controller_->pageLoaded();
}

void VeltoShownAd::veltoDismissWKWebView(WKWebView&) {
  if (controller_) controller_->leave(Why::PageGaveUp);
}

void VeltoShownAd::veltoWKWebViewDidFailNavigation(const NSError& error) {
  if (controller_) controller_->pageFailed(error);
}

void VeltoShownAd::veltoWKWebViewDidFinishNavigation(WKWebView& finished) {
  if (!controller_) return;
  const auto page = std::static_pointer_cast<WKWebView>(finished.shared_from_this());
  if (page == webView_) note(VeltoTimelineKind::PageLoaded);
  _setMRAIDAsReady(page);
  controller_->startOMSDKSessionFor(page, veltoCloseButton_);
  // A second part that has no identifiers leaves those of the first.
  const bool isSecondPart = page == secondaryMRAIDWebView_;
  if (isSecondPart && secondWatch_) secondWatch_->lookAtSight();
  AdPublisherInfoSDKVelto::findPublisherInformations(
      page, [weak = weak_from_this(), isSecondPart](auto ordId, auto bannerId, auto publisherId) {
        const auto alive = weak.lock();
        if (alive && alive->ad_ && (ordId || !isSecondPart))
          alive->ad_->setOrdId(ordId, bannerId, publisherId);
      });
}

// --- another network

void VeltoShownAd::mediationBannerDidPress() {
  if (controller_) controller_->_adDidPress();
}

void VeltoShownAd::mediationBannerDidClose() {
  if (controller_) controller_->adapterClosed();
}

// --- orientation

void VeltoShownAd::forceOrientation(int64_t orientation) {
  orientation_.turning([&] { UIViewControllerMRAIDSDKVelto::forceOrientation(orientation); });
  if (orientation != 0 && controller_) orientation_.hold(orientation);
}

}  // namespace velto
