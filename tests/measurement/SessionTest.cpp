// Sessions of real banners on the headless platform: what their pages are told, when it ends, and that
// nothing is left behind.
#include "velto/measurement/OMIDVeltoAdSession.h"
#include "velto/measurement/OMIDVeltoSDK.h"
#include "velto/measurement/UIViewControllerOMSDKSDKVelto.h"

#include "../ui/UITest.h"

namespace velto::test {
namespace {

using namespace std::chrono_literals;

// The operations of the service that a page was told to run, such as "start geometry finish".
std::string calls(const headless::RecordingWebView& page) {
  constexpr std::string_view prefix = "window.__veltoOMID&&__veltoOMID.";
  std::string result;
  for (const auto& script : page.scripts())
    if (script.starts_with(prefix))
      result += (result.empty() ? "" : " ") + script.substr(prefix.size(), script.find('(') - prefix.size());
  return result;
}

// What the argument of the last such call, behind its time, holds at a path such as "context.app"; null where there is
// nothing.
JSON argument(const headless::RecordingWebView& page, const std::string& operation, const std::string& path) {
  const std::string prefix = "window.__veltoOMID&&__veltoOMID." + operation + "(";
  JSON result;
  for (const auto& script : page.scripts())
    if (script.starts_with(prefix)) {
      const size_t begin = script.find(',') + 1;
      result = readJSON(script.substr(begin, script.size() - begin - 1)).value_or(JSON());
    }
  for (const auto& name : split(path, ".")) {
    const auto* object = result.object();
    result = object && object->contains(name) ? JSON(object->at(name)) : JSON();
  }
  return result;
}

JSON percentage(const headless::RecordingWebView& page) {
  return argument(page, "geometry", "adView.percentageInView");
}

// What is measured in that session, and who tells it.
std::string kind(const headless::RecordingWebView& page) {
  std::string words;
  for (const auto* name : {"creativeType", "impressionType", "impressionOwner", "mediaEventsOwner"})
    words += *argument(page, "start", name).string() + " ";
  return words;
}

// A screen that plays videos, as the library's own is.
class Screen : public UIViewController, public UIViewControllerOMSDKSDKVelto {
  UIViewController& viewController() override { return *this; }
};

class SessionTest : public UITest {
 protected:
  void SetUp() override {
    platform->veltoBundle().files["omsdk-v1.js"] = "service()";
    ASSERT_TRUE(OMIDVeltoSDK::sharedInstance()->isActive()) << "registering the key does that";
  }
};

TEST_F(SessionTest, ABannersPageIsMeasuredFromItsEndOfLoadingToItsRemoval) {
  const auto banner = this->banner();
  loadAd(*banner);
  auto& shown = page();
  EXPECT_TRUE(shown.html().starts_with("<html><script>service()</script>"));
  EXPECT_EQ(kind(shown), "htmlDisplay beginToRender javascript none ");
  const JSON nothing;
  const JSON native = JSON::Object{{"partnerName", "Velto"}, {"partnerVersion", "4.0.10"}};
  const JSON device = JSON::Object{{"deviceType", "iPhone12,1"}, {"os", "iOS"}, {"osVersion", "16.4"}};
  for (const auto& [path, expected] : {std::pair("loaded", nothing),  // that is the page's
                                       {"context.apiVersion", JSON("1.0")},
                                       {"context.environment", JSON("app")},
                                       {"context.adSessionType", JSON("html")},
                                       {"context.sessionOwner", JSON("native")},
                                       {"context.supports", JSON(JSON::Array{"clid", "vlid"})},
                                       {"context.omidNativeInfo", native},
                                       {"context.omidJsInfo.omidImplementer", JSON("velto")},
                                       {"context.customReferenceData", nothing},
                                       {"context.deviceInfo", device},  // whatever requests say
                                       {"context.deviceCategory", JSON("mobile")},
                                       {"geometry.adView.percentageInView", JSON(100)}})
    EXPECT_EQ(argument(shown, "start", path), expected) << path;

  platform->advance(1min);
  banner->vc()->impressionOMSDK();
  EXPECT_EQ(calls(shown), "start") << "nothing changed, and the impression is the page's";
  auto& application = platform->application();
  const auto reasons = [&] {
    platform->advance(200ms);
    return argument(shown, "geometry", "adView.reasons");
  };
  application.enterBackground();
  EXPECT_EQ(reasons(), JSON(JSON::Array{"backgrounded"}));
  application.enterForeground();
  application.setLocked(true);
  EXPECT_EQ(reasons(), JSON(JSON::Array{"deviceLocked"}));
  application.setLocked(false);
  EXPECT_EQ(reasons(), JSON(JSON::Array{}));
  banner->vc()->_resizeActionInMainWebView(VeltoAdViewController::Resize, {320, 1000}, {});
  platform->runUntilIdle();
  EXPECT_NE(percentage(shown), JSON(100)) << "what the library changes is told at once";

  banner->removeBanner();
  platform->runUntilIdle();
  EXPECT_EQ(calls(shown), "start geometry geometry geometry geometry finish");
  EXPECT_EQ(shown.navigate("velto://failLoad"), WKNavigationActionPolicy::Cancel);
  platform->advance(999ms);
  EXPECT_EQ(platform->webViews().size(), 1u) << "its scripts have a second";
  platform->advance(1ms);
  EXPECT_TRUE(platform->webViews().empty());
}

TEST_F(SessionTest, ARefreshEndsTheOldPageAndGoesOnInTheNewOne) {
  const auto banner = this->banner();
  loadAd(*banner);
  auto& first = page();
  const auto session = banner->vc()->omidSession();
  loadAd(*banner);
  auto& second = page();
  EXPECT_EQ(calls(first), "start finish");
  EXPECT_EQ(calls(second), "start");
  EXPECT_EQ(banner->vc()->omidSession(), session);
  EXPECT_EQ(session->mainAdView(), second.webView().shared_from_this());
  EXPECT_NE(argument(first, "start", "adSessionId"), argument(second, "start", "adSessionId"));
  second.finish();  // the same page says so once more
  EXPECT_EQ(calls(second), "start start") << "a page that has its session ignores the second";
  EXPECT_EQ(banner->vc()->omidSession(), session);
}

TEST_F(SessionTest, APageThatDoesNotAnswerIsToldOfTheLatestGeometryAlone) {
  const auto banner = this->banner();
  loadAd(*banner);
  for (const auto& sight :
       {WindowSight{.minimized = true}, WindowSight{.onScreen = CGRect{}}, WindowSight{}}) {
    window->setSight(sight);
    const auto friendly = UIView::make();
    banner->vc()->addFriendlyObstructionOMSDKFor(friendly);  // looks at once
  }
  EXPECT_EQ(calls(page()), "start geometry");
  platform->runUntilIdle();
  EXPECT_EQ(calls(page()), "start geometry geometry");
  EXPECT_EQ(percentage(page()), JSON(100));
}

TEST_F(SessionTest, WhatWaitsForAPageIsBoundedAndKeepsItsTimes) {
  for (const bool fails : {false, true}) {
    auto screen = std::make_shared<Screen>();
    screen->startOMSDKSessionForNativeVideo();
    auto& hidden = page();
    const auto began = std::to_string(std::llround(platform->clock().secondsSince1970() * 1000));
    screen->startPlaybackNativeVideoOMSDWith(12, 0.5F);
    if (fails) hidden.fail({"WebKit", 1, "no page"});
    platform->advance(2s);
    for (int i = 0; i < 1000; ++i) screen->volumePlaybackNativeVideoChangeOMSD(0.5F);
    screen->finishOMSDKSession();
    if (!fails) hidden.finish();
    std::string expected = "start impression mediaVolume";
    for (int i = 0; i < 97; ++i) expected += " mediaVolume";
    EXPECT_EQ(calls(hidden), fails ? "" : expected + " finish");
    EXPECT_EQ(hidden.hasRun("mediaVolume(" + began + ",\"start\","), !fails);
    platform->advance(1s);
  }
}

TEST_F(SessionTest, ANativeSessionTellsAHiddenPage) {
  auto screen = std::make_shared<Screen>();
  screen->signalPlaybackNativeVideoOMSDK(0.25F);
  screen->finishOMSDKSession();
  EXPECT_TRUE(platform->webViews().empty()) << "without session nothing happens";
  screen->startOMSDKSessionForNativeVideo();
  auto& hidden = page();
  EXPECT_NE(hidden.html().find("<head><script>service()</script>"), std::string::npos);
  screen->startPlaybackNativeVideoOMSDWith(12, 0.5F);
  hidden.finish();
  window->setSight({.onScreen = CGRect{}});
  platform->advance(1s);
  EXPECT_EQ(calls(hidden), "start impression mediaVolume") << "no geometry where nothing of it changes";
  EXPECT_EQ(kind(hidden), "video beginToRender native native ");
  EXPECT_EQ(argument(hidden, "start", "loaded"), JSON(JSON::Object{}));
  const auto resources = writeJSON(argument(hidden, "start", "resources"), false).value();
  EXPECT_NE(resources.find(R"("verificationParameters":" ")"), std::string::npos);
  EXPECT_NE(resources.find(R"("resourceUrl":"https:)"), std::string::npos);
  EXPECT_EQ(hidden.navigate("https://elsewhere.example/"), WKNavigationActionPolicy::Cancel);
  EXPECT_EQ(hidden.navigate("about:srcdoc"), WKNavigationActionPolicy::Allow);

  constexpr float none = std::numeric_limits<float>::quiet_NaN();
  for (const auto& [progress, event] : {std::pair(0.255F, "firstQuartile"),
                                        {0.3F, ""},
                                        {0.5F, "midpoint"},
                                        {0.755F, "thirdQuartile"},
                                        {1.0F, "complete"},
                                        {1.005F, "complete"},
                                        {0.98F, ""},
                                        {0.0F, ""},
                                        {none, ""}}) {
    const size_t before = hidden.scripts().size();
    screen->signalPlaybackNativeVideoOMSDK(progress);
    const bool isTold = hidden.scripts().size() > before;
    EXPECT_EQ(isTold, *event != 0) << progress;
    EXPECT_NE(hidden.scripts().back().find(event), std::string::npos) << progress;
  }
  screen->volumePlaybackNativeVideoChangeOMSD(0.75F);
  EXPECT_NE(hidden.scripts().back().find(",\"volumeChange\",0.75,"), std::string::npos);

  screen.reset();  // a screen that goes away finishes
  EXPECT_TRUE(calls(hidden).ends_with("finish") && hidden.isMuted());
  platform->advance(1s);
  EXPECT_TRUE(platform->webViews().empty());
}

TEST_F(SessionTest, AScreenThatOutlivesThePlatformStaysQuiet) {
  const auto screen = std::make_shared<Screen>();
  screen->startOMSDKSessionForNativeVideo();
  const auto friendly = UIView::make();
  screen->addFriendlyObstructionOMSDKFor(friendly);
  headless::Platform::uninstall();
  screen->removeFriendlyObstructionOMSDKFor(friendly);
  screen->impressionOMSDK();
  screen->signalPlaybackNativeVideoOMSDK(0.5F);
  screen->finishOMSDKSession();
  EXPECT_EQ(screen->omidSession(), nullptr);
}

}  // namespace
}  // namespace velto::test
