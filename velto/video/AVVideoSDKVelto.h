// Plays a video full screen over a controller that shows ads, and tells the video's
// measurement session how far it got. A mixin of the working controllers; main
// thread. Whoever plays a second video before the first is over ends the first.
#pragma once

#include "velto/platform/AVPlayer.h"
#include "velto/platform/foundation/NSURL.h"
#include "velto/video/AVPlayerViewController.h"

#include <memory>

namespace velto {

class AVVideoSDKVelto : public AVPlayerViewControllerDelegate {
 public:
  // Shows the player's screen and plays once it is there and the video is known. A URL that no player takes
  // shows nothing and tells nobody.
  void playVideoAt(const NSURL& url);

  // The screen is about to leave, for whatever reason.
  void playerViewController(AVPlayerViewController& screen,
                            UIViewControllerTransitionCoordinator& coordinator) override;

  void _startVideo();
  void _addBoundaryTimeObserver();
  void _evaluateCurrentTime();

  // Of the last video, also after its end.
  const std::shared_ptr<AVAsset>& asset() const { return asset_; }
  const std::shared_ptr<AVPlayer>& player() const { return player_; }
  const std::shared_ptr<AVPlayerViewController>& playerViewController() const {
    return playerViewController_;
  }
  const AVPlayer::Token& timeObserverToken() const { return timeObserverToken_; }

 protected:
  virtual UIViewController& viewController() = 0;
  // The ad goes, and a video that plays goes with it. To be called by the controller's destructor too.
  void closeVideo();

 private:
  void removeTimeObserver();

  std::shared_ptr<AVAsset> asset_;
  std::shared_ptr<AVPlayer> player_;
  std::shared_ptr<AVPlayerViewController> playerViewController_;
  AVPlayer::Token timeObserverToken_;
};

}  // namespace velto
