// The banner's life: load, show, press, refresh, remove.
#include "velto/ui/VeltoBannerViewControllerPrivate.h"

#include "velto/ads/AdPublisherInfoSDKVelto.h"
#include "velto/ads/VeltoAdManager.h"
#include "velto/core/VeltoUtilities.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"
#include "velto/tracking/VeltoTrackerManager.h"

namespace velto {

std::shared_ptr<VeltoBannerViewControllerPrivate> VeltoBannerViewControllerPrivate::initWithDelegate(
    const std::shared_ptr<VeltoBannerViewControllerDelegate>& delegate, VeltoBannerSize andSize,
    int64_t andPosition, CGPoint andLocation, const std::shared_ptr<UIView>& andView) {
  std::shared_ptr<VeltoBannerViewControllerPrivate> made(new VeltoBannerViewControllerPrivate);
  auto* self = made.get();
  made->size_ = andSize;
  made->position_ = andPosition;
  made->delegate_ = delegate;
  made->location_ = andLocation;
  made->viewAd_ = andView;
  made->view()->setBackgroundColor(UIColor::clearColor());
  made->view()->setTranslatesAutoresizingMaskIntoConstraints(false);
  made->vc_ = made->getUserViewControllerForDelegate(delegate);
  made->addTapGestureRecognizerInView([self] { self->_adDidPress(); });
  auto& center = Platform::current().notificationCenter();
  made->adapterReadyObserver_ = center.addObserver(
      constNotificationAdMobAdapterGADBannerReady, [self](const NSNotification& notification) {
        self->_notificationAdMobAdapterGADBannerReady(notification);
      });
  made->orientationObserver_ = center.addObserver(
      constNotificationUICurrentOrientation,
      [self](const NSNotification& notification) { self->_notificationUICurrentOrientation(notification); });
  return made;
}

VeltoBannerViewControllerPrivate::~VeltoBannerViewControllerPrivate() {
  stopAudioVolumeObserverForContext(&audioContext_);
  adapterReadyObserver_.cancel();
  orientationObserver_.cancel();
  _invalidateBanner();
  _restoreOriginalOrientation();
}

std::shared_ptr<VeltoBannerViewControllerPrivate> VeltoBannerViewControllerPrivate::self() {
  return std::static_pointer_cast<VeltoBannerViewControllerPrivate>(shared_from_this());
}

// --- load

void VeltoBannerViewControllerPrivate::load(const VeltoSettings& settings) {
  settings_ = settings;
  _loadAndNotifyFailure(true);
}

void VeltoBannerViewControllerPrivate::_loadAndNotifyFailure(bool notifyFailure) {
  _handleRefreshTimer();
  fetchBannerDataFor(VeltoAdTypeBanner, settings_, size_, delegate(), notifyFailure);
  prepareWebContent(webView_);  // while the request is on its way
}

// The interval counts from the start of each load, so every load begins by setting the timer anew.
void VeltoBannerViewControllerPrivate::_handleRefreshTimer() {
  timerRefresh_.reset();
  if (!autoRefresh_ || refreshTimeSeconds_ < 1) return;
  timerRefresh_ = NSTimer::scheduledTimerWithTimeInterval(static_cast<double>(refreshTimeSeconds_),
                                                          [weak = std::weak_ptr(self())] {
                                                            if (const auto alive = weak.lock())
                                                              alive->_refreshAd();
                                                          });
}

// --- show

void VeltoBannerViewControllerPrivate::fetchBannerSuccess(const std::shared_ptr<VeltoAd>& ad) {
  if (abandoned_) return;
  startAudioVolumeObserverForContext(&audioContext_);
  _resetBannerView();
  if (!ad) dropPreparedWebContent();  // a view that stays empty needs no process
  if (!_addBanner(nullptr, ad ? ad->size : CGSize{}))
    return notifyDidFail(delegate(), VeltoErrorAd::veltoErrorAdWithCode(VeltoErrorDeveloper));
  ad_ = ad;
  if (ad && ad->sourceType == VeltoAdSourceMRAID) {
    mraidHandler_ = VeltoMRAIDHandler::handler();
    ad->mraidHandler = mraidHandler_;
  }
  if (!firstAnimationCompleted_) prepareAnimationForAdView(webView_, animation_);
  loadBannerDataIn(webView_, ad);
}

void VeltoBannerViewControllerPrivate::presentMediationBannerView(
    const std::shared_ptr<UIView>& mediationView, const std::shared_ptr<VeltoAd>& ad) {
  if (abandoned_) return;
  startAudioVolumeObserverForContext(&audioContext_);
  _resetBannerView();
  dropPreparedWebContent();
  if (!_addBanner(mediationView, ad->size))
    return notifyDidFail(delegate(), VeltoErrorAd::veltoErrorAdWithCode(VeltoErrorDeveloper));
  ad_ = ad;
  adapter_ = ad->adapter;
  if (auto* core = dynamic_cast<VeltoAdMediationCoreAdapter*>(adapter_.get())) core->setDelegate(self());
  if (!firstAnimationCompleted_) prepareAnimationForAdView(mediationView, animation_);
  startOMSDKSessionForNativeWithFriendlyObstructionView(nullptr);
  _adLoaded(mediationView);
}

bool VeltoBannerViewControllerPrivate::_addBanner(const std::shared_ptr<UIView>& mediationView,
                                                  CGSize withSize) {
  if (!findContainer()) return false;
  const auto vc = vc_.lock();

  if (mediationView) {
    if (!firstAnimationCompleted_) mediationView->setAlpha(0);
    webViewContraints_ = addMediationBannerView(mediationView, withSize);
  } else {
    webView_ = addWKWebViewInViewWithNavigationDelegate(self());
    if (!firstAnimationCompleted_) webView_->setAlpha(0);
    webViewContraints_ = setupWKWebViewConstraintsFor(webView_, withSize, position_);
  }

  willMoveToParentViewController(vc.get());
  vc->addChildViewController(shared_from_this());
  viewAd_.lock()->addSubview(view());
  _resizeAndMoveView(withSize, position_);
  didMoveToParentViewController(vc.get());
  return true;
}

// Whether the host's controller is there and the container is inside it.
bool VeltoBannerViewControllerPrivate::findContainer() {
  const auto vc = vc_.lock();
  if (!vc) return false;
  const auto container = viewAd_.lock();
  if (!container) {
    viewAd_ = vc->view();
    return true;
  }
  return container->isDescendantOfView(*vc->view()) || container->nextViewControllerResponder() == vc.get();
}

void VeltoBannerViewControllerPrivate::_resetBannerView() {
  const auto subviews = view()->subviews();
  for (const auto& subview : subviews) subview->removeFromSuperview();
  if (const auto container = viewAd_.lock()) container->removeConstraints(viewContraints_);
  view()->removeConstraints(webViewContraints_);
  ad_.reset();
  mraidHandler_.reset();
  // They were among the subviews.
  secondaryMRAIDWebView_.reset();
  veltoCloseButton_.reset();
}

// --- the page

void VeltoBannerViewControllerPrivate::veltoAdLoaded(WKWebView& loaded) {
  if (&loaded == webView_.get()) _adLoaded(webView_);
}

void VeltoBannerViewControllerPrivate::_adLoaded(const std::shared_ptr<UIView>& view) {
  const auto ad = ad_;
  if (!firstAnimationCompleted_) firstAnimationCompleted_ = commitAnimationForAdView(view, animation_);
  notifyDidFinishLoad(delegate());
  const bool isWebView = dynamic_cast<WKWebView*>(view.get()) != nullptr;
  if (isWebView || !ad || !ad->adapter) return;
  Platform::current().notificationCenter().postNotification({constNotificationAdShowed, ad});
  ad->adapter->gadAdLoaded(ad, view);
}

void VeltoBannerViewControllerPrivate::veltoWKWebViewDidFinishNavigation(WKWebView& finished) {
  const auto webView = std::static_pointer_cast<WKWebView>(finished.shared_from_this());
  _setMRAIDAsReady(webView);
  startOMSDKSessionFor(webView, veltoCloseButton_);
  AdPublisherInfoSDKVelto::findPublisherInformations(
      webView, [weak = std::weak_ptr(self())](auto ordId, auto bannerId, auto publisherId) {
        const auto alive = weak.lock();
        if (alive && alive->ad_) alive->ad_->setOrdId(ordId, bannerId, publisherId);
      });
}

void VeltoBannerViewControllerPrivate::_setMRAIDAsReady(const std::shared_ptr<WKWebView>& webView) {
  if (!ad_ || ad_->sourceType != VeltoAdSourceMRAID || !mraidHandler_) return;
  activateAudioSession();
  mraidReady(webView, false, getFullScreenFrameFor(viewAd_.lock(), vc_.lock()).size, mraidHandler_);
}

void VeltoBannerViewControllerPrivate::veltoWKWebViewDidFailNavigation(const NSError& error) {
  removeBanner();
  notifyDidFail(delegate(), VeltoErrorAd::veltoErrorAdWithCode(VeltoErrorServer, error));
}

void VeltoBannerViewControllerPrivate::veltoDismissWKWebView(WKWebView&) {
  removeBanner();
}

// --- the person

void VeltoBannerViewControllerPrivate::_adDidPress() {
  // The delegate may remove or reload the banner; what was pressed is the ad of before.
  const auto alive = self();
  const auto ad = ad_;
  notifyDidPress(delegate());
  impressionOMSDK();
  if (!ad) return;
  VeltoTrackerManager::trackClickForBannerId(ad->bannerId, ad->publisherId, ad->ordId);
  ad->resetAdInformations();
}

void VeltoBannerViewControllerPrivate::mediationBannerDidClose() {
  notifyDidClose(delegate());
}

// --- removal

void VeltoBannerViewControllerPrivate::removeBanner() {
  Platform::current().mainQueue().post([alive = self()] {
    alive->_invalidateBanner();
    const auto& view = alive->view();
    if (!view->superview()) return;
    alive->willMoveToParentViewController(nullptr);
    view->removeFromSuperview();
    alive->removeFromParentViewController();
    alive->didMoveToParentViewController(nullptr);
  });
}

void VeltoBannerViewControllerPrivate::abandon() {
  abandoned_ = true;
  removeBanner();
}

void VeltoBannerViewControllerPrivate::_invalidateBanner() {
  closeVideo();
  _resetBannerView();
  settings_.reset();
  adapter_.reset();
  timerRefresh_.reset();
  finishOMSDKSession();
  // No web process stays without an ad.
  webView_.reset();
  dropPreparedWebContent();
}

// --- observations

void VeltoBannerViewControllerPrivate::_notificationAdMobAdapterGADBannerReady(
    const NSNotification& notification) {
  const auto adapter = notification.objectAs<VeltoAdMediationCoreAdapter>();
  if (!adapter || !adapter->rootViewControllerUser()) return;
  adapter_ = adapter;
  adapter->rootViewControllerUser()->setAdRootViewController(shared_from_this());
}

void VeltoBannerViewControllerPrivate::_notificationUICurrentOrientation(const NSNotification& notification) {
  if (const auto* orientation = std::get_if<int64_t>(&notification.object))
    originalOrientation_ = *orientation;
}

void VeltoBannerViewControllerPrivate::_restoreOriginalOrientation() {
  if (!originalOrientation_ || !Platform::currentOrNull()) return;
  setOrientation(*originalOrientation_, false);
  originalOrientation_.reset();
}

void VeltoBannerViewControllerPrivate::observeValueForKeyPath(const std::string& keyPath, float newValue,
                                                              const void* context) {
  if (context != &audioContext_ || keyPath != VeltoUtilities::keypathVolumeObserver) return;
  audioVolumeChange(newValue, activeWebView());
}

void VeltoBannerViewControllerPrivate::viewWillAppear(bool) {
  mraidIsViewable(true, activeWebView(), mraidHandler_);
}
void VeltoBannerViewControllerPrivate::viewWillDisappear(bool) {
  mraidIsViewable(false, activeWebView(), mraidHandler_);
}

void VeltoBannerViewControllerPrivate::viewWillTransitionToSize(
    CGSize size, UIViewControllerTransitionCoordinator& coordinator) {
  UIViewController::viewWillTransitionToSize(size, coordinator);
  const auto viewAd = viewAd_.lock();
  const auto vc = vc_.lock();
  if (mraidHandler_ && webView_ && viewAd && vc)
    mraidViewWillTransitionWithCoordinator(coordinator, viewAd, vc, webView_, mraidHandler_);
}

bool VeltoBannerViewControllerPrivate::shouldAutorotate() const {
  return mraidHandler_ ? mraidHandler_->orientationProperty().allowOrientationChange
                       : UIViewController::shouldAutorotate();
}

uint64_t VeltoBannerViewControllerPrivate::supportedInterfaceOrientations() const {
  return mraidHandler_ ? mraidHandler_->orientationMask : UIInterfaceOrientationMaskAll;
}

}  // namespace velto
