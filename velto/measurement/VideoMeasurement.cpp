// From a player's calls to the engine.
#include "velto/measurement/VideoMeasurement.h"

#include "velto/ads/VeltoAdManager.h"
#include "velto/core/VeltoFramework.h"
#include "velto/core/VeltoUtilities.h"
#include "velto/measurement/OMIDVeltoAdEvents.h"
#include "velto/measurement/OMIDVeltoAdSession.h"
#include "velto/measurement/OMIDVeltoMediaEvents.h"
#include "velto/measurement/OMIDVeltoSDK.h"
#include "velto/measurement/OMIDVeltoVASTProperties.h"
#include "velto/measurement/OMSDK.h"
#include "velto/measurement/ViewSight.h"
#include "velto/measurement/ViewabilityWatcher.h"
#include "velto/platform/ui/UIView.h"

#include <algorithm>
#include <utility>

namespace velto {
namespace {

// A script without vendor gets no parameters; a vendor without parameters a blank, which counts as some.
std::shared_ptr<const OMIDVeltoVerificationScriptResource> resourceOf(
    const VideoMeasurement::Script& script) {
  const auto url = NSURL::URLByEscaping(script.url);
  if (!url || !url->host()) return nullptr;
  if (script.vendor.empty()) return OMIDVeltoVerificationScriptResource::initWithURL(*url);
  return OMIDVeltoVerificationScriptResource::initWithURL(
      *url, script.vendor, script.parameters.empty() ? " " : script.parameters);
}

}  // namespace

VideoMeasurement::VideoMeasurement(std::shared_ptr<UIView> view, std::function<void()> changed)
    : view_(std::move(view)) {
  OMSDK::initOMSDK();  // an application may have no other ads
  const auto look = [this] {
    FriendlyViews friendly;
    for (const auto& control : controls_) friendly.push_back(control.get());
    AdSight sight = sightOf(view_.get(), friendly);
    sight.backgrounded = sight.backgrounded || OMIDVeltoSDK::sharedInstance()->isInBackground();
    sight.locked = OMIDVeltoSDK::isDeviceLocked();
    return sight;
  };
  watcher_ =
      ViewabilityWatcher::watch(look, [changed = std::move(changed)](const Viewability&) { changed(); });
}

VideoMeasurement::~VideoMeasurement() {
  finish();
}

VideoMeasurement::Seen VideoMeasurement::seen() const {
  const auto& latest = watcher_->latest();
  const auto isFor = [&](const char* reason) {
    return std::find(latest.reasons.begin(), latest.reasons.end(), reason) != latest.reasons.end();
  };
  // A view without size is hidden, too, but not away: its window may not have been laid out yet.
  const bool isHidden = isFor("hidden") && latest.geometry.size.width > 0 && latest.geometry.size.height > 0;
  return {latest.percentageInView,
          isHidden || isFor("notFound") || isFor("backgrounded") || isFor("deviceLocked"),
          !isFor("unmeasurable")};
}

void VideoMeasurement::addControls(const std::shared_ptr<UIView>& view) {
  controls_.push_back(view);
  watcher_->lookNow();
  if (session_)
    session_->addFriendlyObstruction(view, OMIDVeltoFriendlyObstructionMediaControls, std::nullopt, nullptr);
}

bool VideoMeasurement::canRun(const Script& script) {
  OMSDK::initOMSDK();
  return VeltoAdManager::getOMSKJs() && resourceOf(script);
}

std::string VideoMeasurement::partner() {
  return VeltoUtilities::omsdkPartnerName() + "/" + VeltoFramework::versionSDK();
}

void VideoMeasurement::start(const std::vector<Script>& scripts, std::optional<double> skipOffset,
                             OMIDVeltoPosition position,
                             std::function<void(std::optional<size_t> script)> lost) {
  OMIDVeltoAdSessionContext::Resources resources;
  for (const auto& script : scripts)
    if (auto resource = resourceOf(script)) resources.push_back(std::move(resource));
  if (session_ || resources.empty()) return;
  const auto partner =
      OMIDVeltoPartner::initWithName(VeltoUtilities::omsdkPartnerName(), VeltoFramework::versionSDK());
  const auto context = OMIDVeltoAdSessionContext::initWithPartner(
      partner, VeltoAdManager::getOMSKJs(), resources, std::nullopt, std::nullopt, nullptr);
  const auto configuration = OMIDVeltoAdSessionConfiguration::initWithCreativeType(
      OMIDVeltoCreativeTypeVideo, OMIDVeltoImpressionTypeBeginToRender, OMIDVeltoOwnerNative,
      OMIDVeltoOwnerNative, true, nullptr);
  session_ = OMIDVeltoAdSession::initWithConfiguration(configuration, context, nullptr);
  if (!session_) return;
  session_->setMainAdView(view_);
  adEvents_ = OMIDVeltoAdEvents::initWithAdSession(session_, nullptr);
  mediaEvents_ = OMIDVeltoMediaEvents::initWithAdSession(session_, nullptr);
  for (const auto& view : controls_)
    session_->addFriendlyObstruction(view, OMIDVeltoFriendlyObstructionMediaControls, std::nullopt, nullptr);
  session_->setLossObserver(std::move(lost));
  session_->start();
  adEvents_->loadedWithVastProperties(
      skipOffset ? OMIDVeltoVASTProperties::initWithSkipOffset(*skipOffset, true, position)
                 : OMIDVeltoVASTProperties::initWithAutoPlay(true, position),
      nullptr);
}

void VideoMeasurement::impression() {
  if (adEvents_) adEvents_->impressionOccurredWithError(nullptr);
}

void VideoMeasurement::started(double duration, float volume) {
  if (mediaEvents_) mediaEvents_->startWithDuration(static_cast<float>(duration), volume);
}

void VideoMeasurement::volumeChanged(float volume) {
  if (mediaEvents_) mediaEvents_->volumeChangeTo(volume);
}

void VideoMeasurement::setFullscreen(bool fullscreen) {
  if (mediaEvents_)
    mediaEvents_->playerStateChangeTo(fullscreen ? OMIDVeltoPlayerStateFullscreen
                                                 : OMIDVeltoPlayerStateNormal);
}

void VideoMeasurement::tell(Event event) {
  if (!mediaEvents_) return;
  switch (event) {
    case Event::FirstQuartile:
      mediaEvents_->firstQuartile();
      break;
    case Event::Midpoint:
      mediaEvents_->midpoint();
      break;
    case Event::ThirdQuartile:
      mediaEvents_->thirdQuartile();
      break;
    case Event::Complete:
      mediaEvents_->complete();
      break;
    case Event::Pause:
      mediaEvents_->pause();
      break;
    case Event::Resume:
      mediaEvents_->resume();
      break;
    case Event::BufferStart:
      mediaEvents_->bufferStart();
      break;
    case Event::BufferFinish:
      mediaEvents_->bufferFinish();
      break;
    case Event::Skipped:
      mediaEvents_->skipped();
      break;
    case Event::Click:
      mediaEvents_->adUserInteractionWithType(OMIDVeltoInteractionTypeClick);
      break;
  }
}

void VideoMeasurement::finish() {
  if (session_) session_->finish();
  session_.reset();
  adEvents_.reset();
  mediaEvents_.reset();
}

}  // namespace velto
