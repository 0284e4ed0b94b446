// Tests of BannerSlot on the in-memory platform: the ad server's answers, the page, the reader's finger and
// the time are all in the test's hand.
#include <gtest/gtest.h>
#include <velto/headless/VeltoHeadless.h>

#include "BannerSlot.h"

using namespace std::chrono_literals;

namespace {

struct BannerSlotTest : testing::Test {
  BannerSlotTest() {
    platform->setPagesFinishByThemselves(true);
    velto::VeltoFramework::addVeltoKey("news-app");
    slot = std::make_shared<BannerSlot>(window.controller());
  }

  void open() {
    slot->open({.age = 42});
    platform->runUntilIdle();
  }
  std::vector<velto::NSURLRequest> adRequests() { return platform->urlSession().requests("k=news-app"); }

  std::shared_ptr<velto::headless::Platform> platform = velto::headless::Platform::install();
  velto::headless::HostWindow window;
  std::shared_ptr<BannerSlot> slot;
  const velto::headless::Answer ad{
      .headers = {{"x-content", "html"}, {"x-width", "320"}, {"x-height", "50"}},
      .body = "<body onload=\"location.href = 'velto://loadFinished'\">Ad</body>"};
  const velto::headless::Answer none{.status = 204};
};

TEST_F(BannerSlotTest, TakesRoomOnlyOnceAnAdIsThere) {
  platform->urlSession().enqueue(none);
  platform->urlSession().respond("", ad);
  open();
  EXPECT_TRUE(slot->hasFailed());
  EXPECT_EQ(slot->height(), 0);

  platform->advance(30s);  // the next refresh brings an ad
  EXPECT_FALSE(slot->hasFailed());
  EXPECT_EQ(slot->height(), 50);
  EXPECT_EQ(adRequests().size(), 2u);
}

TEST_F(BannerSlotTest, CountsTapsAndLeavesTheLinkToTheBrowser) {
  platform->urlSession().respond("", ad);
  open();
  ASSERT_EQ(platform->webViews().size(), 1u);
  window.tapLink(*platform->webViews().front(), "https://shop.example/");
  EXPECT_EQ(slot->taps(), 1);
  ASSERT_EQ(platform->application().opened.size(), 1u);
  EXPECT_EQ(platform->application().opened.front().url.absoluteString(), "https://shop.example/");
}

TEST_F(BannerSlotTest, IsGoneOnceClosed) {
  platform->urlSession().respond("", ad);
  open();
  slot->close();
  platform->advance(1h);
  EXPECT_EQ(slot->height(), 0);
  EXPECT_TRUE(platform->webViews().empty());
  EXPECT_EQ(adRequests().size(), 1u);  // it asks for no more ads either
}

}  // namespace
