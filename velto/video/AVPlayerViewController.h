// The player's screen: one video over all of the window, with controls. Made and presented by
// AVVideoSDKVelto; main thread. It leaves when the person closes it, at the video's end, when the video
// fails, and when what presented it goes. Leaving, it tells its delegate, lets its player go and ends its
// measurement session; a screen that left has no player and does not come back.
//
// Keys: space plays and pauses, left and right move five
// seconds, up and down change the volume, Escape closes.
#pragma once

#include "velto/measurement/UIViewControllerOMSDKSDKVelto.h"
#include "velto/platform/AVPlayer.h"
#include "velto/platform/NSTimer.h"
#include "velto/platform/ui/UIViewControllerTransitioning.h"
#include "velto/video/PlayerControls.h"

#include <memory>

namespace velto {

class AVPlayerViewController;

class AVPlayerViewControllerDelegate {
 public:
  virtual ~AVPlayerViewControllerDelegate() = default;
  // playerViewController:willEndFullScreenPresentationWithAnimationCoordinator:
  // once, while the player is still there.
  virtual void playerViewController(AVPlayerViewController& screen,
                                    UIViewControllerTransitionCoordinator& coordinator) = 0;
};

class AVPlayerViewController final : public UIViewController, public UIViewControllerOMSDKSDKVelto {
 public:
  static std::shared_ptr<AVPlayerViewController> make();
  ~AVPlayerViewController() override;

  // Once, before it is presented.
  void setPlayer(const std::shared_ptr<AVPlayer>& player);
  const std::shared_ptr<AVPlayer>& player() const { return player_; }
  void setDelegate(std::weak_ptr<AVPlayerViewControllerDelegate> delegate) {
    delegate_ = std::move(delegate);
  }

  // Leaves; nothing when it left already.
  void close();

  bool accessibilityPerformEscape() override;
  bool pressesBegan(UIKey key) override;
  void viewWillAppear(bool animated) override;
  void viewWillDisappear(bool animated) override;

  const std::shared_ptr<PlayerControls>& controls() const { return controls_; }

 private:
  AVPlayerViewController() = default;
  UIViewController& viewController() override { return *this; }

  void heard(AVPlayerEvent event);
  void togglePlaying();
  void seek(double seconds);
  void changeVolume(float by);
  void showProgress();
  double duration() const;

  std::shared_ptr<AVPlayer> player_;
  std::shared_ptr<PlayerControls> controls_;
  std::weak_ptr<AVPlayerViewControllerDelegate> delegate_;
  std::unique_ptr<NSTimer> refresh_;  // while the video moves in a window
  bool closed_ = false;
  bool resumes_ = false;  // was playing when its window went out of sight
};

}  // namespace velto
