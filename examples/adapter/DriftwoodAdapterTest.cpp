// The adapter against the in-memory platform: a waterfall's answer in, what the application hears out.
#include <gtest/gtest.h>
#include <velto/headless/VeltoHeadless.h>
#include <velto/velto.h>

#include "DriftwoodAdapter.h"

using namespace std::chrono_literals;

namespace {

using Words = std::vector<std::string>;

struct Application : velto::VeltoBannerViewControllerDelegate,
                     velto::VeltoInterstitialViewControllerDelegate {
  using Banner = velto::VeltoBannerViewControllerPrivate;
  using Full = velto::VeltoInterstitialViewControllerPrivate;
  velto::headless::HostWindow window;
  Words heard;

  std::shared_ptr<velto::UIViewController> presentViewController() override { return window.controller(); }
  void veltoBannerViewControllerDidFinishLoad(Banner&) override { heard.push_back("load"); }
  void veltoBannerViewControllerDidPress(Banner&) override { heard.push_back("press"); }
  void veltoBannerViewControllerDidClose(Banner&) override { heard.push_back("close"); }
  void veltoInterstitialViewControllerDidFinishLoad(Full&) override { heard.push_back("load"); }
  void veltoInterstitialViewControllerDidFail(Full&, const velto::VeltoErrorAd& error) override {
    heard.push_back("fail " + std::to_string(error.errorCode));
  }
  void veltoInterstitialViewControllerDidAppear(Full&) override { heard.push_back("appear"); }
  void veltoInterstitialViewControllerDidPress(Full&) override { heard.push_back("press"); }
  void veltoInterstitialViewControllerDidClose(Full&) override { heard.push_back("close"); }
  void onVeltoInterstitialDismissed(Full&) override { heard.push_back("dismissed"); }
};

struct DriftwoodTest : testing::Test {
  DriftwoodTest() {
    linkDriftwoodAdapter();
    velto::VeltoFramework::addVeltoKey("boat-app");
    platform->urlSession().respond("trk_", {.body = "1"});
  }
  ~DriftwoodTest() override {
    application.reset();
    unlinkDriftwoodAdapter();
    velto::headless::Platform::uninstall();
  }

  void answerWith(const std::string& adUnit) {
    platform->urlSession().enqueue(
        "/sdk/", {.headers = {{"x-content", "mediation"}, {"x-width", "320"}, {"x-height", "50"}},
                  .body = R"({"mediation": [{"cn": "Unknown"}, {"cn": "VeltoAdmob)" + adUnit + "}}]}"});
  }
  std::shared_ptr<velto::VeltoInterstitialViewController> interstitial() {
    answerWith(R"(InterstitialAdapter", "e": {"adunit": "driftwood/regatta")");
    auto made = velto::VeltoInterstitialViewController::initWithDelegate(application);
    made->load();
    platform->runUntilIdle();
    return made;
  }
  Words opened() {
    Words urls;
    for (const auto& link : platform->application().opened) urls.push_back(link.url.absoluteString());
    return urls;
  }

  std::shared_ptr<velto::headless::Platform> platform = velto::headless::Platform::install();
  std::shared_ptr<Application> application = std::make_shared<Application>();
};

TEST_F(DriftwoodTest, ABannerIsShownPressedAndClosed) {
  answerWith(R"(BannerAdapter", "e": {"adunit": "driftwood/sails")");
  const auto banner = velto::VeltoBannerViewController::initWithDelegate(
      application, velto::VeltoBannerSize320x50, velto::VeltoBannerPositionTop);
  banner->load();
  platform->runUntilIdle();
  const auto request = platform->urlSession().requests("/sdk/").at(0).httpBody.value_or("");
  EXPECT_NE(request.find("\"gadapt\": 1"), std::string::npos) << request;
  EXPECT_EQ(application->heard, Words{"load"});
  application->window.tap({100, 15});  // its title; the window is 390 points wide
  application->window.tap({308, 25});  // its button
  EXPECT_EQ(application->heard, (Words{"load", "press", "press"}));
  EXPECT_EQ(opened(), Words(2, "https://driftwood.example/landing/sails"));
  application->window.tap({338, 25});
  EXPECT_EQ(application->heard, (Words{"load", "press", "press", "close"}));
  application->window.tap({100, 15});
  EXPECT_EQ(opened().size(), 2U) << "what is closed cannot be pressed";
}

TEST_F(DriftwoodTest, AnInterstitialsScreenStandsOverVeltosAndBothGo) {
  const auto full = interstitial();
  EXPECT_EQ(application->heard, Words{"load"});
  full->show();
  platform->advance(1s);
  const auto shown = application->window.controller()->presentedViewController();
  ASSERT_NE(shown, nullptr);
  EXPECT_NE(std::dynamic_pointer_cast<DriftwoodScreen>(shown->presentedViewController()), nullptr);
  application->window.tap({195, 633});
  EXPECT_EQ(opened(), Words{"https://driftwood.example/landing/regatta"});
  application->window.tap({350, 40});  // its close button
  platform->advance(1s);
  EXPECT_EQ(application->heard, (Words{"load", "appear", "press", "close", "dismissed"}));
  EXPECT_TRUE(application->window.view().subviews().empty());

  // Again, closed by Escape; and gone with its owner.
  answerWith(R"(InterstitialAdapter", "e": {"adunit": "driftwood/regatta")");
  full->load();
  platform->runUntilIdle();
  full->show();
  platform->advance(1s);
  EXPECT_TRUE(application->window.pressEscape());
  platform->advance(1s);
  EXPECT_EQ(application->heard.back(), "dismissed");
  EXPECT_EQ(application->window.controller()->presentedViewController(), nullptr);

  auto second = interstitial();
  second->show();
  platform->advance(1s);
  EXPECT_FALSE(application->window.view().subviews().empty());
  second.reset();
  platform->advance(1s);
  EXPECT_TRUE(application->window.view().subviews().empty());
}

TEST_F(DriftwoodTest, AScreenThatCannotBeShownIsAnError) {
  const auto adapter = std::make_shared<DriftwoodAdapter>(2, DriftwoodOffer{});
  const auto second = std::make_shared<DriftwoodAdapter>(2, DriftwoodOffer{});
  std::vector<std::shared_ptr<DriftwoodAdapter>> failed;
  const auto observer = platform->notificationCenter().addObserver(
      velto::constNotificationAdMobAdapterGADInterstitialError,
      [&](const velto::NSNotification& told) { failed.push_back(told.objectAs<DriftwoodAdapter>()); });
  for (const auto& each : {adapter, second}) {
    each->setAdRootViewController(application->window.controller());
    platform->runUntilIdle();
  }
  EXPECT_EQ(failed, std::vector{second}) << "the window shows one already";
}

TEST_F(DriftwoodTest, AnItemWithoutOfferPassesTheTurn) {
  answerWith(R"(InterstitialAdapter", "e": {"adunit": "driftwood/none")");
  const auto full = velto::VeltoInterstitialViewController::initWithDelegate(application);
  full->load();
  platform->runUntilIdle();
  EXPECT_EQ(application->heard, Words{"fail 0"});
}

}  // namespace
