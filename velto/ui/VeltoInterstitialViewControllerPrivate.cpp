// The interstitial's life: load, ready, show, count down, close.
#include "velto/ui/VeltoInterstitialViewControllerPrivate.h"

#include "velto/platform/AnswerOnMain.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"
#include "velto/platform/UIApplication.h"
#include "velto/platform/UIDevice.h"
#include "velto/platform/ui/UIVisualEffectView.h"

#include <array>
#include <utility>

namespace velto {
namespace {

using namespace std::chrono_literals;
constexpr double tick = 0.1;  // seconds
constexpr auto beforeTheCountdown = 100ms;
// For another network to bring its screen, once it was told that its turn has come.
constexpr auto adapterPatience = 10s;

}  // namespace

std::shared_ptr<VeltoInterstitialViewControllerPrivate>
VeltoInterstitialViewControllerPrivate::initWithDelegate(
    const std::shared_ptr<VeltoInterstitialViewControllerDelegate>& delegate) {
  std::shared_ptr<VeltoInterstitialViewControllerPrivate> made(new VeltoInterstitialViewControllerPrivate);
  made->delegate_ = delegate;
  made->_addBlurEffect();
  made->begin(delegate);
  auto& center = Platform::current().notificationCenter();
  made->adapterReadyObserver_ =
      center.addObserver(constNotificationAdMobAdapterGADInterstitialReady,
                         [self = made.get()](const NSNotification& notification) {
                           self->_notificationAdMobAdapterGADInterstitialReady(notification);
                         });
  made->adapterErrorObserver_ =
      center.addObserver(constNotificationAdMobAdapterGADInterstitialError,
                         [self = made.get()](const NSNotification& notification) {
                           self->_notificationAdMobAdapterGADInterstitialError(notification);
                         });
  return made;
}

VeltoInterstitialViewControllerPrivate::~VeltoInterstitialViewControllerPrivate() {
  adapterReadyObserver_.cancel();
  adapterErrorObserver_.cancel();
  _invalidateBanner(Why::ControllerGone);
}

void VeltoInterstitialViewControllerPrivate::abandon() {
  if (std::exchange(abandoned_, true)) return;
  delegate_.reset();
  if (shown_) shown_->endLoad(Why::ControllerGone);
  placement().endAll(Why::ControllerGone);
  Platform::current().mainQueue().post([alive = self()] {
    alive->waitingAd_.reset();
    alive->dismissInterstitialViewController(false, Why::ControllerGone);
  });
}

// The presentation ends by itself. An ad that is on its way out has its views here still.
void VeltoInterstitialViewControllerPrivate::takeOff(Why why) {
  delegate_.reset();
  waitingAd_.reset();
  showing_ = false;
  _invalidateBanner(why);
  for (const auto& subview : std::vector(view()->subviews())) subview->removeFromSuperview();
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
  if (abandoned_) return;
  settings_ = settings;
  fetchBannerDataFor(VeltoAdTypeInterstitial, settings, VeltoBannerSizeInterstitial, delegate(), true);
  preparedPage().prepare(webView(), WebContentUse::Later);  // up by the time of show
}

void VeltoInterstitialViewControllerPrivate::fetchBannerSuccess(const std::shared_ptr<VeltoAd>& ad) {
  if (!ad || !takesNow(ad)) return;
  becomeReady(ad, true);
}

void VeltoInterstitialViewControllerPrivate::presentMediationBanner(const std::shared_ptr<VeltoAd>& ad) {
  if (!takesNow(ad)) return;
  preparedPage().drop();
  becomeReady(ad, false);
}

// What is on the screen stays there: an ad that comes meanwhile has its turn afterwards.
bool VeltoInterstitialViewControllerPrivate::takesNow(const std::shared_ptr<VeltoAd>& ad) {
  if (abandoned_) return false;
  if (!isOnScreen()) return true;
  waitingAd_ = ad;
  const auto earlier = std::exchange(waitingLoad_, LoadScope::current());
  if (earlier) earlier->end(Why::NeverShown);
  return false;
}

void VeltoInterstitialViewControllerPrivate::takeWaitingAd() {
  if (isOnScreen()) return;
  const auto ad = std::exchange(waitingAd_, nullptr);
  const LoadScope scope(std::exchange(waitingLoad_, nullptr));
  if (ad) ad->sourceType == VeltoAdSourceMediation ? presentMediationBanner(ad) : fetchBannerSuccess(ad);
}

void VeltoInterstitialViewControllerPrivate::becomeReady(const std::shared_ptr<VeltoAd>& ad,
                                                         bool withWebView) {
  isReady_ = false;
  const auto replaced =
      letGo(Why::LoadedAnew);  // one that was ready and never shown; its process may be taken over
  if (replaced) _removeAllWebViews(replaced);
  timerClose_.reset();
  startAudioVolumeObserverForContext(&audioContext_);
  timerValue_ = ad->timer ? std::optional(static_cast<float>(*ad->timer)) : std::nullopt;
  shown_ = VeltoShownAd::shownBy(*this, ad);
  shown_->takeHandler();
  _addBannerInView(withWebView, ad->size);
  if (!withWebView) shown_->takeAdapter();
  isReady_ = true;  // not before: who observes what was posted meanwhile may ask for it to be shown
  const auto alive = self();
  note(VeltoTimelineKind::Ready);
  notifyDidFinishLoad(delegate());
  if (autoShow_) showOver({}, VeltoAskedBy::AutoShow);
}

void VeltoInterstitialViewControllerPrivate::_addBannerInView(bool withWebView, CGSize size) {
  if (withWebView) webViewContraints_ = setupWKWebViewConstraintsFor(shown_->makeWebView(), size);
  _addInterstitialCloseButtonWithTimer(timerValue_);
}

void VeltoInterstitialViewControllerPrivate::_addInterstitialCloseButtonWithTimer(
    std::optional<double> timer) {
  shown_->setVeltoCloseButton(addCloseButtonInView(
      view(), VeltoCloseButtonUIConfiguration::defaultForInterstitial(),
      [own = this] { own->_tapCloseButton(); }, timer));
}

// Whatever the page makes of its button, a person must be able to leave: unless another one has come by then,
// the screen's own comes back.
void VeltoInterstitialViewControllerPrivate::closeButtonRemoved() {
  shown_->after(0ms, [this] {
    if (veltoCloseButton()) return;
    _addInterstitialCloseButtonWithTimer(timerValue_);
    addFriendlyObstructionOMSDKFor(veltoCloseButton());
  });
}

// --- show

void VeltoInterstitialViewControllerPrivate::showOver(const std::weak_ptr<UIViewController>& over,
                                                      VeltoAskedBy by) {
  if (!isReady_ || abandoned_ || isOnScreen()) return;
  over_ = over;
  note(VeltoTimelineKind::ShowAsked, by);
  if (ad()->sourceType == VeltoAdSourceMediation) {
    showing_ = true;
    startOMSDKSessionForNativeWithFriendlyObstructionView(nullptr);
    const auto shown = shown_;
    shown->tellShown();
    if (shown == shown_) _adLoaded();  // an adapter that hears of it may give up
    return tellState();
  }
  if (!ad()->html) {
    if (shown_->record()) shown_->record()->showFailed(Why::AdEmpty);
    return;
  }
  showing_ = true;
  shown_->load();
  tellState();
}

std::optional<VeltoErrorAd> VeltoInterstitialViewControllerPrivate::show(
    const std::shared_ptr<UIViewController>& over) {
  const auto refused = [](Why why, const char* text) {
    return VeltoErrorAd::because(why, NSError{constVeltoBundleIdentifier, VeltoErrorDeveloper, text});
  };
  if (isOnScreen()) return refused(Why::PresentedAlready, "the interstitial is on the screen already");
  if (!isReady_ || abandoned_) return refused(Why::NothingReady, "no interstitial is ready");
  if (!over || !over->view()->isInWindow())
    return refused(Why::WindowNotOnScreen, "its window is not on the screen");
  if (!over->canPresent()) return refused(Why::WindowBusy, "its window shows another screen");
  if (ad()->sourceType != VeltoAdSourceMediation && !ad()->html)
    return refused(Why::AdEmpty, "the ad is empty");
  showOver(over);
  return std::nullopt;
}

VeltoInterstitialState VeltoInterstitialViewControllerPrivate::state() const {
  if (isOnScreen()) return VeltoInterstitialStatePresented;
  if (isReady_) return VeltoInterstitialStateReady;
  return isFetching() ? VeltoInterstitialStateLoading : VeltoInterstitialStateEmpty;
}

const char* VeltoInterstitialViewControllerPrivate::stateName() const {
  constexpr std::array names{"empty", "loading", "ready", "presented"};
  return names.at(static_cast<size_t>(state()));
}

void VeltoInterstitialViewControllerPrivate::_adLoaded() {
  if (!_presentBanner()) failed(Why::HostGone);
}

bool VeltoInterstitialViewControllerPrivate::_presentBanner() {
  auto vc = std::exchange(over_, {}).lock();
  if (!vc && vc_.expired()) vc_ = getUserViewControllerForDelegate(delegate());
  if (!vc) vc = vc_.lock();
  if (!vc) return false;
  if (!animator_) animator_ = VeltoUIAnimatedTransitioning::animatorForAnimation(animation_);
  prepareAnimationForAdView(webView(), animation_);
  _updateInterfaceOrientation();
  setTransitioningDelegate(std::shared_ptr<UIViewControllerTransitioningDelegate>(self(), this));
  setModalPresentationStyle(UIModalPresentationCustom);
  vc->presentViewController(self(), true, [weak = std::weak_ptr(self()), ad = std::weak_ptr(shown_)] {
    const auto alive = weak.lock();
    if (alive && !ad.expired() && alive->shown_ == ad.lock()) alive->presented();
  });
  return true;
}

void VeltoInterstitialViewControllerPrivate::presented() {
  if (!view()->isInWindow()) {
    // It stays, and is seen when the window comes back: then it must be possible to close it.
    if (presentingViewController()) {
      shown_->isInPlace();
      startCounterSoon();
    }
    return failed(Why::PresentationRefused);
  }
  showing_ = false;
  note(VeltoTimelineKind::Appeared);
  shown_->isInPlace();
  // Also below another network's screen: whatever that does, a person can leave when the time is over.
  startCounterSoon();
  const auto alive = self();
  const auto shown = ad();
  if (shown->sourceType == VeltoAdSourceMediation)
    shown_->after(adapterPatience, [this] { leaveUnlessAdapterPresents(); });
  const auto adapter = shown_->adapter();
  if (!adapter) return notifyDidAppear(delegate());
  if (auto* user = adapter->rootViewControllerUser()) user->setAdRootViewController(self());
  if (ad() != shown) return;  // which has closed it at once
  notifyDidAppear(delegate());
  if (ad() == shown && !abandoned_) adapter->gadAdLoaded(shown, nullptr);
}

void VeltoInterstitialViewControllerPrivate::startCounterSoon() {
  shown_->after(beforeTheCountdown, [this] { _startCounterTimer(); });
}

void VeltoInterstitialViewControllerPrivate::failed(Why why) {
  showing_ = false;
  const auto alive = self();
  if (shown_ && shown_->record()) shown_->record()->showFailed(why);
  notifyDidFail(delegate(), VeltoErrorAd::because(why));
  takeWaitingAd();
}

void VeltoInterstitialViewControllerPrivate::_updateInterfaceOrientation() {
  switch (Platform::current().device().orientation()) {
    case UIDeviceOrientationPortrait:
      interfaceOrientationMask_ = UIInterfaceOrientationMaskPortrait;
      break;
    case UIDeviceOrientationLandscapeLeft:  // the interface turns against the device
      interfaceOrientationMask_ = UIInterfaceOrientationMaskLandscapeRight;
      break;
    case UIDeviceOrientationLandscapeRight:
      interfaceOrientationMask_ = UIInterfaceOrientationMaskLandscapeLeft;
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
  commitAnimationForAdView(webView(), animation_);
  if (!timerValue_ || timerClose_) return;
  timerClose_ = NSTimer::scheduledTimerWithTimeInterval(tick, [weak = std::weak_ptr(self())] {
    if (const auto alive = weak.lock()) alive->_updateCounterTimer();
  });
}

void VeltoInterstitialViewControllerPrivate::_updateCounterTimer() {
  if (!timerValue_ || !presentingViewController()) return timerClose_.reset();
  *timerValue_ += -0.1F;
  if (*timerValue_ <= 0) timerClose_.reset();
  if (const auto button = veltoCloseButton()) button->setTimer(*timerValue_);
}

// --- the page

void VeltoInterstitialViewControllerPrivate::pageFailed(const NSError& error) {
  notifyDidFail(delegate(), endByPage(error));
}

void VeltoInterstitialViewControllerPrivate::_expandOrResizeMainWebView(int64_t action, CGSize size,
                                                                        CGPoint) {
  const auto page = webView();
  if (!page) return;
  view()->removeConstraints(webViewContraints_);
  if (action == Expand)
    size = {};
  else if (action == CloseExpand || action == CloseResize)
    size = ad() ? ad()->size : CGSize{};
  webViewContraints_ = setupWKWebViewConstraintsFor(page, size);
}

std::shared_ptr<WKWebView> VeltoInterstitialViewControllerPrivate::_initSecondMRAIDWebView() {
  auto second = addWKWebViewInViewWithNavigationDelegate(shown_);
  setupWKWebViewConstraintsFor(second, CGSize{});
  return second;
}

// --- close

// Also with its window, which asks nobody.
void VeltoInterstitialViewControllerPrivate::viewWillDisappear(bool animated) {
  VeltoAdViewController::viewWillDisappear(animated);
  note(VeltoTimelineKind::Disappeared);
  goneSoon();
}

// In the next turn it is known whether it has.
void VeltoInterstitialViewControllerPrivate::goneSoon() {
  answerOnMain(std::function<void()>([weak = std::weak_ptr(self())] {
    const auto alive = weak.lock();
    if (!alive) return;
    alive->tellState();
    alive->takeWaitingAd();
  }));
}

bool VeltoInterstitialViewControllerPrivate::accessibilityPerformEscape() {
  const auto button = veltoCloseButton();
  if (button) button->sendTouchUpInside();
  return button || dismissing_;
}

void VeltoInterstitialViewControllerPrivate::dismissInterstitialViewController(bool animated, Why why) {
  if (dismissing_) return;
  const auto alive = self();
  const auto ended = _invalidateBanner(why);
  showing_ = false;
  if (!presentingViewController()) {
    _removeAllWebViews(ended);
    tellState();
    return takeWaitingAd();
  }
  dismissing_ = true;
  notifyDidClose(delegate());
  dismissViewControllerAnimated(animated, [alive, ended] {
    alive->dismissing_ = false;
    alive->_removeAllWebViews(ended);
    alive->tellState();
    alive->notifyDidDisappear(alive->delegate());
    alive->takeWaitingAd();
  });
}

std::shared_ptr<VeltoShownAd> VeltoInterstitialViewControllerPrivate::_invalidateBanner(Why why) {
  closeVideo();
  isReady_ = false;
  timerClose_.reset();
  finishOMSDKSession();
  if (!isFetching()) preparedPage().drop();  // no web process stays without an ad
  return letGo(why);
}

void VeltoInterstitialViewControllerPrivate::_removeAllWebViews(const std::shared_ptr<VeltoShownAd>& ended) {
  view()->removeConstraints(webViewContraints_);
  webViewContraints_.clear();
  if (ended) ended->removeViews();
}

}  // namespace velto
