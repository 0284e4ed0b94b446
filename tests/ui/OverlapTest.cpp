// Two things at once: each case is a moment in which something ends or begins while something else is half done.
#include "velto/ads/VeltoAdManager.h"
#include "velto/platform/AnswerOnMain.h"

#include <thread>

#include "UITest.h"

namespace velto {
namespace {

using namespace std::chrono_literals;
using test::Heard;

std::shared_ptr<VeltoBannerViewController> global;

class OverlapTest : public test::UITest {
 protected:
  void show(const headless::Answer& answer) {
    load(*fullAd, answer);
    fullAd->show();
    platform->advance(1100ms);
    page().finish();
  }
  static std::string forcing(const std::string& orientation) {
    return mraid(R"(setOrientationProperties?p={"forceOrientation":")" + orientation + "\"}");
  }

  static constexpr char second[] = "mraid://expand?u=https%3A%2F%2Fa.example%2F2";
  std::shared_ptr<VeltoInterstitialViewController> fullAd = interstitial();
  std::shared_ptr<test::FakeAdapter> adapter = test::FakeAdapter::make(2);
};

TEST_F(OverlapTest, AnotherAdaptersFailureLeavesTheAdThatIsReady) {
  fullAd->vc()->presentMediationBanner(test::mediated(adapter));
  fullAd->load();
  post(constNotificationAdMobAdapterGADInterstitialError, test::FakeAdapter::make(2));
  fullAd->show();
  platform->advance(1s);
  EXPECT_EQ(adapter->root.lock(), fullAd->vc());

  const auto next = test::FakeAdapter::make(2);
  fullAd->vc()->presentMediationBanner(test::mediated(next));
  post(constNotificationAdMobAdapterGADInterstitialError, next);
  EXPECT_EQ(full->heard.back(), "fail 1") << "one that waits for its turn has failed";
  fullAd->vc()->_tapCloseButton();
  platform->advance(1s);
  EXPECT_FALSE(fullAd->isReady());
}

TEST_F(OverlapTest, ShownFromInsideTheEndOfTheAdBefore) {
  load(*fullAd, markup(test::richPage, 0, 0));
  const auto observer = platform->notificationCenter().addObserver(
      VeltoNotificationUIInterfaceOrientationMaskLock, [&](const NSNotification&) { fullAd->show(); });
  load(*fullAd, markup(test::richPage, 0, 0));
  fullAd->show();
  platform->advance(1s);
  EXPECT_EQ(full->heard, (Heard{"finish", "finish", "appear"}));
}

TEST_F(OverlapTest, LetGoOfInsideACallItIsNotShownAnyFurther) {
  for (const char* last : {"finish", "appear"}) {
    fullAd = interstitial();
    fullAd->setAutoShowWhenReady(true);
    full->onCall = [&] { full->heard.back() == last ? fullAd.reset() : void(); };
    const auto working = fullAd->vc();
    working->presentMediationBanner(test::mediated(adapter));
    platform->advance(2s);
    EXPECT_EQ(full->heard.back(), last);
    EXPECT_EQ(adapter->loaded, 0);
  }
}

TEST_F(OverlapTest, WithThePlatformAdsLeaveTheScreenAndFallSilent) {
  for (const int moment : {0, 1, 2}) {  // at rest, or inside what a delegate is told
    platform = headless::Platform::install();
    const auto small = banner();
    loadAd(*small, markup(test::richPage));
    small->vc()->ad()->setOrdId("o", "b", "p");
    fullAd = interstitial();
    show(markup(test::richPage, 0, 0));
    const auto pages = {small->vc()->webView(), fullAd->vc()->webView()};  // somebody holds them
    full->onCall = delegate->onCall = [] {
      EXPECT_TRUE(Platform::currentOrNull()) << "told after the end";
      headless::Platform::uninstall();
    };
    moment == 0 ? full->onCall() : moment == 1 ? small->vc()->_adDidPress() : fullAd->vc()->_tapCloseButton();
    EXPECT_TRUE(window->view().subviews().empty()) << moment;
    for (const auto& view : pages) {
      EXPECT_EQ(view->superview(), nullptr) << moment;
      auto& page = headless::RecordingWebView::of(*view);
      page.finish();
      page.navigate("mraid://expand");
      page.fail({});
    }
    small->load();
    small->removeBanner();
    fullAd->load();
    platform->runUntilIdle();
    full->onCall = delegate->onCall = nullptr;
  }
  platform = headless::Platform::install();  // which goes with the process
  global = banner();
  global->load();  // which nobody answers any more
  platform->runUntilIdle();
  platform.reset();
  EXPECT_EXIT(std::exit(0), ::testing::ExitedWithCode(0), "");
  global.reset();
}

TEST_F(OverlapTest, ASecondPartThatComesDuringAResizeCanBeClosed) {
  for (const bool ownButton : {true, false}) {
    const auto ad = banner(VeltoBannerPositionTop);
    loadAd(*ad, markup(test::richPage));
    if (ownButton) page().navigate(mraid(R"(setExpandProperties?p={"useCustomClose":true})"));
    platform->urlSession().enqueue("/2", markup(test::richPage));
    page().navigate(second);
    page().navigate("mraid://resize");
    platform->advance(500ms);
    ASSERT_EQ(platform->webViews().size(), 2U);
    platform->webViews()[0]->navigate("mraid://open");  // whatever it does now
    window->tap({380, 60});
    platform->advance(500ms);
    EXPECT_EQ(platform->webViews().size(), 1U) << "its close button is above everything";
    EXPECT_EQ(ad->vc()->view()->frame(), (CGRect{{35, 47}, {320, 50}}));
  }
  // On a screen the page's button of a resize goes, and the screen's own is there.
  show(markup(test::richPage, 0, 0));
  page().navigate(mraid(R"(setExpandProperties?p={"useCustomClose":false})"));
  auto part = markup(test::richPage);
  part.delay = 200ms;
  platform->urlSession().enqueue("/2", part);
  page().navigate(second);
  page().navigate("mraid://resize");
  platform->advance(1s);
  ASSERT_EQ(platform->webViews().size(), 2U);
  EXPECT_EQ(fullAd->vc()->veltoCloseButton()->frame().size, (CGSize{33, 33}));
  window->tap({390 - 16 - 16, 47 + 16 + 16});
  platform->advance(1s);
  EXPECT_EQ(full->heard.back(), "dismissed");
}

TEST_F(OverlapTest, ARefusedPresentationSaysNothingOfTheNextAd) {
  window->hide();
  fullAd->vc()->presentMediationBanner(test::mediated(adapter));
  fullAd->show();
  adapter->told()->mediationBannerDidClose();
  fullAd->vc()->presentMediationBanner(test::mediated(adapter));
  platform->advance(1s);
  EXPECT_EQ(full->heard, (Heard{"finish", "finish"}));
}

TEST_F(OverlapTest, AnAdThatEndsWhileItIsLoadedLoadsNothingAndLeavesNoScreen) {
  show(markup(test::richPage, 0, 0));
  int shown = 0;
  const auto observer = platform->notificationCenter().addObserver(
      constNotificationAdShowed, [&](const NSNotification&) { ++shown, fullAd->vc()->_tapCloseButton(); });
  const auto ended = fullAd->vc()->shownAd();
  ended->load();  // under way: web data are cleared first
  for (const char* command : {second, "mraid://close"}) page().navigate(command);
  platform->advance(1s);
  EXPECT_EQ(full->heard.back(), "dismissed") << "whose close does not wait for a server";
  EXPECT_EQ(shown, 0);
  for (const auto& ad : {VeltoAd::adWithHTML("ad", {}, nullptr), test::mediated(adapter)}) {
    fullAd->vc()->_processAd(ad, std::nullopt, {}, true);
    fullAd->show();
    platform->advance(1s);
    EXPECT_TRUE(window->view().subviews().empty());
  }
}

TEST_F(OverlapTest, TheLastOfSeveralThatForcedTheDeviceGivesItBack) {
  auto& orientation = platform->device().facts.orientation;
  orientation = 3;
  for (const bool bannerFirst : {true, false}) {
    auto ad = banner(VeltoBannerPositionTop);
    loadAd(*ad, markup(test::richPage));
    page().navigate(forcing("landscape"));
    page().navigate("mraid://expand");
    EXPECT_EQ(orientation, 4);
    const auto other = banner();  // which forces nothing, and undoes nothing
    loadAd(*other, markup(test::richPage));
    page().navigate("mraid://expand");
    show(markup(test::richPage, 0, 0));
    for (const char* wish : {"landscape", "portrait"}) page().navigate(forcing(wish));
    other->vc()->shownAd()->veltoMRAIDCloseExpand();
    EXPECT_EQ(orientation, 1);
    if (bannerFirst) {
      ad.reset();
      platform->runUntilIdle();
      EXPECT_EQ(orientation, 1) << "the one that is left has its wish";
    }
    fullAd->vc()->_tapCloseButton();
    platform->advance(1s);
    EXPECT_EQ(orientation, bannerFirst ? 3 : 4);
    ad.reset();
    platform->runUntilIdle();
    EXPECT_EQ(orientation, 3);
  }
}

TEST_F(OverlapTest, AnAdThatEndsByItselfTakesNothingButItselfOffTheScreen) {
  for (const bool fails : {true, false}) {
    const auto ad = banner();
    ad->setEnableAutoRefresh(false);
    loadAd(*ad, markup("<html></html>"));
    if (fails)
      page().fail(NSError{"d", 1, ""});
    else
      page().navigate("velto://failLoad");
    ad->vc()->fetchBannerSuccess(VeltoAd::adWithHTML("next", VeltoBannerSize320x50, nullptr));
    platform->runUntilIdle();
    ASSERT_TRUE(ad->vc()->webView());
    EXPECT_TRUE(ad->vc()->view()->superview());
    ad->removeBanner();
    platform->runUntilIdle();
    EXPECT_FALSE(ad->vc()->webView()) << "which a host can, as ever";
  }
}

TEST_F(OverlapTest, AStepThatComesLateKnowsWhatTheAdIsByThen) {
  auto& orientation = platform->device().facts.orientation;
  orientation = 3;
  platform->veltoBundle().files["omsdk-v1.js"] = "service()";
  const auto ad = banner(VeltoBannerPositionTop);
  loadAd(*ad, markup(test::richPage));
  page().navigate(forcing("landscape"));
  for (const char* command : {"mraid://resize", "mraid://expand"}) page().navigate(command);
  platform->advance(500ms);
  EXPECT_EQ(ad->vc()->veltoGetMRAIDHandler()->state, "expanded") << "not resized over all of the screen";
  ad->vc()->veltoCloseButton()->sendTouchUpInside();
  for (const char* command : {"mraid://close", "mraid://expand"}) page().navigate(command);
  platform->advance(500ms);
  EXPECT_EQ(ad->vc()->veltoGetMRAIDHandler()->state, "expanded") << "the close was of the expansion before";

  page().navigate("mraid://close");
  EXPECT_EQ(orientation, 3);
  platform->urlSession().enqueue("/2", markup(test::richPage));
  page().navigate(second);
  platform->runUntilIdle();
  page().finish();
  EXPECT_EQ(ad->vc()->omidSession()->mainAdView(), ad->vc()->activeWebView());
  EXPECT_NE(ad->vc()->activeWebView(), ad->vc()->webView());
  page().navigate("mraid://close");
  EXPECT_EQ(ad->vc()->omidSession()->mainAdView(), ad->vc()->webView()) << "the first part is measured again";
}

TEST_F(OverlapTest, APageThatAsksForAResizeWhileItIsExpandedIsClosedAsAnyOther) {
  for (const int way : {0, 1, 2, 3, 4, 5, 6, 7}) {
    const bool twoParts = way & 1, twice = way & 2, byPage = way & 4;
    const auto ad = banner(VeltoBannerPositionTop);
    loadAd(*ad, markup(test::richPage));
    platform->urlSession().enqueue("/2", markup(test::richPage));
    page().navigate(twoParts ? second : "mraid://expand");
    platform->runUntilIdle();
    page().navigate(forcing("landscape"));
    for (int i = 0; i <= twice; ++i) page().navigate("mraid://resize");
    platform->advance(200ms);
    EXPECT_EQ(closeButtons(*ad->vc()->view()), 1U) << way;
    byPage ? void(page().navigate("mraid://close")) : ad->vc()->veltoCloseButton()->sendTouchUpInside();
    platform->advance(200ms);
    EXPECT_EQ(ad->vc()->veltoGetMRAIDHandler()->state, "default") << way;
    EXPECT_EQ(closeButtons(*ad->vc()->view()) + platform->webViews().size(), 1U) << way;
    EXPECT_EQ(ad->vc()->view()->frame(), (CGRect{{35, 47}, {320, 50}})) << way;
    EXPECT_EQ(platform->device().facts.orientation, 1) << way;
  }
}

TEST_F(OverlapTest, WhatATransportDropsEndsOnTheMainThread) {
  std::thread::id where;
  auto held = endingOnMain(std::shared_ptr<void>(&where, [&](void*) { where = std::this_thread::get_id(); }));
  std::thread([last = std::move(held)] {}).join();
  platform->runUntilIdle();
  EXPECT_EQ(where, std::this_thread::get_id());
}

TEST_F(OverlapTest, AnAdThatWaitsHasItsTurnWhenTheWindowGoes) {
  show(markup("one", 0, 0));
  load(*fullAd, markup("two", 0, 0));
  window.reset();
  platform->advance(1s);
  EXPECT_EQ(full->heard, (Heard{"finish", "appear", "finish"}));
}

TEST_F(OverlapTest, ALoadThatIsAnsweredTwiceIsOverOnce) {
  const auto ad = banner();
  load(*ad, mediation(R"({"mediation":[]})"));
  EXPECT_EQ(delegate->heard, (Heard{"fail 1", "fail 2"}));
  ad->load();  // on its way again, so an adapter that announces itself may be its own
  const auto early = test::FakeAdapter::make(1);
  post(constNotificationAdMobAdapterGADBannerReady, early);
  EXPECT_EQ(early->root.lock(), ad->vc());
}

}  // namespace
}  // namespace velto
