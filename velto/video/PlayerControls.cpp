// The controls of a video.
#include "velto/video/PlayerControls.h"

#include "velto/platform/Platform.h"
#include "velto/platform/UIApplication.h"
#include "velto/platform/ViewSystem.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

namespace velto {
namespace {

constexpr double barHeight = 44;  // points, as all below
constexpr double barLevel = 0.1;
constexpr double barAlpha = 0.7;
constexpr double playWidth = 72;
constexpr double timeWidth = 120;
constexpr double fontSize = 15;
constexpr double margin = 12;
constexpr double lineHeight = 4;
constexpr double trackAlpha = 0.3;
constexpr double closeSize = 32;

class TextButton final : public UIButton {};

// As high as the bar, so that a finger finds it; the line that is seen is thin.
class ProgressBar final : public UIView {
 public:
  explicit ProgressBar(std::function<void(double)> seek)
      : UIView(Platform::current().views().makeView()), seek_(std::move(seek)) {
    peer().setTouchable(true);
  }
  void peerTapped(CGPoint point) override {
    if (bounds().size.width > 0) seek_(std::clamp(point.x / bounds().size.width, 0.0, 1.0));
  }

 private:
  std::function<void(double)> seek_;
};

std::string clockText(double seconds) {
  const auto whole = static_cast<long>(std::clamp(std::floor(seconds), 0.0, 1e8));
  char text[32];
  const long hours = whole / 3600;
  if (hours > 0)
    std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", hours, whole / 60 % 60, whole % 60);
  else
    std::snprintf(text, sizeof text, "%ld:%02ld", whole / 60, whole % 60);
  return text;
}

std::string timeText(const PlayerControls::State& state) {
  if (state.loading) return "Loading";
  if (state.duration <= 0) return clockText(state.seconds);
  return clockText(state.seconds) + " / " + clockText(state.duration);
}

}  // namespace

PlayerControls::PlayerControls() : UIView(Platform::current().views().makeView()) {}

std::shared_ptr<PlayerControls> PlayerControls::make(Actions actions) {
  std::shared_ptr<PlayerControls> controls(new PlayerControls);
  controls->bar_ = UIView::make();
  const bool opaque = Platform::current().application().isReduceTransparencyEnabled();
  controls->bar_->setBackgroundColor(UIColor::colorWithWhite(barLevel, opaque ? 1 : barAlpha));
  controls->play_ = std::make_shared<TextButton>();
  controls->play_->addAction(std::move(actions.toggle), UIControlEventTouchUpInside);
  controls->time_ = std::make_shared<TextButton>();
  controls->time_->setEnabled(false);
  for (const auto& text : {controls->play_, controls->time_}) text->setTitleFontSize(fontSize);
  controls->track_ = std::make_shared<ProgressBar>(std::move(actions.seek));
  const auto line = UIView::make();
  line->setBackgroundColor(UIColor::colorWithWhite(1, trackAlpha));
  controls->played_ = UIView::make();
  controls->played_->setBackgroundColor(UIColor::whiteColor());
  controls->track_->addSubview(line);
  controls->track_->addSubview(controls->played_);
  for (const auto& part : {std::static_pointer_cast<UIView>(controls->play_),
                           std::static_pointer_cast<UIView>(controls->time_), controls->track_})
    controls->bar_->addSubview(part);
  controls->close_ = VeltoCloseButton::buttonWithType(VeltoCloseButtonRound);
  controls->close_->addAction(std::move(actions.close), UIControlEventTouchUpInside);
  controls->addSubview(controls->bar_);
  controls->addSubview(controls->close_);
  controls->state_.playing = true;  // other than what comes first
  controls->show({});
  return controls;
}

void PlayerControls::show(const State& state) {
  if (state == std::exchange(state_, state)) return;
  play_->setTitle(state.playing ? "Pause" : "Play");
  play_->setEnabled(!state.loading);
  if (const auto text = timeText(state); text != time_->title()) time_->setTitle(text);
  setNeedsLayout();
}

double PlayerControls::shownProgress() const {
  return state_.duration > 0 ? std::clamp(state_.seconds / state_.duration, 0.0, 1.0) : 0;
}

void PlayerControls::layoutSubviews() {
  const CGRect area = safeAreaFrame();
  // Letters may be large; the line of what was played has what is left.
  const double scale = std::clamp(Platform::current().application().textScale(), 1.0,
                                  std::max(1.0, area.size.width / (2 * (playWidth + timeWidth))));
  const double height = std::min(barHeight * scale, area.size.height);
  const double play = playWidth * scale, time = timeWidth * scale;
  bar_->setFrame({{area.minX(), area.maxY() - height}, {area.size.width, height}});
  play_->setFrame({{0, 0}, {play, height}});
  time_->setFrame({{play, 0}, {time, height}});
  const double left = play + time + margin;
  track_->setFrame({{left, 0}, {std::max(0.0, area.size.width - left - margin), height}});
  const double top = (height - lineHeight) / 2;
  const CGSize line{track_->frame().size.width, lineHeight};
  track_->subviews().front()->setFrame({{0, top}, line});
  played_->setFrame({{0, top}, {line.width * shownProgress(), lineHeight}});
  close_->setFrame({{area.maxX() - closeSize - margin, area.minY() + margin}, {closeSize, closeSize}});
}

}  // namespace velto
