// What the library paints itself follows how people have set up their desktop.
#include "velto/platform/Platform.h"
#include "velto/platform/UIApplication.h"
#include "velto/platform/ui/UIViewAnimation.h"
#include "velto/video/PlayerControls.h"

#include "DisplayTest.h"

namespace velto::test {
namespace {

constexpr uint32_t white = 0xffffff;

class AppearanceTest : public DisplayTest {
 protected:
  AppearanceTest() {
    window_ = newWindow(600, 300, painted(600, 300, 1, 0, 0));
    host_ = present(window_);
  }
  ~AppearanceTest() override { gtk_window_destroy(window_); }

  Picture controls() {
    const auto made = PlayerControls::make({});
    made->setFrame(host_->view()->bounds());
    made->show({.loading = false, .playing = true, .seconds = 5, .duration = 30});
    host_->view()->addSubview(made);
    host_->view()->layoutIfNeeded();
    runFrames(GTK_WIDGET(window_));
    auto picture = pictureOf(window_);
    made->removeFromSuperview();
    return picture;
  }
  // How high the letters of the button in the lower left corner are, or of the close button.
  static int lettersOf(const Picture& picture, int left, int right, int top, int bottom) {
    int first = bottom, last = top;
    for (int y = top; y < bottom; ++y)
      for (int x = left; x < right; ++x)
        if (picture.at(x, y) == white) first = std::min(first, y), last = y;
    return last - first + 1;
  }

  GtkWindow* window_;
  std::shared_ptr<UIViewController> host_;
};

TEST_F(AppearanceTest, FollowsTheDesktopsSettings) {
  auto* settings = gtk_settings_get_default();
  struct Row {
    const char* setting;
    std::function<void(const char*)> set;
    bool largeLetters, opaque;
  };
  const Picture usual = controls();
  const int letters = lettersOf(usual, 0, 72, 256, 300);
  const int closing = lettersOf(usual, 565, 580, 20, 36);
  EXPECT_GT(letters, 5);
  const auto set = [&](auto value) {
    return [=](const char* name) { g_object_set(settings, name, value, nullptr); };
  };
  for (const Row& row : {Row{"gtk-xft-dpi", set(144 * 1024), true, false},
                         Row{"gtk-theme-name", set("HighContrast"), false, true},
                         Row{"gtk-application-prefer-dark-theme", set(TRUE), false, false}}) {
    SCOPED_TRACE(row.setting);
    row.set(row.setting);
    const Picture now = controls();
    EXPECT_EQ(now.at(2, 298) != usual.at(2, 298), row.opaque) << "the bar lets the video be seen";
    EXPECT_EQ(now.at(2, 298) >> 16 == (now.at(2, 298) & 0xff), row.opaque) << "without a trace of red";
    const int grown = lettersOf(now, 0, row.largeLetters ? 108 : 72, row.largeLetters ? 234 : 256, 300);
    EXPECT_EQ(grown > letters, row.largeLetters);
    EXPECT_EQ(grown > 1.3 * letters, row.largeLetters) << "so much larger are all";
    EXPECT_GE(lettersOf(now, 565, 580, 20, 36), closing);
    gtk_settings_reset_property(settings, row.setting);
  }
  EXPECT_EQ(controls().pixels, usual.pixels);
}

TEST_F(AppearanceTest, WhatMovesIsThereAtOnceForThoseWhoWantNoMotion) {
  auto* settings = gtk_settings_get_default();
  const auto view = UIView::make();
  host_->view()->addSubview(view);
  g_object_set(settings, "gtk-enable-animations", FALSE, nullptr);
  bool done = false;
  constexpr double hour = 3600;
  animateWithDuration(hour, hour, view, {CGRect{{0, 0}, {10, 10}}, 0.5}, [&](bool) { done = true; });
  EXPECT_TRUE(runUntil([&] { return done; }));
  g_object_set(settings, "gtk-enable-animations", TRUE, nullptr);
}

}  // namespace
}  // namespace velto::test
