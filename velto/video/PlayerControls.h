// What a person plays a video with: a bar at the bottom with a button, the time and the progress, and a close
// button. Made by the player's screen, which does what the actions say; main thread.
#pragma once

#include "velto/platform/ui/UIButton.h"
#include "velto/ui/VeltoCloseButton.h"

#include <functional>
#include <memory>

namespace velto {

class PlayerControls final : public UIView {
 public:
  struct Actions {
    std::function<void()> toggle;
    std::function<void(double part)> seek;  // 0 … 1 of the video
    std::function<void()> close;
  };
  struct State {
    bool loading = true;
    bool playing = false;
    double seconds = 0;
    double duration = 0;  // 0: not known
    bool operator==(const State&) const = default;
  };

  static std::shared_ptr<PlayerControls> make(Actions actions);

  void show(const State& state);
  void layoutSubviews() override;

  UIButton& playButton() const { return *play_; }
  UIButton& closeButton() const { return *close_; }
  const UIButton& timeLabel() const { return *time_; }
  UIView& progressBar() const { return *track_; }
  double shownProgress() const;  // 0 … 1

 private:
  PlayerControls();

  State state_;
  std::shared_ptr<UIView> bar_;
  std::shared_ptr<UIButton> play_;
  std::shared_ptr<UIButton> time_;  // never enabled: a text
  std::shared_ptr<UIView> track_;
  std::shared_ptr<UIView> played_;
  std::shared_ptr<VeltoCloseButton> close_;
};

}  // namespace velto
