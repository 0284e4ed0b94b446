// The close button: configurations, countdown, looks, and where the pins put it.
#include <cmath>
#include <limits>

#include "UITest.h"

namespace velto {
namespace {

class CloseButtonTest : public test::UITest {
 protected:
  static const ButtonLook& look(const UIButton& button) {
    return dynamic_cast<headless::RecordingButtonPeer&>(button.peer()).look();
  }
};

TEST_F(CloseButtonTest, CountsDownInWholeSeconds) {
  const auto button = VeltoCloseButton::buttonWithType(0, 2.9);
  EXPECT_EQ(button->title(), "2");
  for (const auto& [seconds, title, enabled] :
       std::vector<std::tuple<std::optional<double>, std::string, bool>>{
           {1.0, "1", false},
           {0.95, "X", true},
           {-3, "X", true},
           {5, "5", false},
           {std::nullopt, "X", true},
           {std::numeric_limits<double>::infinity(), "999999999", false},
           {std::nan(""), "X", true}}) {
    button->setTimer(seconds);
    EXPECT_EQ(button->title(), title);
    EXPECT_EQ(button->isEnabled(), enabled);
  }
  const auto invisible = VeltoCloseButton::buttonWithType(1, 3.0);
  EXPECT_EQ(invisible->title(), "");
  EXPECT_FALSE(invisible->isEnabled());
  EXPECT_EQ(VeltoCloseButton::buttonWithType(0)->title(), "X");
}

TEST_F(CloseButtonTest, LooksOfTheThreeStates) {
  const auto button = VeltoCloseButton::buttonWithType(0, 1.0);
  window->view().addSubview(button);
  button->setFrame({{0, 0}, {33, 33}});
  EXPECT_EQ(look(*button).titleColor, UIColor::whiteColor().colorWithAlphaComponent(0.8));
  ASSERT_TRUE(look(*button).shape);
  EXPECT_EQ(look(*button).shape->cornerRadius, 16.5);
  button->setTimer(0);
  EXPECT_EQ(look(*button).titleColor, UIColor::whiteColor());
  button->setHighlighted(true);
  EXPECT_NEAR(look(*button).shape->fillColor.components()->red, -0.4, 1e-12);
  button->setHighlighted(false);
  EXPECT_EQ(look(*button).shape->strokeColor, UIColor::whiteColor());

  const auto invisible = VeltoCloseButton::buttonWithType(1);
  window->view().addSubview(invisible);
  invisible->setFrame({{0, 0}, {50, 50}});
  EXPECT_FALSE(look(*invisible).shape);
}

TEST_F(CloseButtonTest, EveryPositionIsPinnedDownwardAndLeftwardByTheMargin) {
  const auto controller = banner();
  const auto container = UIView::make();
  window->view().addSubview(container);
  container->setFrame({{0, 100}, {300, 200}});
  int pressed = 0;
  // Margin 16, size 33: at the top right it stands inside, elsewhere the signs push it out, as pages know it.
  const double middle = 150 - 16.5 - 16;
  const std::vector<CGPoint> expected{{-16, 16},  {middle, 16},  {251, 16}, {middle, 99.5},
                                      {-16, 183}, {middle, 183}, {251, 183}};
  for (int64_t position = 0; position <= 9; ++position) {
    const auto button = controller->vc()->addCloseButtonInView(
        container, VeltoCloseButtonUIConfiguration::configurationWith(0, position, 0, 0), [&] { ++pressed; },
        std::nullopt);
    platform->runUntilIdle();
    const CGPoint place = position < 7 ? expected[static_cast<size_t>(position)] : expected[0];
    EXPECT_EQ(button->frame(), (CGRect{place, {33, 33}})) << position;
    button->sendTouchUpInside();
    button->removeFromSuperview();
  }
  EXPECT_EQ(pressed, 10);
}

}  // namespace
}  // namespace velto
