// One video ad, under a person's hands: what the controls say, and what they do.
#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"
#include "velto/platform/UIApplication.h"
#include "velto/video/VideoAdShow.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace velto {

void VideoAdShow::refresh() {
  if (hasEnded_) return;
  const auto info = this->info();
  const double at = seconds();
  VideoAdControls::State state;
  state.label =
      videoAdLabel(around_.number, around_.count,
                   hasStarted_ && info.duration > 0 ? std::optional(info.duration - at) : std::nullopt);
  state.playing = !pausedByPerson_;
  state.muted = around_.sound->muted;
  state.leadsSomewhere = info.leadsSomewhere;
  state.skippable = info.skippableAfter.has_value() && hasStarted_;
  if (info.skippableAfter && !tracker_.maySkip())
    state.skipsIn = std::max(1, static_cast<int>(std::ceil(std::min(*info.skippableAfter - at, 1e6))));
  state.played = info.duration > 0 ? std::clamp(at / info.duration, 0.0, 1.0) : 0;
  around_.screen->controls()->show(state);
  if (hasStarted_) icons_.show(at, *around_.screen->controls());
}

void VideoAdShow::pause(bool paused) {
  const auto self = shared_from_this();
  if (hasEnded_ || std::exchange(pausedByPerson_, paused) == paused) return;
  applyPlaying();
  if (hasEnded_) return;
  retime();
  refresh();
}

void VideoAdShow::screenMuted() {
  const auto self = shared_from_this();
  const bool muted = !around_.sound->muted;
  around_.sound->muted = muted;
  soundChanged();
  if (const auto to = listener_.lock(); to && !hasEnded_) to->adMuted(muted);
}

void VideoAdShow::soundChanged() {
  if (hasEnded_) return;
  if (media_) media_->setVolume(around_.sound->heard());
  tracker_.setMuted(around_.sound->muted);
  if (measurement_) measurement_->volumeChanged(around_.sound->heard());
  refresh();
}

void VideoAdShow::setFullscreen(bool fullscreen) {
  if (hasEnded_ || std::exchange(isFullscreen_, fullscreen) == fullscreen) return;
  tracker_.setFullscreen(fullscreen);
  if (measurement_) measurement_->setFullscreen(fullscreen);
}

bool VideoAdShow::maySkip() const {
  const auto after = info().skippableAfter;
  return hasStarted_ && !hasEnded_ && after && seconds() >= *after;
}

// An ad that plays on far beyond what its document says holds nobody.
void VideoAdShow::screenEscaped() {
  constexpr double grace = 10, unknownLength = 60;  // seconds
  const auto self = shared_from_this();
  const double said = tracker_.ad().linear->duration.value_or(unknownLength);
  if (!skip() && hasStarted_ && seconds() > said + grace) end(VideoAdEnd::Left);
}

// A window can go in the application's own call, or in the toolkit's: the application hears of the end in a later turn.
void VideoAdShow::screenWentAway() {
  auto* platform = Platform::currentOrNull();
  if (!platform) return;
  platform->mainQueue().post([weak = weak_from_this()] {
    if (const auto alive = weak.lock()) alive->end(VideoAdEnd::Closed);
  });
}

bool VideoAdShow::skip() {
  const auto self = shared_from_this();
  if (hasStarted_ && !hasEnded_) playheadMoved();
  if (hasEnded_ || !tracker_.maySkip()) return false;
  tracker_.skipped();
  measurement_->tell(Event::Skipped);
  end(VideoAdEnd::Skipped);
  return true;
}

// A film that waits goes on when it is pressed; else it leads where the ad wants, and waits for the person to come back.
void VideoAdShow::screenPressed(std::optional<CGPoint> place) {
  const auto self = shared_from_this();
  if (!hasStarted_ || hasEnded_) return;
  if (pausedByPerson_ && place) return pause(false);
  if (!info().leadsSomewhere) return;
  playheadMoved();
  if (hasEnded_) return;
  const auto address =
      tracker_.clicked(place ? std::optional(VASTClickPosition{place->x, place->y}) : std::nullopt);
  measurement_->tell(Event::Click);
  const auto url = address ? NSURL::URLByEscaping(*address) : std::nullopt;
  auto& application = Platform::current().application();
  const bool opens = url && application.canOpenURL(*url);
  notes_.note(VeltoTimelineKind::Tapped, opens ? VeltoTap::LinkOpened : VeltoTap::Told);
  if (opens) application.openURL(*url, {}, nullptr);
  if (const auto to = listener_.lock()) to->adPressed();
  pause(true);
}

VeltoVideoAdInfo VideoAdShow::info() const {
  const auto& ad = tracker_.ad();
  VeltoVideoAdInfo info;
  info.identifier = ad.id;
  info.title = ad.adTitle;
  info.advertiser = ad.advertiser;
  info.adSystem = ad.adSystem;
  info.number = around_.number;
  info.count = around_.count;
  info.duration = tracker_.duration().value_or(0);
  if (const auto& offset = ad.linear->skipOffset)
    info.skippableAfter = offset->secondsOf(tracker_.duration());
  info.leadsSomewhere = !ad.linear->clickThrough.empty();
  return info;
}

}  // namespace velto
