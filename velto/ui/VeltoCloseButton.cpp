// The close button: a black disc with a white rim and title, or nothing but a place to tap.
#include "velto/ui/VeltoCloseButton.h"

#include "velto/network/FoundationSDKVelto.h"

#include <algorithm>
#include <cmath>

namespace velto {
namespace {

constexpr double pressedShade = 0.4;
constexpr double disabledAlpha = 0.8;
constexpr double titleSize = 18;
constexpr double shadowOpacity = 0.8;
constexpr double shadowRadius = 8;
constexpr double defaultLineWidth = 2;
constexpr float visibleMargin = 16;  // points
constexpr float visibleSize = 33;
constexpr float closeRegion = 50;  // as large as MRAID has it

// Truncated; a server may send any number.
int64_t wholeSeconds(double seconds) {
  constexpr double most = 999'999'999;
  return std::isnan(seconds) ? 0 : static_cast<int64_t>(std::clamp(seconds, -most, most));
}

}  // namespace

VeltoCloseButtonUIConfiguration VeltoCloseButtonUIConfiguration::configurationWith(uint64_t buttonType,
                                                                                   int64_t position,
                                                                                   uint64_t margin,
                                                                                   uint64_t size) {
  VeltoCloseButtonUIConfiguration made;
  made.margin = margin == 0 ? visibleMargin : 0;
  made.size = size == 0 ? visibleSize : closeRegion;
  made.buttonType = buttonType;
  made.position = position;
  return made;
}

VeltoCloseButtonUIConfiguration VeltoCloseButtonUIConfiguration::defaultForInterstitial() {
  return configurationWith(VeltoCloseButtonRound, VeltoClosePositionTopRight, 0, 0);
}

VeltoCloseButtonUIConfiguration VeltoCloseButtonUIConfiguration::defaultForMRAIDWith(int64_t position) {
  return configurationWith(VeltoCloseButtonInvisible, position, 1, 1);
}

VeltoCloseButtonUIConfiguration VeltoCloseButtonUIConfiguration::defaultForMRAID() {
  return defaultForMRAIDWith(VeltoClosePositionTopRight);
}

std::shared_ptr<VeltoCloseButton> VeltoCloseButton::buttonWithType(uint64_t type) {
  return buttonWithType(type, 0.0);
}

std::shared_ptr<VeltoCloseButton> VeltoCloseButton::buttonWithType(uint64_t type,
                                                                   std::optional<double> timer) {
  return buttonWithType(type, UIColor::blackColor(), defaultLineWidth, UIColor::whiteColor(), timer);
}

std::shared_ptr<VeltoCloseButton> VeltoCloseButton::buttonWithType(uint64_t type, const UIColor& fillColor,
                                                                   double lineWidth, const UIColor& lineColor,
                                                                   std::optional<double> timer) {
  std::shared_ptr<VeltoCloseButton> button(new VeltoCloseButton);
  button->closeButtonType_ = type;
  button->fillColor_ = fillColor;
  button->lineWidth_ = lineWidth;
  button->lineColor_ = lineColor;
  button->timerValue_ = timer;
  button->_init();
  return button;
}

void VeltoCloseButton::_init() {
  setTitleColor(lineColor_, UIControlStateNormal);
  setTitleColor(SDKVelto::darker(lineColor_, pressedShade), UIControlStateHighlighted);
  setTitleColor(lineColor_.colorWithAlphaComponent(disabledAlpha), UIControlStateDisabled);
  setTitleFontSize(titleSize);
  setShowsTouchWhenHighlighted(closeButtonType_ == VeltoCloseButtonInvisible);
  setTimer(timerValue_);
}

void VeltoCloseButton::setTimer(std::optional<double> seconds) {
  timerValue_ = seconds;
  const auto whole = wholeSeconds(seconds.value_or(0));
  setEnabled(whole <= 0);
  if (closeButtonType_ == VeltoCloseButtonRound) setTitle(whole > 0 ? std::to_string(whole) : "X");
}

void VeltoCloseButton::layoutSubviews() {
  if (closeButtonType_ != VeltoCloseButtonRound || shape()) return;
  if (bounds().size == CGSize{}) return;  // not laid out yet: a circle of no size would stay one
  setShape(ButtonShape{bounds(), frame().size.width / 2, fillColor_, lineColor_, lineWidth_, shadowOpacity,
                       shadowRadius});
}

void VeltoCloseButton::setHighlighted(bool highlighted) {
  UIButton::setHighlighted(highlighted);
  if (auto round = shape()) {
    round->fillColor = highlighted ? SDKVelto::darker(fillColor_, pressedShade) : fillColor_;
    round->strokeColor = highlighted ? SDKVelto::darker(lineColor_, pressedShade) : lineColor_;
    setShape(round);
  }
}

}  // namespace velto
