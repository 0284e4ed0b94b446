// What a shown ad does, of a banner and of an interstitial alike: presses, identifiers, measurement, volume,
// visibility, orientation, rich media; and that an ad that was let go of says nothing any more.
#include "velto/measurement/OMIDVeltoAdSession.h"

#include "../tracking/TrackTest.h"
#include "UITest.h"

namespace velto {
namespace {

using namespace std::chrono_literals;
using test::Heard;

enum class Kind { Banner, Interstitial };

class ShownAdTest : public test::UITest, public ::testing::WithParamInterface<Kind> {
 protected:
  ShownAdTest() {
    platform->veltoBundle().files["omsdk-v1.js"] = "service()";
    platform->urlSession().pending().at(0)->answer({.body = "1"});  // the install of the registration
    platform->urlSession().respond("trk_", headless::Answer{.body = "1"});
    platform->runUntilIdle();
  }
  bool isBanner() const { return GetParam() == Kind::Banner; }
  VeltoAdViewController& host() {
    return isBanner() ? static_cast<VeltoAdViewController&>(*bannerAd->vc()) : *fullAd->vc();
  }
  Heard& heard() { return isBanner() ? delegate->heard : full->heard; }
  // Loads an ad, shows it, and plays its page, whose body reads as given, to the end.
  void show(const std::string& markupText, const std::string& body = "") {
    platform->urlSession().enqueue("/sdk/", isBanner() ? markup(markupText) : markup(markupText, 0, 0));
    isBanner() ? bannerAd->load() : fullAd->load();
    platform->runUntilIdle();
    fullAd->show();
    platform->advance(1100ms);
    play(page(), body);
  }
  void play(headless::RecordingWebView& page, const std::string& body) {
    page.answerScripts([body](const std::string& script) {
      return script == "document.body.innerHTML" ? JSON(body) : JSON();
    });
    page.finish();
    platform->runUntilIdle();
    page.navigate("velto://loadFinished");
    platform->runUntilIdle();
  }
  // Ends what an interstitial shows; a banner needs no end.
  void closeScreen() {
    if (!isBanner()) fullAd->vc()->_tapCloseButton();
    platform->advance(1s);
  }
  void remove() {
    isBanner() ? bannerAd->removeBanner() : fullAd->vc()->_tapCloseButton();
    platform->advance(1s);
  }
  // Another ad in its place: at once in a banner, once the screen has closed for an interstitial.
  void replace(const std::string& markupText, const std::string& body = "") {
    closeScreen();
    show(markupText, body);
  }
  void presentByAdapter(const std::shared_ptr<test::FakeAdapter>& adapter) {
    const auto ad = test::mediated(adapter);
    if (isBanner()) return bannerAd->vc()->presentMediationBannerView(adapter->getBannerView(), ad);
    fullAd->vc()->presentMediationBanner(ad);
    fullAd->show();
    platform->advance(1100ms);
  }
  std::vector<NSURLRequest> clicks() { return platform->urlSession().requests("trk_click"); }
  static std::string link(const std::string& order) {
    return "<a href=\"https://t.example/?r=ord%3D" + order + "%26veltos%3DB%26veltop%3DP&amp;x=1\">ad</a>";
  }
  bool measured(const headless::RecordingWebView& page, const std::string& operation) {
    return page.hasRun("__veltoOMID." + operation + "(");
  }

  std::shared_ptr<VeltoBannerViewController> bannerAd = banner(VeltoBannerPositionTop);
  std::shared_ptr<VeltoInterstitialViewController> fullAd = interstitial();
  const std::string landscape = R"(setOrientationProperties?p={"forceOrientation":"landscape"})";
};

TEST_P(ShownAdTest, APressIsToldAndTrackedOnceWithTheAdsIdentifiers) {
  show("ad", link("O1"));
  window->tapLink(page(), "https://t.example/");
  EXPECT_EQ(heard().back(), "press");
  const auto stored =
      std::get<DefaultsDictionary>(*platform->defaults()->objectForKey("kVeltoTrackIdentifierKey"));
  ASSERT_EQ(stored.size(), 1U);
  EXPECT_TRUE(test::decoded(stored.begin()->first).ends_with(":B:P:O1"));
  window->tapLink(page(), "https://t.example/");
  EXPECT_EQ(clicks().size(), 1U) << "a second press of the same ad is none";
  replace("ad", "<a href=\"https://t.example/\">no identifiers</a>");
  window->tapLink(page(), "https://t.example/");
  EXPECT_EQ(heard().back(), "press");
  EXPECT_EQ(clicks().size(), 1U);
}

TEST_P(ShownAdTest, VolumeVisibilityAndMeasurementReachThePage) {
  show("ad");
  EXPECT_FALSE(platform->audioSession().isActive()) << "only rich media asks for sound";
  replace(test::richPage);
  EXPECT_TRUE(platform->audioSession().isActive());
  EXPECT_TRUE(measured(page(), "start"));
  EXPECT_EQ(host().omidSession()->mainAdView(), host().webView());
  EXPECT_EQ(host().veltoGetMRAIDHandler()->placementType, MRAIDPlacementType[isBanner() ? 1 : 2]);
  platform->audioSession().setOutputVolume(0.25F);
  EXPECT_TRUE(page().hasRun("audioVolumeChange"));
  window->hide();
  EXPECT_TRUE(page().hasRun("setIsViewable(false)"));
  window->show();
  EXPECT_TRUE(host().veltoGetMRAIDHandler()->isViewable);
  const auto session = host().omidSession();
  remove();
  EXPECT_TRUE(session->isFinished());
  EXPECT_EQ(host().omidSession(), nullptr);
}

TEST_P(ShownAdTest, WhatAnAdForcedEndsWithIt) {
  auto& orientation = platform->device().facts.orientation;
  orientation = 3;
  for (const std::string end : {"close", "another ad", "removal"}) {
    show(test::richPage);
    page().navigate("mraid://expand");
    page().navigate(mraid(landscape));
    EXPECT_EQ(orientation, 4) << end;
    EXPECT_EQ(host().supportedInterfaceOrientations(), 16U);
    page().navigate(mraid(
        R"(setOrientationProperties?p={"forceOrientation":"portrait","allowOrientationChange":false})"));
    EXPECT_EQ(orientation, 1);
    EXPECT_FALSE(host().shouldAutorotate());
    if (end == "close") page().navigate("mraid://close");
    if (end == "another ad") replace("ad");
    if (end == "removal") remove();
    platform->advance(1s);
    EXPECT_EQ(orientation, 3) << end;
    EXPECT_EQ(host().shouldAutorotate(), end != "close" || !isBanner()) << "the page that stays has its say";
    closeScreen();
  }
  show(test::richPage);
  page().navigate(mraid(landscape));
  platform->urlSession().enqueue(status(404));
  page().navigate("mraid://expand?u=https%3A%2F%2Fa.example%2F2");
  EXPECT_EQ(orientation, 4);
  platform->runUntilIdle();
  EXPECT_EQ(orientation, isBanner() ? 3 : 4) << "a second part that never came has forced it for nothing";
}

TEST_P(ShownAdTest, RichMediaMovesThePageAndItsCloseButtonCoversNothing) {
  show(test::richPage);
  const CGRect before = frameInWindow(*host().webView());
  const auto button = [this] { return host().veltoCloseButton(); };
  heard().clear();
  page().navigate(mraid(R"(setResizeProperties?p={"width":200,"height":150,"offsetX":0,"offsetY":0})"));
  page().navigate("mraid://resize");
  platform->advance(100ms);
  EXPECT_EQ(host().webView()->frame().size, (CGSize{200, 150}));
  ASSERT_TRUE(button());
  window->setSight({});
  platform->advance(1s);
  EXPECT_EQ(host().omidSession()->viewability()->percentageInView, 100) << "the close button is friendly";
  const CGRect area = frameInWindow(*button());
  window->tap({area.midX(), area.midY()});
  platform->advance(100ms);
  EXPECT_EQ(heard(), Heard{}) << "closing is no press of the ad";
  EXPECT_EQ(frameInWindow(*host().webView()), before);
  EXPECT_EQ(button() != nullptr, !isBanner()) << "a screen has its own close button back";
  platform->advance(1s);
  EXPECT_EQ(host().omidSession()->viewability()->percentageInView, 100) << "which is friendly, too";

  page().navigate("mraid://expand");
  platform->advance(1s);
  EXPECT_EQ(frameInWindow(*host().webView()), (CGRect{{0, 47}, {390, 763}}));
  EXPECT_EQ(host().omidSession()->viewability()->percentageInView, 100);
  EXPECT_EQ(page().loads().size(), 1U) << "not loaded again";
  button()->sendTouchUpInside();
  platform->advance(1s);
  if (isBanner()) {
    EXPECT_EQ(frameInWindow(*host().webView()), before);
    EXPECT_EQ(button(), nullptr);
    page().navigate("mraid://unload");
    platform->runUntilIdle();
  }
  EXPECT_EQ(host().webView(), nullptr) << "to close or unload it is to leave";
  EXPECT_EQ(heard(), isBanner() ? Heard{} : (Heard{"close", "dismissed"}));
}

TEST_P(ShownAdTest, AVideoOfThePageStandsOverItsAdAndGoesWithIt) {
  const std::string command = "playVideo?u=https://videos.example/a.webm";
  show(test::richPage);
  for (const auto& text : {std::string("playVideo?u=odd://videos.example/a.webm"), command})
    page().navigate(mraid(text));
  platform->runUntilIdle();
  ASSERT_EQ(platform->media().players().size(), 1U);
  EXPECT_TRUE(window->pressEscape());  // the player, which is on top, and not the ad
  platform->advance(1s);
  EXPECT_TRUE(platform->media().players().back()->isReleased());
  EXPECT_TRUE(host().webView()->isInWindow());

  page().navigate(mraid(command));
  platform->runUntilIdle();
  ASSERT_TRUE(host().player()->isPlaying());
  remove();
  EXPECT_TRUE(platform->media().players().back()->isReleased());
  EXPECT_EQ(window->controller()->presentedViewController(), nullptr);
}

TEST_P(ShownAdTest, ASecondPartWithoutIdentifiersLeavesThoseOfTheFirst) {
  show(test::richPage, link("O1"));
  platform->urlSession().enqueue(markup(test::richPage));
  page().navigate("mraid://expand?u=https%3A%2F%2Fa.example%2F2");
  platform->runUntilIdle();
  ASSERT_EQ(platform->webViews().size(), 2U);
  play(*platform->webViews()[1], "<p>two</p>");
  EXPECT_EQ(host().ad()->ordId, "O1");
  EXPECT_EQ(std::count(heard().begin(), heard().end(), "finish"), 1) << "nor is its load the ad's";
  headless::RecordingWebView::of(*host().webView()).navigate("mraid://resize");
  platform->webViews()[1]->navigate("mraid://close");
  platform->advance(1s);
  EXPECT_EQ(platform->webViews().size(), isBanner() ? 1U : 0U)
      << "whatever the first page has asked for meanwhile";
}

TEST_P(ShownAdTest, AnAdThatWasLetGoOfIsSilent) {
  show(test::richPage, link("O1"));
  const auto view = host().webView();  // as an engine may hold it for a while
  auto& old = headless::RecordingWebView::of(*view);
  const auto handler = host().veltoGetMRAIDHandler();
  // Under way when it goes: its second part, a resize, its identifiers.
  platform->urlSession().enqueue("/2", markup(test::richPage));
  old.navigate("mraid://expand?u=https%3A%2F%2Fa.example%2F2");
  old.navigate("mraid://resize");
  old.answerScripts([](const std::string&) { return JSON(link("OLD")); });
  old.finish();
  replace("new", link("O2"));
  const auto shown = host().webView();
  const auto frame = shown->frame();
  heard().clear();
  for (const char* signal : {"velto://loadFinished", "velto://failLoad", "mraid://unload", "mraid://close",
                             "mraid://open?u=https%3A%2F%2Fa.example", "mraid://resize"})
    old.navigate(signal);
  old.fail(NSError{"WebKitNetworkError", 399, "crashed"});
  old.finish();
  platform->advance(2s);
  EXPECT_EQ(heard(), Heard{});
  EXPECT_EQ(host().webView(), shown);
  EXPECT_EQ(shown->frame(), frame);
  EXPECT_EQ(host().ad()->ordId, "O2");
  EXPECT_TRUE(platform->application().opened.empty());
  EXPECT_EQ(platform->webViews().size(), 2U) << "no second part came of it";
}

TEST_P(ShownAdTest, AnAdapterSpeaksForItsOwnAdOnly) {
  const char* ready = isBanner() ? "constNotificationAdMobAdapterGADBannerReadyVelto"
                                 : "constNotificationAdMobAdapterGADInterstitialReadyVelto";
  const auto adapter = test::FakeAdapter::make(isBanner() ? 1 : 2);
  const auto stray = test::FakeAdapter::make(isBanner() ? 1 : 2);
  show("ad");
  post(ready, stray);
  closeScreen();
  presentByAdapter(adapter);
  EXPECT_EQ(adapter->root.lock().get(), &host());
  post(ready, stray);
  post(ready, int64_t{1});
  EXPECT_EQ(stray->root.lock(), nullptr) << "nor has a page's ad an adapter";
  heard().clear();
  const auto told = adapter->told();
  told->mediationBannerDidPress();
  told->mediationBannerDidClose();
  EXPECT_EQ(heard(), (Heard{"press", "close"}));
  replace("ad");
  heard().clear();
  told->mediationBannerDidPress();
  told->mediationBannerDidClose();
  EXPECT_EQ(heard(), Heard{}) << "its ad is not the one that is shown";
  EXPECT_NE(host().webView(), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Both, ShownAdTest, ::testing::Values(Kind::Banner, Kind::Interstitial),
                         [](const auto& kind) {
                           return kind.param == Kind::Banner ? "Banner" : "Interstitial";
                         });

}  // namespace
}  // namespace velto
