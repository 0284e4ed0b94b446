// The player's screen: what it shows, the keys, and the ways out.
#include "velto/video/AVPlayerViewController.h"

#include "velto/core/VeltoInspector.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"

#include <algorithm>
#include <utility>

namespace velto {
namespace {

constexpr double refreshInterval = 0.25;  // seconds
constexpr double seekStep = 5;            // seconds
constexpr float volumeStep = 0.1F;
constexpr int32_t milliseconds = 1000;
constexpr unsigned fillsItsSuperview = UIViewAutoresizingFlexibleWidth | UIViewAutoresizingFlexibleHeight;

// The screen leaves at once, and so does what goes along with it.
class AtOnce final : public UIViewControllerTransitionCoordinator {
 public:
  void animateAlongsideTransition(std::function<void()> animation) override { animation(); }
};

}  // namespace

std::shared_ptr<AVPlayerViewController> AVPlayerViewController::make() {
  std::shared_ptr<AVPlayerViewController> screen(new AVPlayerViewController);
  screen->view()->setBackgroundColor(UIColor::blackColor());
  // The controls are inside the screen, so they go before it.
  auto* self = screen.get();
  screen->controls_ =
      PlayerControls::make({.toggle = [self] { self->togglePlaying(); },
                            .seek = [self](double part) { self->seek(part * self->duration()); },
                            .close = [self] { self->close(); }});
  return screen;
}

AVPlayerViewController::~AVPlayerViewController() {
  if (player_) player_->cancel();
  if (!closed_) finishOMSDKSession();
  controls_->removeFromSuperview();
}

void AVPlayerViewController::setPlayer(const std::shared_ptr<AVPlayer>& player) {
  player_ = player;
  const auto picture = UIView::makeWithPeer(player->makePicture());
  for (const auto& view : {picture, std::static_pointer_cast<UIView>(controls_)}) {
    view->setFrame(this->view()->bounds());
    view->setAutoresizingMask(fillsItsSuperview);
    this->view()->addSubview(view);
  }
  player->setEventHandler([weak = weak_from_this()](AVPlayerEvent event) {
    if (const auto alive = std::static_pointer_cast<AVPlayerViewController>(weak.lock())) alive->heard(event);
  });
  showProgress();
}

// --- the video

void AVPlayerViewController::heard(AVPlayerEvent event) {
  switch (event) {
    case AVPlayerEvent::ReadyToPlay:
    case AVPlayerEvent::RateChanged:
      return showProgress();
    case AVPlayerEvent::FailedToPlay:
      if (const auto& error = player_ ? player_->error() : std::nullopt)
        inspectRefusal("playVideo", error->localizedDescription);
      [[fallthrough]];
    case AVPlayerEvent::DidPlayToEnd:
      return close();
  }
}

double AVPlayerViewController::duration() const {
  return player_ ? CMTimeGetSeconds(player_->asset()->duration()) : 0;
}

void AVPlayerViewController::showProgress() {
  if (!player_) return refresh_.reset();
  controls_->show({.loading = !player_->asset()->isLoaded(),
                   .playing = player_->isPlaying(),
                   .seconds = CMTimeGetSeconds(player_->currentTime()),
                   .duration = duration()});
  if (!player_->isPlaying() || !view()->isInWindow()) return refresh_.reset();
  if (refresh_) return;
  refresh_ = NSTimer::scheduledTimerWithTimeInterval(refreshInterval, [weak = weak_from_this()] {
    if (const auto alive = std::static_pointer_cast<AVPlayerViewController>(weak.lock()))
      alive->showProgress();
  });
}

// --- the person

// Before the video is known there is nothing to play: its start belongs to whoever presents.
void AVPlayerViewController::togglePlaying() {
  if (!player_ || !player_->asset()->isLoaded()) return;
  player_->isPlaying() ? player_->pause() : player_->play();
}

void AVPlayerViewController::seek(double seconds) {
  if (!player_ || duration() <= 0) return;
  const double target = std::clamp(seconds, 0.0, duration());
  player_->seekToTime({static_cast<int64_t>(target * milliseconds), milliseconds});
  showProgress();
}

bool AVPlayerViewController::pressesBegan(UIKey key) {
  if (!player_) return false;
  const double now = CMTimeGetSeconds(player_->currentTime());
  switch (key) {
    case UIKey::Space:
      togglePlaying();
      break;
    case UIKey::LeftArrow:
      seek(now - seekStep);
      break;
    case UIKey::RightArrow:
      seek(now + seekStep);
      break;
    case UIKey::UpArrow:
      changeVolume(volumeStep);
      break;
    case UIKey::DownArrow:
      changeVolume(-volumeStep);
      break;
    case UIKey::M:
      return false;
  }
  return true;
}

void AVPlayerViewController::changeVolume(float by) {
  player_->setVolume(player_->volume() + by);
  volumePlaybackNativeVideoChangeOMSD(player_->volume());
}

bool AVPlayerViewController::accessibilityPerformEscape() {
  close();
  return true;
}

// --- coming and going

void AVPlayerViewController::viewWillAppear(bool) {
  if (std::exchange(resumes_, false) && player_) player_->play();
}

void AVPlayerViewController::viewWillDisappear(bool) {
  if (closed_ || !player_) return;
  resumes_ = player_->isPlaying();
  player_->pause();
  refresh_.reset();
  // The window was hidden, or what presented this has gone, which will have happened by the next turn.
  auto* platform = Platform::currentOrNull();
  if (!platform) return;
  platform->mainQueue().post([weak = weak_from_this()] {
    const auto alive = std::static_pointer_cast<AVPlayerViewController>(weak.lock());
    if (alive && !alive->presentingViewController()) alive->close();
  });
}

void AVPlayerViewController::close() {
  if (std::exchange(closed_, true)) return;
  const auto alive = shared_from_this();
  refresh_.reset();
  AtOnce coordinator;
  if (const auto delegate = delegate_.lock()) delegate->playerViewController(*this, coordinator);
  if (const auto player = std::exchange(player_, nullptr)) player->cancel();
  finishOMSDKSession();
  dismissViewControllerAnimated(true, nullptr);
}

}  // namespace velto
