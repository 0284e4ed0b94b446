// The controls of a video ad.
#include "velto/video/VideoAdControls.h"

#include "velto/platform/Platform.h"
#include "velto/platform/UIApplication.h"
#include "velto/platform/ViewSystem.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <initializer_list>
#include <utility>

namespace velto {
namespace {

constexpr double pillHeight = 36;  // points, as all below
constexpr double pillPadding = 14;
constexpr double pillFontSize = 14;
constexpr double letterWidth = 0.56;  // of the font's size, on the average and generously
constexpr double pillMargin = 12;
constexpr double gap = 8;
constexpr double leastScale = 0.65;  // of all of these, in a small view
constexpr double playedHeight = 4;
constexpr double pillLevel = 0.07, pillAlpha = 0.72, rimAlpha = 0.35, unplayedAlpha = 0.3, dimmed = 0.75;

std::string inUsersLanguage(const char* text) {
  return Platform::current().application().translated(text);
}

// The words with each "%s" replaced in turn.
std::string filled(std::string text, std::initializer_list<std::string> parts) {
  size_t from = 0;
  for (const auto& part : parts) {
    const auto place = text.find("%s", from);
    if (place == std::string::npos) break;
    text.replace(place, 2, part);
    from = place + part.size();
  }
  return text;
}

size_t letters(const std::string& utf8) {
  return static_cast<size_t>(std::count_if(
      utf8.begin(), utf8.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xc0) != 0x80; }));
}

class Pill final : public UIButton {
 public:
  Pill() {
    setTitleFontSize(pillFontSize);
    setTitleColor(UIColor::colorWithWhite(1, dimmed), UIControlStateDisabled);
  }
  bool staysInFront() const override { return true; }  // of icons, which come later
  // Large letters have the usual room around them; in a small view both are smaller.
  double wantedWidth(double scale) const {
    return static_cast<double>(letters(title())) * pillFontSize * letterWidth * scale +
           2 * pillPadding * std::min(scale, 1.0);
  }
  void layoutSubviews() override {
    const bool opaque = Platform::current().application().isReduceTransparencyEnabled();
    const auto level = isHighlighted() ? 4 * pillLevel : pillLevel;
    setShape(ButtonShape{bounds(), bounds().size.height / 2,
                         UIColor::colorWithWhite(level, opaque ? 1 : pillAlpha),
                         UIColor::colorWithWhite(1, rimAlpha), 1, 0, 0});
  }
  void setHighlighted(bool highlighted) override {
    UIButton::setHighlighted(highlighted);
    if (shape()) layoutSubviews();
  }
};

// All of the ad. A button, so that presses are its own and do not reach what the application has below; by the keyboard it plays
// and pauses, so that nobody opens a shop who meant to stop a film.
class Surface final : public UIButton {
 public:
  explicit Surface(std::function<void(std::optional<CGPoint>)> press) : press_(std::move(press)) {
    for (const auto state : {UIControlStateNormal, UIControlStateHighlighted, UIControlStateDisabled})
      setTitleColor(UIColor::clearColor(), state);
    setTitle("Advertisement");  // for screen readers alone
  }
  void peerTapped(CGPoint point) override {
    const auto self = shared_from_this();
    const auto press = press_;
    press(point);
  }

 private:
  std::function<void(std::optional<CGPoint>)> press_;
};

}  // namespace

std::string videoAdLabel(size_t number, size_t count, std::optional<double> secondsLeft) {
  auto text = count > 1
                  ? filled(inUsersLanguage("Ad %s of %s"), {std::to_string(number), std::to_string(count)})
                  : inUsersLanguage("Ad");
  if (!secondsLeft) return text;
  constexpr int minute = 60;
  const auto left = static_cast<int>(std::ceil(std::clamp(*secondsLeft, 0.0, 1e6)));
  char time[32];
  std::snprintf(time, sizeof time, " · %d:%02d", left / minute, left % minute);
  return text + time;
}

VideoAdControls::VideoAdControls() : UIView(Platform::current().views().makeView()) {}

std::shared_ptr<VideoAdControls> VideoAdControls::make(Actions actions, bool visible) {
  std::shared_ptr<VideoAdControls> controls(new VideoAdControls);
  controls->isVisible_ = visible;
  controls->surface_ = std::make_shared<Surface>(actions.press);
  controls->surface_->addAction(actions.toggle, UIControlEventTouchUpInside);
  controls->track_ = UIView::make();
  controls->track_->setBackgroundColor(UIColor::colorWithWhite(1, unplayedAlpha));
  controls->played_ = UIView::make();
  controls->played_->setBackgroundColor(UIColor({1, 0.8, 0.1, 1}));
  const auto pill = [&](std::function<void()> action) {
    auto made = std::make_shared<Pill>();
    if (action)
      made->addAction(std::move(action), UIControlEventTouchUpInside);
    else
      made->setEnabled(false);
    return made;
  };
  controls->label_ = pill(nullptr);
  controls->play_ = pill(std::move(actions.toggle));
  controls->mute_ = pill(std::move(actions.mute));
  controls->more_ = pill([press = actions.press] { press(std::nullopt); });
  controls->skip_ = pill(std::move(actions.skip));
  // In the order in which the keyboard goes through them.
  controls->addSubview(controls->surface_);
  controls->addSubview(controls->track_);
  controls->addSubview(controls->played_);
  for (const auto& button :
       {controls->label_, controls->play_, controls->mute_, controls->more_, controls->skip_})
    controls->addSubview(button);
  for (const auto& part :
       {std::static_pointer_cast<UIView>(controls->label_), std::static_pointer_cast<UIView>(controls->play_),
        std::static_pointer_cast<UIView>(controls->mute_), controls->track_, controls->played_})
    part->setHidden(!visible);
  controls->state_.playing = false;  // other than what comes first
  controls->show({});
  return controls;
}

void VideoAdControls::setText(UIButton& button, const std::string& text) {
  if (button.title() == text) return;
  const bool isWider = letters(button.title()) != letters(text);
  button.setTitle(text);
  if (isWider) setNeedsLayout();
}

void VideoAdControls::show(const State& state) {
  const auto before = std::exchange(state_, state);
  if (before == state) return;
  setText(*label_, state.label);
  setText(*play_, inUsersLanguage(state.playing ? "Pause" : "Play"));
  setText(*mute_, inUsersLanguage(state.muted ? "Unmute" : "Mute"));
  setText(*more_, inUsersLanguage("Learn more"));
  more_->setHidden(!isVisible_ || !state.leadsSomewhere);
  skip_->setHidden(!state.skippable);
  const bool mayNow = state.skipsIn <= 0;
  setText(*skip_, mayNow ? inUsersLanguage("Skip")
                         : filled(inUsersLanguage("Skip in %s"), {std::to_string(state.skipsIn)}));
  if (skip_->isEnabled() != mayNow) skip_->setEnabled(mayNow);
  if (before.played != state.played) {
    auto line = track_->frame();
    line.size.width *= state.played;
    played_->setFrame(line);
  }
  if (before.leadsSomewhere != state.leadsSomewhere || before.skippable != state.skippable) setNeedsLayout();
}

void VideoAdControls::layoutSubviews() {
  surface_->setFrame(bounds());
  const CGRect area = safeAreaFrame();
  const auto wide = [](const std::shared_ptr<UIButton>& button, double scale) {
    return static_cast<const Pill&>(*button).wantedWidth(scale);
  };
  // Letters may be large, as far as there is room for what stands side by side, and are smaller in a small view.
  const auto usual = [&](std::initializer_list<std::shared_ptr<UIButton>> row) {
    double all = 2 * pillMargin;
    for (const auto& button : row)
      if (!button->isHidden()) all += wide(button, 1) + gap;
    return std::max(all - gap, 1.0);
  };
  const double needed = std::max(usual({label_, more_}), usual({play_, mute_, skip_}));
  const double scale = std::clamp(area.size.width / needed, leastScale,
                                  std::max(1.0, Platform::current().application().textScale()));
  const double small = std::min(scale, 1.0), margin = pillMargin * small, space = gap * small;
  const double height = pillHeight * scale;
  const double right = area.maxX() - margin, left = area.minX() + margin;
  const double bottom = area.maxY() - playedHeight - margin - height;
  // Where even that is not enough, what stands on the right has a row of its own.
  const auto placeRow = [&](std::initializer_list<std::shared_ptr<UIButton>> lefts,
                            const std::shared_ptr<UIButton>& last, double y, double step) {
    double x = left;
    for (const auto& button : lefts) {
      const double width = std::min(wide(button, scale), std::max(0.0, right - x));
      button->setFrame({{x, y}, {width, height}});
      static_cast<Pill&>(*button).setTitleFontSize(pillFontSize * small);
      if (!button->isHidden()) x += width + space;
    }
    const double width = std::min(wide(last, scale), std::max(0.0, right - left));
    constexpr double rounding = 0.5;
    const bool hasRoom = last->isHidden() || x + width <= right + rounding;
    last->setFrame({{right - width, hasRoom ? y : y + step}, {width, height}});
    static_cast<Pill&>(*last).setTitleFontSize(pillFontSize * small);
  };
  placeRow({label_}, more_, area.minY() + margin, height + space);
  placeRow({play_, mute_}, skip_, bottom, -height - space);
  const CGRect line{{area.minX(), area.maxY() - playedHeight}, {area.size.width, playedHeight}};
  track_->setFrame(line);
  played_->setFrame({line.origin, {line.size.width * state_.played, playedHeight}});
}

}  // namespace velto
