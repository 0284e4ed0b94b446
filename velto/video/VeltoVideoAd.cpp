// The public object: it holds the ad break, which ends with it.
#include "velto/video/VeltoVideoAd.h"

#include "velto/platform/Platform.h"
#include "velto/video/VideoAdBreak.h"

namespace velto {

std::shared_ptr<VeltoVideoAd> VeltoVideoAd::make(const Delegate& delegate) {
  std::shared_ptr<VeltoVideoAd> made(new VeltoVideoAd);
  made->break_ = VideoAdBreak::make(made, delegate);
  return made;
}

VeltoVideoAd::~VeltoVideoAd() {
  if (break_) break_->letGo(VeltoAdEndReason::ControllerGone);  // none: there was no platform
}

void VeltoVideoAd::setSettings(const VeltoVideoAdSettings& settings) {
  break_->setSettings(settings);
}

void VeltoVideoAd::load(const std::string& url) {
  break_->load(url);
}

void VeltoVideoAd::loadDocument(const std::string& text) {
  break_->loadDocument(text);
}

void VeltoVideoAd::load(const VMAPAdSource& source) {
  break_->load(source);
}

VeltoVideoAd::State VeltoVideoAd::state() const {
  return break_->state();
}

bool VeltoVideoAd::playIn(const std::shared_ptr<UIView>& view) {
  return break_->playIn(view);
}

bool VeltoVideoAd::playOver(const std::shared_ptr<UIViewController>& controller) {
  return break_->playOver(controller);
}

std::vector<VeltoAdTimeline> VeltoVideoAd::veltoAdTimeline() const {
  return break_->placement().timelines();
}

void VeltoVideoAd::addTimelineObserver(std::weak_ptr<VeltoAdTimelineObserver> observer) {
  break_->placement().observe(std::move(observer));
}

void VeltoVideoAd::setPlacement(const std::string& name) {
  break_->placement().setName(name);
}

void VeltoVideoAd::pause() {
  break_->post([](VideoAdShow& show) { show.pause(true); });
}

void VeltoVideoAd::resume() {
  break_->post([](VideoAdShow& show) { show.pause(false); });
}

bool VeltoVideoAd::skip() {
  const auto show = break_->show();
  if (!show || !show->maySkip()) return false;
  break_->post([](VideoAdShow& ending) { ending.skip(); });
  return true;
}

void VeltoVideoAd::setMuted(bool muted) {
  break_->sound()->muted = muted;
  if (const auto show = break_->show()) show->soundChanged();
}

bool VeltoVideoAd::isMuted() const {
  return break_->sound()->muted;
}

void VeltoVideoAd::setVolume(float volume) {
  if (!(volume >= 0 && volume <= 1)) return;
  break_->sound()->volume = volume;
  if (const auto show = break_->show()) show->soundChanged();
}

void VeltoVideoAd::setFullscreen(bool fullscreen) {
  break_->setFullscreen(fullscreen);
}

void VeltoVideoAd::stop() {
  break_->stop();
}

std::optional<VeltoVideoAdInfo> VeltoVideoAd::info() const {
  const auto show = break_->playing();
  return show ? std::optional(show->info()) : std::nullopt;
}

double VeltoVideoAd::currentTime() const {
  const auto show = break_->playing();
  return show ? show->seconds() : 0;
}

bool VeltoVideoAd::isPaused() const {
  const auto show = break_->playing();
  return show && show->isPaused();
}

std::vector<VeltoVideoAdCompanion> VeltoVideoAd::companions() const {
  std::vector<VeltoVideoAdCompanion> all;
  if (const auto& show = break_->show())
    for (const auto& companion : show->tracker().ad().companions)
      all.push_back({companion.id, companion.adSlotId, companion.altText, companion.width, companion.height,
                     companion.renderingMode == "end-card"});
  return all;
}

std::shared_ptr<UIView> VeltoVideoAd::companionView(size_t place) const {
  return break_->companionView(place);
}

}  // namespace velto
