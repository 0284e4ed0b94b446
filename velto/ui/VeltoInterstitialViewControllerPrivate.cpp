// The interstitial's life: load, ready, show, count down, press, close.
#include "velto/ui/VeltoInterstitialViewControllerPrivate.h"

#include "velto/ads/AdPublisherInfoSDKVelto.h"
#include "velto/ads/VeltoAdManager.h"
#include "velto/core/VeltoUtilities.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"
#include "velto/platform/UIApplication.h"
#include "velto/platform/UIDevice.h"
#include "velto/platform/ui/UIVisualEffectView.h"
#include "velto/tracking/VeltoTrackerManager.h"

#include <utility>

namespace velto {
namespace {

using namespace std::chrono_literals;
constexpr double tick = 0.1;  // seconds

}  // namespace

std::shared_ptr<VeltoInterstitialViewControllerPrivate>
VeltoInterstitialViewControllerPrivate::initWithDelegate(
    const std::shared_ptr<VeltoInterstitialViewControllerDelegate>& delegate) {
  std::shared_ptr<VeltoInterstitialViewControllerPrivate> made(new VeltoInterstitialViewControllerPrivate);
  auto* self = made.get();
  made->delegate_ = delegate;
  made->_addBlurEffect();
  made->vc_ = made->getUserViewControllerForDelegate(delegate);
  made->addTapGestureRecognizerInView([self] { self->_adDidPress(); });
  auto& center = Platform::current().notificationCenter();
  made->adapterReadyObserver_ = center.addObserver(
      constNotificationAdMobAdapterGADInterstitialReady, [self](const NSNotification& notification) {
        self->_notificationAdMobAdapterGADInterstitialReady(notification);
      });
  made->adapterErrorObserver_ = center.addObserver(
      constNotificationAdMobAdapterGADInterstitialError,
      [self](const NSNotification&) { self->_notificationAdMobAdapterGADInterstitialError(); });
  made->orientationObserver_ = center.addObserver(
      constNotificationUICurrentOrientation,
      [self](const NSNotification& notification) { self->_notificationUICurrentOrientation(notification); });
  return made;
}

VeltoInterstitialViewControllerPrivate::~VeltoInterstitialViewControllerPrivate() {
  stopAudioVolumeObserverForContext(&audioContext_);
  adapterReadyObserver_.cancel();
  adapterErrorObserver_.cancel();
  orientationObserver_.cancel();
  _invalidateBanner();
  _restoreOriginalOrientation();
}

std::shared_ptr<VeltoInterstitialViewControllerPrivate> VeltoInterstitialViewControllerPrivate::self() {
  return std::static_pointer_cast<VeltoInterstitialViewControllerPrivate>(shared_from_this());
}

void VeltoInterstitialViewControllerPrivate::abandon() {
  abandoned_ = true;
  delegate_.reset();
  Platform::current().mainQueue().post([alive = self()] {
    alive->waitingAd_.reset();
    alive->dismissInterstitialViewController(false);
  });
}

void VeltoInterstitialViewControllerPrivate::_addBlurEffect() {
  if (Platform::current().application().isReduceTransparencyEnabled())
    return view()->setBackgroundColor(UIColor::colorWithWhite(0, 0.8));
  view()->setBackgroundColor(UIColor::colorWithWhite(0, 0.1));
  const auto blur = UIVisualEffectView::initWithBlurEffect(UIBlurEffectStyleDark);
  blur->setFrame(view()->bounds());
  blur->setAutoresizingMask(UIViewAutoresizingFlexibleWidth | UIViewAutoresizingFlexibleHeight);
  view()->addSubview(blur);
}

// --- load

void VeltoInterstitialViewControllerPrivate::fetch(const std::optional<VeltoSettings>& settings) {
  fetchBannerDataFor(VeltoAdTypeInterstitial, settings, VeltoBannerSizeInterstitial, delegate(), true);
  prepareWebContent(webView_);  // while the request is on its way, and up by the time of show
}

void VeltoInterstitialViewControllerPrivate::fetchBannerSuccess(const std::shared_ptr<VeltoAd>& ad) {
  if (!ad || !takesNow(ad)) return;
  becomeReady(ad, true);
}

void VeltoInterstitialViewControllerPrivate::presentMediationBanner(const std::shared_ptr<VeltoAd>& ad) {
  if (!takesNow(ad)) return;
  dropPreparedWebContent();
  becomeReady(ad, false);
}

// What is on the screen stays there: an ad that comes meanwhile has its turn afterwards.
bool VeltoInterstitialViewControllerPrivate::takesNow(const std::shared_ptr<VeltoAd>& ad) {
  if (abandoned_) return false;
  if (!isOnScreen()) return true;
  waitingAd_ = ad;
  return false;
}

void VeltoInterstitialViewControllerPrivate::takeWaitingAd() {
  if (isOnScreen()) return;
  const auto ad = std::exchange(waitingAd_, nullptr);
  if (ad) ad->sourceType == VeltoAdSourceMediation ? presentMediationBanner(ad) : fetchBannerSuccess(ad);
}

void VeltoInterstitialViewControllerPrivate::becomeReady(const std::shared_ptr<VeltoAd>& ad,
                                                         bool withWebView) {
  _removeAllWebViews();  // of an ad that was ready and never shown
  mraidHandler_.reset();
  adapter_.reset();
  timerClose_.reset();
  startAudioVolumeObserverForContext(&audioContext_);
  isReady_ = true;
  timerValue_ = ad->timer ? std::optional(static_cast<float>(*ad->timer)) : std::nullopt;
  if (withWebView) {
    ad_ = ad;
    if (ad->sourceType == VeltoAdSourceMRAID) {
      mraidHandler_ = VeltoMRAIDHandler::handler();
      ad->mraidHandler = mraidHandler_;
    }
    _addBannerInView(true, ad->size);
  } else {
    _addBannerInView(false, ad->size);
    ad_ = ad;
    adapter_ = ad->adapter;
    if (auto* core = dynamic_cast<VeltoAdMediationCoreAdapter*>(adapter_.get())) core->setDelegate(self());
  }
  const auto alive = self();
  notifyDidFinishLoad(delegate());
  if (autoShow_) show();
}

void VeltoInterstitialViewControllerPrivate::_addBannerInView(bool withWebView, CGSize size) {
  if (withWebView) {
    webView_ = addWKWebViewInViewWithNavigationDelegate(self());
    webViewContraints_ = setupWKWebViewConstraintsFor(webView_, size);
  }
  _addInterstitialCloseButtonWithTimer(timerValue_);
}

void VeltoInterstitialViewControllerPrivate::_addInterstitialCloseButtonWithTimer(
    std::optional<double> timer) {
  removeCloseButton();
  veltoCloseButton_ = addCloseButtonInView(
      view(), VeltoCloseButtonUIConfiguration::defaultForInterstitial(),
      [own = this] { own->_tapCloseButton(); }, timer);
}

void VeltoInterstitialViewControllerPrivate::removeCloseButton() {
  if (veltoCloseButton_) veltoCloseButton_->removeFromSuperview();
  veltoCloseButton_.reset();
}

// --- show

void VeltoInterstitialViewControllerPrivate::show() {
  if (!isReady_ || isOnScreen()) return;
  if (ad_->sourceType == VeltoAdSourceMediation) {
    showing_ = true;
    startOMSDKSessionForNativeWithFriendlyObstructionView(nullptr);
    return _adLoaded();
  }
  if (!ad_->html) return;
  showing_ = true;
  loadBannerDataIn(webView_, ad_);
}

void VeltoInterstitialViewControllerPrivate::veltoBannerInjected(WKWebView& injected) {
  if (&injected == webView_.get()) _adLoaded();
}

void VeltoInterstitialViewControllerPrivate::_adLoaded() {
  if (!_presentBanner()) failed();
}

bool VeltoInterstitialViewControllerPrivate::_presentBanner() {
  if (vc_.expired()) vc_ = getUserViewControllerForDelegate(delegate());
  const auto vc = vc_.lock();
  if (!vc) return false;
  if (!animator_) animator_ = VeltoUIAnimatedTransitioning::animatorForAnimation(animation_);
  prepareAnimationForAdView(webView_, animation_);
  _updateInterfaceOrientation();
  setTransitioningDelegate(std::shared_ptr<UIViewControllerTransitioningDelegate>(self(), this));
  setModalPresentationStyle(UIModalPresentationCustom);
  vc->presentViewController(self(), true, [weak = std::weak_ptr(self())] {
    if (const auto alive = weak.lock()) alive->presented();
  });
  return true;
}

void VeltoInterstitialViewControllerPrivate::presented() {
  if (!isReady_) return;  // closed before it was there
  if (!view()->isInWindow()) {
    // It stays, and is seen when the window comes back: then it must be possible to close it.
    if (presentingViewController()) afterATenth([](auto& own) { own._startCounterTimer(); });
    return failed();
  }
  showing_ = false;
  const auto ad = ad_;
  if (const auto adapter = adapter_) {
    if (ad) Platform::current().notificationCenter().postNotification({constNotificationAdShowed, ad});
    if (auto* user = adapter->rootViewControllerUser()) user->setAdRootViewController(self());
    notifyDidAppear(delegate());
    return adapter->gadAdLoaded(ad, nullptr);
  }
  notifyDidAppear(delegate());
  afterATenth([](auto& own) { own._startCounterTimer(); });
}

void VeltoInterstitialViewControllerPrivate::failed() {
  showing_ = false;
  const auto alive = self();
  notifyDidFail(delegate(), VeltoErrorAd::veltoErrorAdWithCode(VeltoErrorDeveloper));
  takeWaitingAd();
}

void VeltoInterstitialViewControllerPrivate::_updateInterfaceOrientation() {
  switch (Platform::current().device().orientation()) {
    case 1:
      interfaceOrientationMask_ = 2;
      break;
    case 3:
      interfaceOrientationMask_ = 8;
      break;
    case 4:
      interfaceOrientationMask_ = 16;
      break;
    default:
      break;  // lying flat, or unknown: as before
  }
}

std::shared_ptr<UIViewControllerAnimatedTransitioning>
VeltoInterstitialViewControllerPrivate::animationControllerForPresentedController(UIViewController&,
                                                                                  UIViewController&,
                                                                                  UIViewController&) {
  if (animator_) animator_->operation = VeltoUIAnimatedTransitioning::Present;
  return animator_;
}

std::shared_ptr<UIViewControllerAnimatedTransitioning>
VeltoInterstitialViewControllerPrivate::animationControllerForDismissedController(UIViewController&) {
  if (animator_) animator_->operation = VeltoUIAnimatedTransitioning::Dismiss;
  return animator_;
}

// --- the countdown

void VeltoInterstitialViewControllerPrivate::_startCounterTimer() {
  if (!isReady_ || !presentingViewController()) return;  // closed meanwhile
  commitAnimationForAdView(webView_, animation_);
  if (!timerValue_ || timerClose_) return;
  timerClose_ = NSTimer::scheduledTimerWithTimeInterval(tick, [weak = std::weak_ptr(self())] {
    if (const auto alive = weak.lock()) alive->_updateCounterTimer();
  });
}

void VeltoInterstitialViewControllerPrivate::_updateCounterTimer() {
  if (!timerValue_ || !presentingViewController()) return timerClose_.reset();
  *timerValue_ += -0.1F;
  if (*timerValue_ <= 0) timerClose_.reset();
  if (veltoCloseButton_) veltoCloseButton_->setTimer(*timerValue_);
}

// --- the page

void VeltoInterstitialViewControllerPrivate::veltoWKWebViewDidFinishNavigation(WKWebView& finished) {
  const auto webView = std::static_pointer_cast<WKWebView>(finished.shared_from_this());
  _setMRAIDAsReady(webView);
  startOMSDKSessionFor(webView, veltoCloseButton_);
  AdPublisherInfoSDKVelto::findPublisherInformations(
      webView, [weak = std::weak_ptr(self())](auto ordId, auto bannerId, auto publisherId) {
        const auto alive = weak.lock();
        if (alive && alive->ad_) alive->ad_->setOrdId(ordId, bannerId, publisherId);
      });
}

void VeltoInterstitialViewControllerPrivate::_setMRAIDAsReady(const std::shared_ptr<WKWebView>& webView) {
  if (!ad_ || ad_->sourceType != VeltoAdSourceMRAID || !mraidHandler_) return;
  activateAudioSession();
  mraidReady(webView, webView == secondaryMRAIDWebView_, veltoMRAIDGetFullscreenFrame().size, mraidHandler_);
}

// A page that was taken off lives on for a moment, and has no say any more.
void VeltoInterstitialViewControllerPrivate::veltoDismissWKWebView(WKWebView& webView) {
  if (&webView == webView_.get() || &webView == secondaryMRAIDWebView_.get())
    dismissInterstitialViewController(true);
}

void VeltoInterstitialViewControllerPrivate::veltoWKWebViewDidFailNavigation(const NSError& error) {
  notifyDidFail(delegate(), VeltoErrorAd::veltoErrorAdWithCode(VeltoErrorServer, error));
}

// --- the person

void VeltoInterstitialViewControllerPrivate::_adDidPress() {
  // The delegate may load another ad; what was pressed is the one of before.
  const auto alive = self();
  const auto ad = ad_;
  notifyDidPress(delegate());
  impressionOMSDK();
  if (!ad) return;
  VeltoTrackerManager::trackClickForBannerId(ad->bannerId, ad->publisherId, ad->ordId);
  ad->resetAdInformations();
}

bool VeltoInterstitialViewControllerPrivate::accessibilityPerformEscape() {
  const auto button = veltoCloseButton_;
  if (!button) return false;
  button->sendTouchUpInside();
  return true;
}

// --- close

void VeltoInterstitialViewControllerPrivate::dismissInterstitialViewController(bool animated) {
  if (dismissing_) return;
  const auto alive = self();
  _invalidateBanner();
  showing_ = false;
  if (!presentingViewController()) {
    _removeAllWebViews();
    return takeWaitingAd();
  }
  dismissing_ = true;
  notifyDidClose(delegate());
  dismissViewControllerAnimated(animated, [alive] {
    alive->dismissing_ = false;
    alive->_removeAllWebViews();
    alive->notifyDidDisappear(alive->delegate());
    alive->takeWaitingAd();
  });
}

void VeltoInterstitialViewControllerPrivate::_invalidateBanner() {
  closeVideo();
  isReady_ = false;
  ad_.reset();
  mraidHandler_.reset();
  adapter_.reset();
  timerClose_.reset();
  finishOMSDKSession();
}

void VeltoInterstitialViewControllerPrivate::_removeAllWebViews() {
  view()->removeConstraints(webViewContraints_);
  webViewContraints_.clear();
  for (auto* webView : {&webView_, &secondaryMRAIDWebView_}) {
    if (*webView) {
      (*webView)->removeFromSuperview();
      (*webView)->setNavigationDelegate({});
    }
    webView->reset();
  }
}

// --- observations

void VeltoInterstitialViewControllerPrivate::_notificationAdMobAdapterGADInterstitialReady(
    const NSNotification& notification) {
  const auto adapter = notification.objectAs<VeltoAdMediationCoreAdapter>();
  if (waitingAd_ && waitingAd_->adapter == adapter)
    return;  // its ad has its turn after the one on the screen
  if (adapter && adapter->rootViewControllerUser()) adapter_ = adapter;
}

void VeltoInterstitialViewControllerPrivate::_notificationAdMobAdapterGADInterstitialError() {
  if (!adapter_) return;
  adapter_.reset();
  _startCounterTimer();  // nothing of the network's comes over this screen, which must be possible to close
}

void VeltoInterstitialViewControllerPrivate::_notificationUICurrentOrientation(
    const NSNotification& notification) {
  if (const auto* orientation = std::get_if<int64_t>(&notification.object))
    originalOrientation_ = *orientation;
}

void VeltoInterstitialViewControllerPrivate::_restoreOriginalOrientation() {
  if (!originalOrientation_ || !Platform::currentOrNull()) return;
  setOrientation(*originalOrientation_, false);
  originalOrientation_.reset();
}

void VeltoInterstitialViewControllerPrivate::observeValueForKeyPath(const std::string& keyPath,
                                                                    float newValue, const void* context) {
  if (context != &audioContext_ || keyPath != VeltoUtilities::keypathVolumeObserver) return;
  audioVolumeChange(newValue, activeWebView());
}

void VeltoInterstitialViewControllerPrivate::viewWillAppear(bool) {
  mraidIsViewable(true, activeWebView(), mraidHandler_);
}
void VeltoInterstitialViewControllerPrivate::viewWillDisappear(bool) {
  mraidIsViewable(false, activeWebView(), mraidHandler_);
}

void VeltoInterstitialViewControllerPrivate::viewWillTransitionToSize(
    CGSize size, UIViewControllerTransitionCoordinator& coordinator) {
  UIViewController::viewWillTransitionToSize(size, coordinator);
  if (mraidHandler_ && webView_)
    mraidViewWillTransitionWithCoordinator(coordinator, view(), self(), webView_, mraidHandler_);
}

bool VeltoInterstitialViewControllerPrivate::shouldAutorotate() const {
  return mraidHandler_ ? mraidHandler_->orientationProperty().allowOrientationChange
                       : UIViewController::shouldAutorotate();
}

uint64_t VeltoInterstitialViewControllerPrivate::supportedInterfaceOrientations() const {
  return mraidHandler_ ? mraidHandler_->orientationMask : interfaceOrientationMask_;
}

void VeltoInterstitialViewControllerPrivate::afterATenth(
    std::function<void(VeltoInterstitialViewControllerPrivate&)> step) {
  Platform::current().mainQueue().postAfter(100ms, [weak = std::weak_ptr(self()), step = std::move(step)] {
    if (const auto alive = weak.lock()) step(*alive);
  });
}

}  // namespace velto
