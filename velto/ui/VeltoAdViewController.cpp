// The common part of the working controllers.
#include "velto/ui/VeltoAdViewController.h"

#include "velto/core/VeltoUtilities.h"
#include "velto/network/VeltoTaskManager.h"
#include "velto/platform/Platform.h"
#include "velto/platform/ViewSystem.h"
#include "velto/tracking/VeltoTrackerManager.h"

#include <utility>

namespace velto {
namespace {

VeltoAdEndReason whyPageFailed(const NSError& error) {
  switch (error.cause) {
    case NSErrorCause::Untrusted:
      return VeltoAdEndReason::PageUntrusted;
    case NSErrorCause::ProcessCrashed:
      return VeltoAdEndReason::PageProcessCrashed;
    case NSErrorCause::ProcessOutOfMemory:
      return VeltoAdEndReason::PageProcessOutOfMemory;
    case NSErrorCause::ProcessEnded:
      return VeltoAdEndReason::PageProcessEnded;
    case NSErrorCause::ProcessHung:
      return VeltoAdEndReason::PageProcessHung;
    case NSErrorCause::EngineUnavailable:
      return VeltoAdEndReason::EngineUnavailable;
    default:
      return VeltoAdEndReason::PageFailed;
  }
}

}  // namespace

VeltoAdViewController::~VeltoAdViewController() {
  stopAudioVolumeObserverForContext(&audioContext_);
  placement_->endAll(Why::ControllerGone);  // others may hold it still
}

void VeltoAdViewController::begin(const VeltoControllerDelegate& delegate) {
  vc_ = getUserViewControllerForDelegate(delegate);
  list({std::static_pointer_cast<VeltoAdViewController>(shared_from_this())});
  addTapGestureRecognizerInView([this] { _adDidPress(); });
  Platform::current().views().expectWebContent(VeltoTaskManager::connectAhead);
  auto& center = Platform::current().notificationCenter();
  orientationObserver_ =
      center.addObserver(constNotificationUICurrentOrientation, [this](const NSNotification& notification) {
        const auto* orientation = std::get_if<int64_t>(&notification.object);
        if (orientation && shown_) shown_->_notificationUICurrentOrientation(*orientation);
      });
  platformObserver_ = center.addObserver(notificationPlatformWillGo, [this](const NSNotification&) {
    const auto alive = shared_from_this();
    abandoned_ = true;
    takeOff(Why::PlatformGone);
    placement_->endAll(Why::PlatformGone);
    preparedPage_.drop();
  });
}

std::shared_ptr<VeltoCloseButton> VeltoAdViewController::veltoCloseButton() const {
  return shown_ ? shown_->veltoCloseButton() : nullptr;
}

std::shared_ptr<VeltoMRAIDHandler> VeltoAdViewController::veltoGetMRAIDHandler() const {
  return shown_ ? shown_->veltoGetMRAIDHandler() : nullptr;
}

std::shared_ptr<WKWebView> VeltoAdViewController::makeWebView(std::weak_ptr<WKNavigationDelegate> delegate) {
  return shown_->createWKWebViewInstance(std::move(delegate));
}

void VeltoAdViewController::fetchFailed() {
  if (!isFetching()) preparedPage_.drop();
}

std::shared_ptr<VeltoShownAd> VeltoAdViewController::letGo(Why why) {
  auto ended = std::exchange(shown_, nullptr);
  if (ended) ended->end(why);
  return ended;
}

VeltoErrorAd VeltoAdViewController::endByPage(const NSError& error) {
  auto made = VeltoErrorAd::because(whyPageFailed(error), error);
  if (shown_) shown_->endLoad(made.reason);
  return made;
}

std::shared_ptr<VeltoAdMediationCoreAdapter> VeltoAdViewController::ownAdapterIn(
    const NSNotification& notification) const {
  const auto adapter = notification.objectAs<VeltoAdMediationCoreAdapter>();
  if (!adapter) return nullptr;
  const bool isShown = ad() && ad()->adapter == adapter;
  return isShown || (isFetching() && !adapter->hasDelegate()) ? adapter : nullptr;
}

void VeltoAdViewController::tellState() {
  const auto state = stateNow();
  const auto size = adSizeNow();
  if (state == toldState_ && size == toldSize_) return;
  toldState_ = state;
  toldSize_ = size;
  const auto alive = shared_from_this();
  tellChanged();
  notifyDidChangeState(delegate());
}

void VeltoAdViewController::reload() {
  trial_.emplace();
  loadAgain();
  trial_.reset();  // of one that nobody holds any more
}

bool VeltoAdViewController::simulate(Why reason) {
  if (reason == Why::PageProcessCrashed) {
    if (!webView() || !shown_->record() || !shown_->record()->has(VeltoTimelineKind::MarkupGiven))
      return false;
    const auto shown = shown_;
    shown->veltoWKWebViewDidFailNavigation(
        {constVeltoBundleIdentifier, VeltoErrorServer, "simulated", NSErrorCause::ProcessCrashed});
    return true;
  }
  trial_ = Trial{reason};
  loadAgain();
  trial_.reset();
  return true;
}

// --- the person

void VeltoAdViewController::_adDidPress() {
  if (!shown_) return;  // a screen on its way out
  shown_->touched();
  // The delegate may load another ad, remove this one or end the platform; what was pressed is the ad of before.
  const auto alive = shared_from_this();
  const auto pressed = ad();
  const bool isClick = pressed && pressed->bannerId && pressed->publisherId && pressed->ordId;
  note(VeltoTimelineKind::Tapped, isClick ? VeltoTap::ClickTracked : VeltoTap::Told);
  notifyDidPress(delegate());
  impressionOMSDK();
  if (!pressed || !Platform::currentOrNull()) return;
  VeltoTrackerManager::trackClickForBannerId(pressed->bannerId, pressed->publisherId, pressed->ordId);
  pressed->resetAdInformations();
}

// --- what the system tells

void VeltoAdViewController::observeValueForKeyPath(const std::string& keyPath, float newValue,
                                                   const void* context) {
  if (context != &audioContext_ || keyPath != VeltoUtilities::keypathVolumeObserver) return;
  audioVolumeChange(newValue, activeWebView());
}

void VeltoAdViewController::viewWillAppear(bool) {
  if (shown_) shown_->mraidIsViewable(true, activeWebView(), veltoGetMRAIDHandler());
}

void VeltoAdViewController::viewWillDisappear(bool) {
  if (shown_) shown_->mraidIsViewable(false, activeWebView(), veltoGetMRAIDHandler());
}

void VeltoAdViewController::viewWillTransitionToSize(CGSize size,
                                                     UIViewControllerTransitionCoordinator& coordinator) {
  UIViewController::viewWillTransitionToSize(size, coordinator);
  const auto [viewAd, vc] = surroundings();
  const auto handler = veltoGetMRAIDHandler();
  if (handler && webView() && viewAd && vc)
    shown_->mraidViewWillTransitionWithCoordinator(coordinator, viewAd, vc, webView(), handler);
}

bool VeltoAdViewController::shouldAutorotate() const {
  const auto handler = veltoGetMRAIDHandler();
  return handler ? handler->orientationProperty().allowOrientationChange
                 : UIViewController::shouldAutorotate();
}

uint64_t VeltoAdViewController::supportedInterfaceOrientations() const {
  const auto handler = veltoGetMRAIDHandler();
  return handler ? handler->orientationMask : interfaceOrientationMask_;
}

void VeltoAdViewController::note(VeltoTimelineKind kind, LoadRecord::Detail detail) {
  if (shown_) shown_->note(kind, std::move(detail));
}

void VeltoAdViewController::_resizeActionInMainWebView(int64_t action, CGSize size, CGPoint offset) {
  expectChangeOMSDK();
  _expandOrResizeMainWebView(action, size, offset);
}

}  // namespace velto
