// Session kinds, and the road from a controller's calls to the engine.
#include "velto/measurement/UIViewControllerOMSDKSDKVelto.h"

#include "velto/ads/VeltoAdManager.h"
#include "velto/core/VeltoFramework.h"
#include "velto/core/VeltoInspector.h"
#include "velto/core/VeltoUtilities.h"
#include "velto/measurement/OMIDVeltoAdEvents.h"
#include "velto/measurement/OMIDVeltoAdSession.h"
#include "velto/measurement/OMIDVeltoMediaEvents.h"
#include "velto/measurement/OMIDVeltoVASTProperties.h"
#include "velto/platform/ui/WKWebView.h"

namespace velto {

UIViewControllerOMSDKSDKVelto::~UIViewControllerOMSDKSDKVelto() {
  finishOMSDKSession();
}

// --- sessions

void UIViewControllerOMSDKSDKVelto::startOMSDKSessionFor(const View& adView,
                                                         const View& friendlyObstructionView) {
  _startOMSDKSessionFor(adView, friendlyObstructionView, OMIDVeltoCreativeTypeHTMLDisplay,
                        OMIDVeltoImpressionTypeBeginToRender, OMIDVeltoOwnerJavaScript, OMIDVeltoOwnerNone,
                        false);
}

void UIViewControllerOMSDKSDKVelto::startOMSDKSessionForNativeWithFriendlyObstructionView(const View& view) {
  _startOMSDKSessionFor(nullptr, view, OMIDVeltoCreativeTypeNativeDisplay,
                        OMIDVeltoImpressionTypeBeginToRender, OMIDVeltoOwnerNative, OMIDVeltoOwnerNone,
                        false);
}

void UIViewControllerOMSDKSDKVelto::startOMSDKSessionForNativeVideo() {
  _startOMSDKSessionFor(nullptr, nullptr, OMIDVeltoCreativeTypeVideo, OMIDVeltoImpressionTypeBeginToRender,
                        OMIDVeltoOwnerNative, OMIDVeltoOwnerNative, false);
}

void UIViewControllerOMSDKSDKVelto::_startOMSDKSessionFor(
    const View& adView, const View& friendlyObstructionView, OMIDVeltoCreativeType creativeType,
    OMIDVeltoImpressionType impressionType, OMIDVeltoOwner impressionOwner, OMIDVeltoOwner mediaEventsOwner,
    bool isolateVerificationScripts) {
  if (omidSession_) {
    if (adView) omidSession_->setMainAdView(adView);
    addFriendlyObstructionOMSDKFor(friendlyObstructionView);
    return;
  }
  _createOmidSessionFor(adView, creativeType, impressionType, impressionOwner, mediaEventsOwner,
                        isolateVerificationScripts);
  _createOmidAdEvent();
  const bool isNativeVideo =
      creativeType == OMIDVeltoCreativeTypeVideo && mediaEventsOwner == OMIDVeltoOwnerNative;
  if (isNativeVideo) _createOmidMediaEvent();
  addFriendlyObstructionOMSDKFor(friendlyObstructionView);
  if (omidSession_) {
    // Sight is taken from what was painted.
    omidSession_->setSightObserver([this](int percent) {
      if (percent > 0) note(VeltoTimelineKind::PaintedFirst, {});
      note(VeltoTimelineKind::Visible, VeltoShare{percent});
    });
    note(VeltoTimelineKind::Measured, VeltoMeasured::SessionStarted);
    omidSession_->start();
  }
  if (isNativeVideo && adEvents_)
    adEvents_->loadedWithVastProperties(
        OMIDVeltoVASTProperties::initWithAutoPlay(true, OMIDVeltoPositionStandalone), nullptr);
}

void UIViewControllerOMSDKSDKVelto::_createOmidSessionFor(
    const View& adView, OMIDVeltoCreativeType creativeType, OMIDVeltoImpressionType impressionType,
    OMIDVeltoOwner impressionOwner, OMIDVeltoOwner mediaEventsOwner, bool isolateVerificationScripts) {
  if (!VeltoAdManager::getOMSKJs()) return;
  _createSessionFor(_createContextFor(adView),
                    _createConfigurationFor(creativeType, impressionType, impressionOwner, mediaEventsOwner,
                                            isolateVerificationScripts),
                    adView);
}

std::shared_ptr<const OMIDVeltoPartner> UIViewControllerOMSDKSDKVelto::_createPartner() {
  return OMIDVeltoPartner::initWithName(VeltoUtilities::omsdkPartnerName(), VeltoFramework::versionSDK());
}

std::shared_ptr<const OMIDVeltoAdSessionContext> UIViewControllerOMSDKSDKVelto::_createContextFor(
    const View& adView) {
  const auto partner = _createPartner();
  if (adView)
    return OMIDVeltoAdSessionContext::initWithPartner(partner, std::dynamic_pointer_cast<WKWebView>(adView),
                                                      std::nullopt, "", nullptr);
  const auto url = NSURL::URLWithString(VeltoUtilities::omsdkVerificationScriptURL());
  const auto resource =
      url ? OMIDVeltoVerificationScriptResource::initWithURL(*url, VeltoUtilities::omsdkVendorKey(),
                                                             VeltoUtilities::omsdkVerificationParameters())
          : nullptr;
  if (!resource) return nullptr;
  return OMIDVeltoAdSessionContext::initWithPartner(partner, VeltoAdManager::getOMSKJs(), {resource},
                                                    std::nullopt, "", nullptr);
}

std::shared_ptr<const OMIDVeltoAdSessionConfiguration> UIViewControllerOMSDKSDKVelto::_createConfigurationFor(
    OMIDVeltoCreativeType creativeType, OMIDVeltoImpressionType impressionType,
    OMIDVeltoOwner impressionOwner, OMIDVeltoOwner mediaEventsOwner, bool isolateVerificationScripts) {
  return OMIDVeltoAdSessionConfiguration::initWithCreativeType(
      creativeType, impressionType, impressionOwner, mediaEventsOwner, isolateVerificationScripts, nullptr);
}

void UIViewControllerOMSDKSDKVelto::_createSessionFor(
    const std::shared_ptr<const OMIDVeltoAdSessionContext>& context,
    const std::shared_ptr<const OMIDVeltoAdSessionConfiguration>& config, const View& adView) {
  if (!context || !config) return;
  omidSession_ = OMIDVeltoAdSession::initWithConfiguration(config, context, nullptr);
  if (omidSession_ && adView) omidSession_->setMainAdView(adView);
}

void UIViewControllerOMSDKSDKVelto::finishOMSDKSession() {
  if (omidSession_) {
    omidSession_->setSightObserver(nullptr);
    omidSession_->finish();
    note(VeltoTimelineKind::Measured, VeltoMeasured::SessionFinished);
  }
  omidSession_.reset();
  adEvents_.reset();
  mediaEvents_.reset();
}

// --- views over the ad

void UIViewControllerOMSDKSDKVelto::addFriendlyObstructionOMSDKFor(const View& view) {
  if (view && omidSession_)
    omidSession_->addFriendlyObstruction(view, OMIDVeltoFriendlyObstructionCloseAd, std::nullopt, nullptr);
}

void UIViewControllerOMSDKSDKVelto::removeFriendlyObstructionOMSDKFor(const View& view) {
  if (view && omidSession_) omidSession_->removeFriendlyObstruction(view);
}

void UIViewControllerOMSDKSDKVelto::expectChangeOMSDK() {
  if (omidSession_) omidSession_->expectChange();
}

// --- events

void UIViewControllerOMSDKSDKVelto::_createOmidAdEvent() {
  if (!omidSession_) return;
  adEvents_ = OMIDVeltoAdEvents::initWithAdSession(omidSession_, nullptr);
  if (adEvents_) adEvents_->loadedWithError(nullptr);
}

void UIViewControllerOMSDKSDKVelto::_createOmidMediaEvent() {
  mediaEvents_ = OMIDVeltoMediaEvents::initWithAdSession(omidSession_, nullptr);
}

void UIViewControllerOMSDKSDKVelto::impressionOMSDK() {
  if (!adEvents_) return;
  adEvents_->impressionOccurredWithError(nullptr);
  note(VeltoTimelineKind::Measured, VeltoMeasured::Impression);
}

void UIViewControllerOMSDKSDKVelto::startPlaybackNativeVideoOMSDWith(float duration, float volume) {
  inspect("video", [&] { return JSON::Object{{"start", double{duration}}, {"volume", double{volume}}}; });
  impressionOMSDK();
  if (mediaEvents_) mediaEvents_->startWithDuration(duration, volume);
}

void UIViewControllerOMSDKSDKVelto::signalPlaybackNativeVideoOMSDK(float progress) {
  inspect("video", [&] { return JSON::Object{{"progress", double{progress}}}; });
  if (!mediaEvents_) return;
  const double played = progress;
  if (played >= 0.24 && played <= 0.26)
    mediaEvents_->firstQuartile();
  else if (played >= 0.49 && played <= 0.51)
    mediaEvents_->midpoint();
  else if (played >= 0.74 && played <= 0.76)
    mediaEvents_->thirdQuartile();
  else if (played >= 0.99 && played <= 1.01)
    mediaEvents_->complete();
}

void UIViewControllerOMSDKSDKVelto::volumePlaybackNativeVideoChangeOMSD(float volume) {
  if (mediaEvents_) mediaEvents_->volumeChangeTo(volume);
}

}  // namespace velto
