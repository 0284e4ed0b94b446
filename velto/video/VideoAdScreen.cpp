// The screen of video ads.
#include "velto/video/VideoAdScreen.h"

#include <utility>

namespace velto {
namespace {

constexpr unsigned fillsTheScreen = UIViewAutoresizingFlexibleWidth | UIViewAutoresizingFlexibleHeight;

void fillWith(UIView& around, const std::shared_ptr<UIView>& view) {
  view->setFrame(around.bounds());
  view->setAutoresizingMask(fillsTheScreen);
  around.addSubview(view);
}

}  // namespace

std::shared_ptr<VideoAdScreen> VideoAdScreen::make(bool showsControls) {
  std::shared_ptr<VideoAdScreen> screen(new VideoAdScreen);
  screen->view()->setBackgroundColor(UIColor::blackColor());
  screen->stage_ = UIView::make();
  screen->stage_->setBackgroundColor(UIColor::blackColor());
  auto* self = screen.get();  // the controls are inside the screen, and go before it
  screen->controls_ = VideoAdControls::make(
      {.toggle = [self] { self->tell([](Listener& to) { to.screenToggled(); }); },
       .mute = [self] { self->tell([](Listener& to) { to.screenMuted(); }); },
       .skip = [self] { self->tell([](Listener& to) { to.screenSkipped(); }); },
       .press = [self](auto place) { self->tell([&](Listener& to) { to.screenPressed(place); }); }},
      showsControls);
  for (const auto& view : {screen->stage_, std::static_pointer_cast<UIView>(screen->controls_)})
    fillWith(*screen->view(), view);
  return screen;
}

VideoAdScreen::~VideoAdScreen() {
  controls_->removeFromSuperview();
}

void VideoAdScreen::tell(const std::function<void(Listener&)>& what) const {
  if (const auto listener = listener_.lock()) what(*listener);
}

void VideoAdScreen::fill(const std::shared_ptr<UIView>& host) {
  fillWith(*host, view());
}

void VideoAdScreen::presentOver(const std::shared_ptr<UIViewController>& controller,
                                std::function<void()> there) {
  isWhole_ = true;
  controller->presentViewController(shared_from_this(), true, std::move(there));
}

void VideoAdScreen::remove() {
  listener_.reset();
  if (presentingViewController()) return dismissViewControllerAnimated(true, nullptr);
  view()->removeFromSuperview();
}

void VideoAdScreen::setPicture(std::unique_ptr<ViewPeer> picture) {
  if (const auto before = std::exchange(picture_, nullptr)) before->removeFromSuperview();
  if (!picture) return;
  picture_ = UIView::makeWithPeer(std::move(picture));
  fillWith(*stage_, picture_);
}

bool VideoAdScreen::accessibilityPerformEscape() {
  tell([](Listener& to) { to.screenEscaped(); });
  return true;  // what lies below it is not meant
}

bool VideoAdScreen::pressesBegan(UIKey key) {
  if (key != UIKey::Space && key != UIKey::M) return false;
  tell([&](Listener& to) { key == UIKey::Space ? to.screenToggled() : to.screenMuted(); });
  return true;
}

void VideoAdScreen::presenterDidGo() {
  tell([](Listener& to) { to.screenWentAway(); });
}

}  // namespace velto
