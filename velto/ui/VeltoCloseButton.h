// The close button of interstitials and of expanded or resized ads, with its countdown. Main thread.
#pragma once

#include "velto/platform/ui/UIButton.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace velto {

enum VeltoCloseButtonType : uint64_t {
  VeltoCloseButtonRound = 0,      // drawn
  VeltoCloseButtonInvisible = 1,  // a tap area over a button that the ad draws itself
};

enum VeltoClosePosition : int64_t {
  VeltoClosePositionTopLeft = 0,
  VeltoClosePositionTopCenter = 1,
  VeltoClosePositionTopRight = 2,
  VeltoClosePositionCenter = 3,
  VeltoClosePositionBottomLeft = 4,
  VeltoClosePositionBottomCenter = 5,
  VeltoClosePositionBottomRight = 6,
};

// Where the button stands and how large it is. A plain value.
class VeltoCloseButtonUIConfiguration {
 public:
  // The flags choose between two margins (16 or 0 points) and
  // two sizes (33 or 50 points): 0 the first, else the second.
  static VeltoCloseButtonUIConfiguration configurationWith(uint64_t buttonType, int64_t position,
                                                           uint64_t margin, uint64_t size);
  static VeltoCloseButtonUIConfiguration defaultForInterstitial();
  static VeltoCloseButtonUIConfiguration defaultForMRAIDWith(int64_t position);
  static VeltoCloseButtonUIConfiguration defaultForMRAID();

  float margin = 0;  // points from the container's edges
  float size = 0;    // points, the side of the square
  uint64_t buttonType = VeltoCloseButtonRound;
  int64_t position = VeltoClosePositionTopLeft;
};

class VeltoCloseButton : public UIButton {
 public:
  static std::shared_ptr<VeltoCloseButton> buttonWithType(uint64_t type);
  static std::shared_ptr<VeltoCloseButton> buttonWithType(uint64_t type, std::optional<double> timer);
  static std::shared_ptr<VeltoCloseButton> buttonWithType(uint64_t type, const UIColor& fillColor,
                                                          double lineWidth, const UIColor& lineColor,
                                                          std::optional<double> timer);

  // Seconds until it can be pressed; the title shows them, whole, and then an X.
  void setTimer(std::optional<double> seconds);
  void setHighlighted(bool highlighted) override;
  void layoutSubviews() override;

  std::optional<ButtonShape> roundLayer() const { return shape(); }
  double lineWidth() const { return lineWidth_; }
  const UIColor& fillColor() const { return fillColor_; }
  const UIColor& lineColor() const { return lineColor_; }
  std::optional<double> timerValue() const { return timerValue_; }
  uint64_t closeButtonType() const { return closeButtonType_; }

 private:
  VeltoCloseButton() = default;
  void _init();

  double lineWidth_ = 0;
  UIColor fillColor_;
  UIColor lineColor_;
  std::optional<double> timerValue_;
  uint64_t closeButtonType_ = VeltoCloseButtonRound;
};

}  // namespace velto
