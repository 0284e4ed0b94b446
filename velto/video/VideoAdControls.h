// What a person steers a video ad with: what it is and how long it lasts, playing, sound, where it leads, skipping. A press
// anywhere else is a press on the ad. Made by the ad's screen; main thread.
#pragma once

#include "velto/platform/ui/UIButton.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace velto {

class VideoAdControls final : public UIView {
 public:
  struct Actions {
    std::function<void()> toggle, mute, skip;
    // Where, in points from the upper left corner; nothing: by "learn more".
    std::function<void(std::optional<CGPoint>)> press;
  };
  struct State {
    std::string label;
    bool playing = true, muted = false, leadsSomewhere = false;
    bool skippable = false;
    int skipsIn = 0;    // seconds until it can be skipped
    double played = 0;  // 0 … 1
    bool operator==(const State&) const = default;
  };

  static std::shared_ptr<VideoAdControls> make(Actions actions, bool visible);

  void show(const State& state);
  void layoutSubviews() override;

  const UIButton& label() const { return *label_; }
  UIButton& surface() const { return *surface_; }
  UIButton& playButton() const { return *play_; }
  UIButton& muteButton() const { return *mute_; }
  UIButton& moreButton() const { return *more_; }
  UIButton& skipButton() const { return *skip_; }

 private:
  VideoAdControls();
  void setText(UIButton& button, const std::string& text);

  bool isVisible_ = true;  // the surface and "skip" are there in any case
  State state_;
  std::shared_ptr<UIButton> surface_, label_, play_, mute_, more_, skip_;
  std::shared_ptr<UIView> track_, played_;
};

// "Ad 1 of 2 · 0:12"; the time is left out where it is not known.
std::string videoAdLabel(size_t number, size_t count, std::optional<double> secondsLeft);

}  // namespace velto
