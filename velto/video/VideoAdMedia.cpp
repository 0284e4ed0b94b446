// File after file.
#include "velto/video/VideoAdMedia.h"

#include "velto/platform/Clock.h"
#include "velto/platform/Durations.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"

#include <algorithm>
#include <utility>

namespace velto {
namespace {

constexpr double stallsAfter = 1;   // second without a new picture
constexpr double leastEarly = 0.1;  // seconds that may lack at the end
constexpr double earlyPart = 0.01;  // or this much of its length
constexpr int32_t microseconds = 1'000'000;

double monotonicNow() {
  auto* platform = Platform::currentOrNull();
  return platform ? platform->clock().monotonicSeconds() : 0;
}

}  // namespace

void VideoAdMedia::start() {
  Platform::current().mainQueue().post([weak = weak_from_this()] {
    if (const auto alive = weak.lock()) alive->next(VASTError::NoSupportedFile);
  });
}

void VideoAdMedia::cancel() {
  listener_ = nullptr;
  drop();
}

void VideoAdMedia::drop() {
  times_.reset();
  if (const auto player = std::exchange(player_, nullptr)) player->cancel();
}

void VideoAdMedia::next(VASTError why) {
  drop();
  auto* platform = Platform::currentOrNull();
  if (!listener_ || !platform) return;
  const bool isAnother = tried_ > 0;
  std::shared_ptr<AVAsset> asset;
  while (!asset && tried_ < files_.size()) {
    const auto url = NSURL::URLByEscaping(files_[tried_++].url);
    asset = url ? AVAsset::assetWithURL(*url) : nullptr;
    if (!asset) why = VASTError::FileNotFound;
  }
  if (!asset) return std::exchange(listener_, nullptr)->mediaFailed(why);
  if (isAnother) listener_->mediaPassesOver(why);
  listener_->mediaTries(files_[tried_ - 1]);
  player_ = AVPlayer::playerWithPlayerItem(AVPlayerItem::playerItemWithAsset(asset));
  player_->setVolume(volume_);
  player_->setEventHandler([weak = weak_from_this()](AVPlayerEvent event) {
    if (const auto alive = weak.lock()) alive->heard(event);
  });
  platform->mainQueue().postAfter(timeout_, [weak = weak_from_this(), of = tried_] {
    const auto alive = weak.lock();
    if (alive && alive->tried_ == of && !alive->ready_) alive->next(VASTError::FileTimeout);
  });
}

void VideoAdMedia::heard(AVPlayerEvent event) {
  if (!listener_) return;
  switch (event) {
    case AVPlayerEvent::ReadyToPlay:
      ready_ = true;
      movedAt_ = monotonicNow();
      return listener_->mediaReady(files_[tried_ - 1]);
    case AVPlayerEvent::RateChanged:
      return;
    case AVPlayerEvent::DidPlayToEnd: {
      // What was cut off on the way is no ad that was seen to its end.
      const double early = std::max(leastEarly, duration() * earlyPart);
      if (seconds() + early < duration())
        return std::exchange(listener_, nullptr)->mediaFailed(VASTError::FileNotShown);
      return std::exchange(listener_, nullptr)->mediaEnded();
    }
    case AVPlayerEvent::FailedToPlay: {
      const auto& error = player_->error();
      const auto cause = !ready_ && error ? error->cause : NSErrorCause::Unknown;
      const auto why = cause == NSErrorCause::NotFound            ? VASTError::FileNotFound
                       : cause == NSErrorCause::EngineUnavailable ? VASTError::Linear
                                                                  : VASTError::FileNotShown;
      // What has begun is not begun again.
      return ready_ ? std::exchange(listener_, nullptr)->mediaFailed(why) : next(why);
    }
  }
}

void VideoAdMedia::setPlaying(bool playing) {
  if (!player_) return;
  movedAt_ = monotonicNow();
  playing ? player_->play() : player_->pause();
}

void VideoAdMedia::setVolume(float volume) {
  volume_ = volume;
  if (player_) player_->setVolume(volume);
}

double VideoAdMedia::seconds() const {
  return player_ ? CMTimeGetSeconds(player_->currentTime()) : 0;
}

double VideoAdMedia::duration() const {
  return player_ ? CMTimeGetSeconds(player_->asset()->duration()) : 0;
}

void VideoAdMedia::atTimes(const std::vector<double>& times, std::function<void()> block) {
  if (!player_) return;
  std::vector<CMTime> points;
  points.reserve(times.size());
  for (const double time : times)
    points.push_back({static_cast<int64_t>(std::clamp(time, 0.0, 1e9) * microseconds), microseconds});
  times_ = player_->addBoundaryTimeObserverForTimes(points, std::move(block));
}

void VideoAdMedia::look() {
  if (!listener_ || !ready_ || !player_ || !player_->isPlaying()) return;
  const double now = monotonicNow(), at = seconds();
  if (std::exchange(lastSeconds_, at) != at) movedAt_ = now;
  const bool stalls = now - movedAt_ >= stallsAfter;
  if (stalls && nanosecondsIn(now - movedAt_) >= timeout_)
    return std::exchange(listener_, nullptr)->mediaFailed(VASTError::FileTimeout);
  if (std::exchange(stalled_, stalls) != stalls) listener_->mediaStalled(stalls);
}

}  // namespace velto
