// The geometry of rich-media commands in a banner, its close buttons, orientation and volume.
#include "velto/core/VeltoUtilities.h"

#include "UITest.h"

namespace velto {
namespace {

using namespace std::chrono_literals;

class BannerMRAIDTest : public test::UITest {
 protected:
  BannerMRAIDTest() { loadAd(*owner, markup("<script src='mraid.js'></script>")); }
  CGRect own() { return host.view()->frame(); }
  CGRect web() { return frameInWindow(*host.webView(), window->view()); }
  const CGRect normal{{35, 47}, {320, 50}};
  std::shared_ptr<VeltoBannerViewController> owner = banner(VeltoBannerPositionTop);
  VeltoBannerViewControllerPrivate& host = *owner->vc();
};

TEST_F(BannerMRAIDTest, ExpandCoversTheSafeAreaWithTheSamePageAndComesBack) {
  ASSERT_TRUE(host.veltoGetMRAIDHandler());
  EXPECT_EQ(host.ad()->mraidHandler, host.veltoGetMRAIDHandler());
  const auto* webView = host.webView().get();
  host.shownAd()->veltoMRAIDExpand(std::nullopt, VeltoCloseButtonUIConfiguration::defaultForMRAID());
  platform->runUntilIdle();
  EXPECT_EQ(own(), (CGRect{{0, 47}, {390, 763}}));
  EXPECT_EQ(web(), own());
  EXPECT_EQ(host.webView().get(), webView);
  EXPECT_EQ(page().loads().size(), 1U) << "not loaded again";
  host.shownAd()->veltoMRAIDCloseExpand();
  platform->runUntilIdle();
  EXPECT_EQ(own(), normal);
  EXPECT_EQ(web(), normal);
  host._expandActionInMainWebView(0);
  host.shownAd()->_tapCloseButtonExpand();
  platform->runUntilIdle();
  EXPECT_EQ(own(), normal);
}

TEST_F(BannerMRAIDTest, ResizeStandsAtTheBottomWhateverItsOffset) {
  const auto property = std::make_shared<VeltoMRAIDPropertyResize>();
  property->frame = {{5, -100}, {300, 250}};
  property->allowOffscreen = 1;
  host.shownAd()->veltoMRAIDResize(property, VeltoCloseButtonUIConfiguration::defaultForMRAID());
  platform->advance(99ms);
  EXPECT_EQ(own(), (CGRect{{45, 560}, {300, 250}}));
  EXPECT_EQ(web(), own());
  EXPECT_TRUE(host.webView()->subviews().empty()) << "the close button comes a tenth of a second later";
  platform->advance(2ms);
  ASSERT_EQ(host.webView()->subviews().size(), 1U);
  EXPECT_EQ(host.webView()->subviews()[0]->frame(), (CGRect{{250, 0}, {50, 50}}));

  delegate->heard.clear();
  window->tap({320, 580});  // the close button, in the window
  platform->advance(200ms);
  EXPECT_EQ(own(), normal);
  EXPECT_TRUE(host.webView()->subviews().empty());
  EXPECT_TRUE(delegate->heard.empty()) << "closing is no press of the ad";

  host.shownAd()->veltoMRAIDResize(nullptr, VeltoCloseButtonUIConfiguration::defaultForMRAID());
  owner.reset();
  platform->advance(1s);  // the step a tenth later finds nobody
}

TEST_F(BannerMRAIDTest, FullScreenFrames) {
  EXPECT_EQ(host.shownAd()->veltoMRAIDGetFullscreenFrame(), (CGRect{{0, 47}, {390, 763}}));
  EXPECT_EQ(host.getFullScreenFrameFor(window->controller()->view(), nullptr), CGRect{});
  EXPECT_EQ(host.getFullScreenFrameFor(nullptr, window->controller()), CGRect{});
  platform->device().facts.systemVersion = "10.3";
  EXPECT_EQ(host.shownAd()->veltoMRAIDGetFullscreenFrame(), (CGRect{{0, 47}, {390, 763}}));
}

TEST_F(BannerMRAIDTest, OrientationIsForcedAndRestored) {
  auto& device = platform->device().facts;
  device.orientation = 3;
  host.setOrientation(0, true);
  EXPECT_EQ(device.orientation, 3);
  host.setOrientation(1, true);
  EXPECT_EQ(device.orientation, 1);
  EXPECT_EQ(platform->application().rotationAttempts, 1);
  host.shownAd()->veltoMRAIDCloseExpand();
  EXPECT_EQ(device.orientation, 3) << "what it was before the ad forced it";
  host.setOrientation(4, false);
  host.shownAd()->veltoMRAIDCloseExpand();
  EXPECT_EQ(device.orientation, 4) << "nothing was remembered";
}

}  // namespace
}  // namespace velto
