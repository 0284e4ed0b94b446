// From a URL to a played video.
#include "velto/video/AVVideoSDKVelto.h"

#include "velto/platform/AVAudioSession.h"

namespace velto {
namespace {

constexpr double boundaryFraction = 0.25;
constexpr float complete = 0.99F;

float secondsOf(CMTime time) {
  return time.timescale > 0 ? static_cast<float>(time.value) / static_cast<float>(time.timescale) : 0;
}

}  // namespace

void AVVideoSDKVelto::playVideoAt(const NSURL& url) {
  const auto asset = AVAsset::assetWithURL(url);
  if (!asset) return;
  closeVideo();
  asset_ = asset;
  player_ = AVPlayer::playerWithPlayerItem(AVPlayerItem::playerItemWithAsset(asset));
  const auto screen = AVPlayerViewController::make();
  playerViewController_ = screen;
  screen->setPlayer(player_);
  const auto self = viewController().shared_from_this();
  screen->setDelegate(std::shared_ptr<AVPlayerViewControllerDelegate>(self, this));
  AVAudioSession::sharedInstance().setActive();
  screen->startOMSDKSessionForNativeVideo();
  viewController().presentViewController(screen, true,
                                         [this, weak = std::weak_ptr(self), shown = std::weak_ptr(screen)] {
                                           const auto alive = weak.lock();
                                           const auto presented = shown.lock();
                                           if (!alive || !presented || presented != playerViewController_)
                                             return;
                                           if (!presented->view()->isInWindow())
                                             return presented->close();  // it was refused
                                           // How long the video is must be known before it starts. One that
                                           // fails closes the screen, which then has no player any more.
                                           asset_->loadValuesAsynchronously([this, weak, shown] {
                                             const auto still = weak.lock();
                                             if (still && playerViewController_ == shown.lock())
                                               _startVideo();
                                           });
                                         });
}

void AVVideoSDKVelto::_startVideo() {
  const auto screen = playerViewController_;
  if (!screen || !screen->player()) return;
  player_->play();
  const CMTime duration = asset_ ? asset_->duration() : kCMTimeZero;
  const int64_t wholeSeconds = duration.timescale > 0 ? duration.value / duration.timescale : 0;
  screen->startPlaybackNativeVideoOMSDWith(static_cast<float>(wholeSeconds), player_->volume());
  _addBoundaryTimeObserver();
}

void AVVideoSDKVelto::_addBoundaryTimeObserver() {
  const CMTime duration = asset_ ? asset_->duration() : kCMTimeZero;
  const CMTime step = CMTimeMultiplyByFloat64(duration, boundaryFraction);
  std::vector<CMTime> times;
  // A step of nothing would never arrive: a duration of a nanosecond or so.
  for (CMTime time = kCMTimeZero; CMTimeCompare(time, duration) < 0 && step.value > 0;) {
    time = CMTimeAdd(time, step);
    times.push_back(time);
  }
  if (times.empty() || !player_) return;
  timeObserverToken_ =
      player_->addBoundaryTimeObserverForTimes(times, [this, weak = viewController().weak_from_this()] {
        if (const auto alive = weak.lock()) _evaluateCurrentTime();
      });
}

void AVVideoSDKVelto::_evaluateCurrentTime() {
  const float currentSeconds = player_ ? secondsOf(player_->currentTime()) : 0;
  const float durationSeconds = asset_ ? secondsOf(asset_->duration()) : 0;
  const float progress = currentSeconds / durationSeconds;
  if (const auto screen = playerViewController_) screen->signalPlaybackNativeVideoOMSDK(progress);
  if (progress >= complete) removeTimeObserver();
}

void AVVideoSDKVelto::playerViewController(AVPlayerViewController& screen,
                                           UIViewControllerTransitionCoordinator&) {
  if (&screen == playerViewController_.get()) removeTimeObserver();
}

void AVVideoSDKVelto::removeTimeObserver() {
  if (!timeObserverToken_ || !player_) return;
  player_->removeTimeObserver(timeObserverToken_);
  timeObserverToken_.reset();
}

void AVVideoSDKVelto::closeVideo() {
  const auto screen = playerViewController_;
  if (!screen) return;
  removeTimeObserver();  // in a destructor nobody can be told any more
  screen->close();
}

}  // namespace velto
