// The banner's life: load, show, refresh, remove.
#include "velto/ui/VeltoBannerViewControllerPrivate.h"

#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"

#include <algorithm>
#include <array>

namespace velto {
namespace {

constexpr int mostProcessesLost = 3;  // in a row, until refreshes become rarer
constexpr int mostDoublings = 3;      // of the interval

}  // namespace

std::shared_ptr<VeltoBannerViewControllerPrivate> VeltoBannerViewControllerPrivate::initWithDelegate(
    const std::shared_ptr<VeltoBannerViewControllerDelegate>& delegate, VeltoBannerSize andSize,
    int64_t andPosition, CGPoint andLocation, const std::shared_ptr<UIView>& andView) {
  std::shared_ptr<VeltoBannerViewControllerPrivate> made(new VeltoBannerViewControllerPrivate);
  made->size_ = andSize;
  made->position_ = andPosition;
  made->delegate_ = delegate;
  made->location_ = andLocation;
  made->viewAd_ = andView;
  made->viewAdIsGiven_ = andView != nullptr;
  made->view()->setBackgroundColor(UIColor::clearColor());
  made->view()->setTranslatesAutoresizingMaskIntoConstraints(false);
  made->begin(delegate);
  made->adapterReadyObserver_ = Platform::current().notificationCenter().addObserver(
      constNotificationAdMobAdapterGADBannerReady, [self = made.get()](const NSNotification& notification) {
        self->_notificationAdMobAdapterGADBannerReady(notification);
      });
  return made;
}

VeltoBannerViewControllerPrivate::~VeltoBannerViewControllerPrivate() {
  adapterReadyObserver_.cancel();
  _invalidateBanner(Why::ControllerGone);
}

std::shared_ptr<VeltoBannerViewControllerPrivate> VeltoBannerViewControllerPrivate::self() {
  return std::static_pointer_cast<VeltoBannerViewControllerPrivate>(shared_from_this());
}

// --- load

void VeltoBannerViewControllerPrivate::load(const VeltoSettings& settings) {
  settings_ = settings;
  load();
}

void VeltoBannerViewControllerPrivate::load() {
  processesLost_ = 0;
  loadedSinceRemoval_ = true;
  _loadAndNotifyFailure(true);
}

void VeltoBannerViewControllerPrivate::_loadAndNotifyFailure(bool notifyFailure) {
  if (abandoned_) return;
  _handleRefreshTimer();
  fetchBannerDataFor(VeltoAdTypeBanner, settings_, size_, delegate(), notifyFailure);
  // While the request is on its way.
  preparedPage().prepare(webView(), sharesProcess() ? WebContentUse::Together : WebContentUse::AtOnce);
}

void VeltoBannerViewControllerPrivate::_refreshAd() {
  if (loaded_) processesLost_ = 0;
  if (refreshPaused_) {
    refreshDue_ = true;
    return;
  }
  _loadAndNotifyFailure(false);
}

void VeltoBannerViewControllerPrivate::setRefreshPaused(bool paused) {
  refreshPaused_ = paused;
  if (!paused && refreshDue_) _refreshAd();
}

// A new ad takes the place of one that is seen without a moment in which nothing is.
VeltoBannerState VeltoBannerViewControllerPrivate::state() const {
  if (ad()) return loaded_ ? form_ : VeltoBannerStateLoading;
  return isFetching() ? VeltoBannerStateLoading : VeltoBannerStateEmpty;
}

const char* VeltoBannerViewControllerPrivate::stateName() const {
  constexpr std::array names{"empty", "loading", "shown", "expanded", "resized"};
  return names.at(static_cast<size_t>(state()));
}

CGSize VeltoBannerViewControllerPrivate::adSize() const {
  return ad() && loaded_ ? ad()->size : CGSize{};
}

// The interval counts from the start of each load, so every load begins by setting the timer anew.
void VeltoBannerViewControllerPrivate::_handleRefreshTimer() {
  timerRefresh_.reset();
  refreshDue_ = false;
  if (!autoRefresh_ || refreshTimeSeconds_ < 1) return;
  timerRefresh_ = NSTimer::scheduledTimerWithTimeInterval(_refreshInterval(), [weak = std::weak_ptr(self())] {
    if (const auto alive = weak.lock()) alive->_refreshAd();
  });
}

// Ads that take their processes along, one after the other, are asked for less and less often.
double VeltoBannerViewControllerPrivate::_refreshInterval() const {
  const int doublings = std::clamp(processesLost_ - mostProcessesLost + 1, 0, mostDoublings);
  return static_cast<double>(refreshTimeSeconds_) * (1 << doublings);
}

// --- show

void VeltoBannerViewControllerPrivate::fetchBannerSuccess(const std::shared_ptr<VeltoAd>& ad) {
  if (!ad) preparedPage().drop();                     // a view that stays empty needs no process
  if (!startShowing(ad, nullptr) || !shown_) return;  // with what was replaced others may have ended
  shown_->takeHandler();
  if (!firstAnimationCompleted_) prepareAnimationForAdView(webView(), animation_);
  shown_->load();
}

void VeltoBannerViewControllerPrivate::presentMediationBannerView(
    const std::shared_ptr<UIView>& mediationView, const std::shared_ptr<VeltoAd>& ad) {
  preparedPage().drop();
  if (!startShowing(ad, mediationView) || !shown_) return;
  shown_->takeAdapter();
  shown_->tellShown();
  // It may have announced itself before anybody could know whose ad it has.
  if (auto* user = ad->adapter->rootViewControllerUser()) user->setAdRootViewController(self());
  if (!firstAnimationCompleted_) prepareAnimationForAdView(mediationView, animation_);
  startOMSDKSessionForNativeWithFriendlyObstructionView(nullptr);
  note(VeltoTimelineKind::LoadFinished);
  _adLoaded(mediationView);
}

// In place of what was shown so far, whose view lives until the new one had the chance to take over its
// process.
bool VeltoBannerViewControllerPrivate::startShowing(const std::shared_ptr<VeltoAd>& ad,
                                                    const std::shared_ptr<UIView>& mediationView) {
  if (abandoned_) return false;
  startAudioVolumeObserverForContext(&audioContext_);
  const auto& load = LoadScope::current();
  const bool isRefresh = load && load->askedBy() == VeltoAskedBy::Refresh;
  const auto replaced =
      _resetBannerView(!ad ? Why::RefreshWithoutAd : (isRefresh ? Why::Refreshed : Why::LoadedAnew));
  shown_ = VeltoShownAd::shownBy(*this, ad);
  loaded_ = loaded_ && ad;
  form_ = VeltoBannerStateShown;
  const auto why = _addBanner(mediationView, ad ? ad->size : CGSize{});
  if (!why) return true;
  letGo(*why);
  preparedPage().drop();
  if (notifiesFailure()) notifyDidFail(delegate(), VeltoErrorAd::because(*why));
  return false;
}

std::optional<VeltoAdEndReason> VeltoBannerViewControllerPrivate::_addBanner(
    const std::shared_ptr<UIView>& mediationView, CGSize withSize) {
  if (const auto why = findContainer()) return why;
  const auto vc = vc_.lock();

  if (mediationView) {
    if (!firstAnimationCompleted_) mediationView->setAlpha(0);
    webViewContraints_ = addMediationBannerView(mediationView, withSize);
  } else {
    const auto& webView = shown_->makeWebView();
    if (!firstAnimationCompleted_) webView->setAlpha(0);
    webViewContraints_ = setupWKWebViewConstraintsFor(webView, withSize, position_);
  }

  willMoveToParentViewController(vc.get());
  vc->addChildViewController(shared_from_this());
  viewAd_.lock()->addSubview(view());
  _resizeAndMoveView(withSize, position_);
  didMoveToParentViewController(vc.get());
  return std::nullopt;
}

// The host's controller has to be there, and the container inside it.
std::optional<VeltoAdEndReason> VeltoBannerViewControllerPrivate::findContainer() {
  const auto vc = vc_.lock();
  if (!vc) return Why::HostGone;
  const auto container = viewAd_.lock();
  if (!container && viewAdIsGiven_) return Why::ContainerGone;  // and no other is the banner's to take
  if (!container) {
    viewAd_ = vc->view();
    return std::nullopt;
  }
  const bool isInside =
      container->isDescendantOfView(*vc->view()) || container->nextViewControllerResponder() == vc.get();
  return isInside ? std::nullopt : std::optional(Why::ContainerElsewhere);
}

std::shared_ptr<VeltoShownAd> VeltoBannerViewControllerPrivate::_resetBannerView(Why why) {
  const auto subviews = view()->subviews();
  for (const auto& subview : subviews) subview->removeFromSuperview();
  if (const auto container = viewAd_.lock()) container->removeConstraints(viewContraints_);
  view()->removeConstraints(webViewContraints_);
  return letGo(why);
}

void VeltoBannerViewControllerPrivate::_adLoaded(const std::shared_ptr<UIView>& view) {
  const auto alive = self();
  const auto loaded = ad();
  loaded_ = true;
  if (!firstAnimationCompleted_ && commitAnimationForAdView(view, animation_)) {
    firstAnimationCompleted_ = true;
    note(VeltoTimelineKind::Animated);
  }
  shown_->isInPlace();
  notifyDidFinishLoad(delegate());
  const bool isWebView = dynamic_cast<WKWebView*>(view.get()) != nullptr;
  if (!isWebView && loaded && loaded->adapter) loaded->adapter->gadAdLoaded(loaded, view);
}

// --- the end

void VeltoBannerViewControllerPrivate::pageFailed(const NSError& error) {
  const auto told = endByPage(error);
  if (error.isOfProcess() && timerRefresh_) {
    if (++processesLost_ >= mostProcessesLost && !refreshDue_) _handleRefreshTimer();
    _leaveEmpty(told.reason);
  } else {
    leave(told.reason);
  }
  notifyDidFail(delegate(), told);
}

void VeltoBannerViewControllerPrivate::adapterClosed() {
  note(VeltoTimelineKind::AdapterClosed);
  notifyDidClose(delegate());
}

// An ad that ends by itself leaves alone the one that comes in before its turn.
void VeltoBannerViewControllerPrivate::leave(Why why) {
  removeBecause(why, shown_);
}

void VeltoBannerViewControllerPrivate::removeBecause(Why why, const std::shared_ptr<VeltoShownAd>& only) {
  loadedSinceRemoval_ = false;
  if (abandoned_) return;
  Platform::current().mainQueue().post(
      [alive = self(), why, isOne = only != nullptr, one = std::weak_ptr(only)] {
        if (isOne && alive->shown_ && alive->shown_ != one.lock()) return;
        alive->takeOff(why);
        alive->tellState();
      });
}

void VeltoBannerViewControllerPrivate::replaceHeavyAd() {
  _leaveEmpty(Why::PageTooHeavy);
}

// The banner goes on, and so do its refreshes; until the next one it is empty.
void VeltoBannerViewControllerPrivate::_leaveEmpty(Why why) {
  closeVideo();
  _resetBannerView(why);
  loaded_ = false;
  finishOMSDKSession();
  tellState();
}

void VeltoBannerViewControllerPrivate::abandon() {
  if (shown_) shown_->endLoad(Why::ControllerGone);
  removeBecause(Why::ControllerGone);
  abandoned_ = true;
  placement().endAll(Why::ControllerGone);
}

void VeltoBannerViewControllerPrivate::takeOff(Why why) {
  _invalidateBanner(why);
  if (!view()->superview() && !parentViewController()) return;  // which outlives a container that went
  willMoveToParentViewController(nullptr);
  view()->removeFromSuperview();
  removeFromParentViewController();
  didMoveToParentViewController(nullptr);
}

void VeltoBannerViewControllerPrivate::_invalidateBanner(Why why) {
  closeVideo();
  _resetBannerView(why);
  loaded_ = false;
  if (!loadedSinceRemoval_ || abandoned_) {  // else an ad is on its way, and is to be refreshed
    settings_.reset();
    timerRefresh_.reset();
    refreshDue_ = false;
    preparedPage().drop();  // no web process stays without an ad
  }
  finishOMSDKSession();
}

// --- adapters

void VeltoBannerViewControllerPrivate::_notificationAdMobAdapterGADBannerReady(
    const NSNotification& notification) {
  const auto adapter = ownAdapterIn(notification);
  if (!adapter || !adapter->rootViewControllerUser()) return;
  adapter->rootViewControllerUser()->setAdRootViewController(shared_from_this());
}

}  // namespace velto
