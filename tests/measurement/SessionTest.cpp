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

// What an object holds at a path such as "context.app"; null where there is nothing.
JSON at(const JSON& json, const std::string& path) {
  const auto dot = path.find('.');
  const auto* object = json.object();
  const auto found = object ? object->find(path.substr(0, dot)) : JSON::Object::const_iterator{};
  if (!object || found == object->end()) return {};
  return dot == std::string::npos ? found->second : at(found->second, path.substr(dot + 1));
}

// The argument of the last such call, behind its time.
JSON argument(const headless::RecordingWebView& page, const std::string& operation) {
  const std::string prefix = "window.__veltoOMID&&__veltoOMID." + operation + "(";
  JSON result;
  for (const auto& script : page.scripts())
    if (script.starts_with(prefix)) {
      const size_t begin = script.find(',') + 1;
      result = readJSON(script.substr(begin, script.size() - begin - 1)).value_or(JSON());
    }
  return result;
}

double percentage(const JSON& geometry) {
  return at(geometry, "adView.percentageInView").number().value_or(-1);
}

// What is measured in that session, and who tells it.
std::string kind(const JSON& start) {
  std::string words;
  for (const auto* name : {"creativeType", "impressionType", "impressionOwner", "mediaEventsOwner"})
    words += (words.empty() ? "" : " ") + *at(start, name).string();
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
  EXPECT_TRUE(page().html().starts_with("<html><script>service()</script>"));
  EXPECT_EQ(calls(page()), "start");
  const auto start = argument(page(), "start");
  EXPECT_EQ(kind(start), "htmlDisplay beginToRender javascript none");
  EXPECT_EQ(at(start, "loaded"), JSON()) << "that is the page's";
  EXPECT_EQ(at(start, "context.omidNativeInfo"),
            JSON(JSON::Object{{"partnerName", "Velto"}, {"partnerVersion", "4.0.10"}}));
  EXPECT_EQ(at(start, "context.deviceInfo.osVersion"), JSON("16.4"));
  EXPECT_EQ(at(start, "context.customReferenceData"), JSON());
  EXPECT_EQ(percentage(at(start, "geometry")), 100);
  EXPECT_EQ(at(start, "context.deviceInfo"),
            JSON(JSON::Object{{"deviceType", "iPhone12,1"}, {"os", "iOS"}, {"osVersion", "16.4"}}))
      << "this machine's, whatever requests say";
  EXPECT_EQ(at(start, "context.deviceCategory"), JSON("mobile"));

  auto& shown = page();
  platform->advance(1min);
  EXPECT_EQ(calls(shown), "start") << "nothing changed";
  window->setSight({.minimized = true});
  platform->runUntilIdle();
  EXPECT_EQ(percentage(argument(shown, "geometry")), 0);
  window->setSight({});
  platform->advance(200ms);
  platform->application().enterBackground();
  platform->advance(200ms);
  EXPECT_EQ(at(argument(shown, "geometry"), "adView.reasons"), JSON(JSON::Array{"backgrounded"}));
  platform->application().enterForeground();
  platform->application().setLocked(true);
  platform->advance(200ms);
  EXPECT_EQ(at(argument(shown, "geometry"), "adView.reasons"), JSON(JSON::Array{"deviceLocked"}));
  platform->application().setLocked(false);
  platform->advance(200ms);
  banner->vc()->impressionOMSDK();
  EXPECT_EQ(calls(shown), "start geometry geometry geometry geometry geometry")
      << "the impression is the page's";
  banner->vc()->_resizeActionInMainWebView(VeltoAdViewController::Resize, {320, 1000}, {});
  platform->runUntilIdle();
  EXPECT_NE(percentage(argument(shown, "geometry")), 100) << "what the library changes is told at once";

  banner->removeBanner();
  platform->runUntilIdle();
  EXPECT_TRUE(calls(shown).ends_with(" finish"));
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
  ASSERT_NE(&first, &second);
  EXPECT_EQ(calls(first), "start finish");
  EXPECT_EQ(calls(second), "start");
  EXPECT_EQ(banner->vc()->omidSession(), session);
  ASSERT_TRUE(session);
  EXPECT_EQ(session->mainAdView(), second.webView().shared_from_this());
  EXPECT_NE(at(argument(first, "start"), "adSessionId"), at(argument(second, "start"), "adSessionId"));
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
  EXPECT_EQ(percentage(argument(page(), "geometry")), 0);
  platform->runUntilIdle();
  EXPECT_EQ(calls(page()), "start geometry geometry");
  EXPECT_EQ(percentage(argument(page(), "geometry")), 100);
}

TEST_F(SessionTest, WhatWaitsForAPageIsBoundedAndKeepsItsTimes) {
  const auto volumes = [](const headless::RecordingWebView& hidden) {
    const auto& scripts = hidden.scripts();
    return std::count_if(scripts.begin(), scripts.end(),
                         [](const auto& script) { return script.find("volumeChange") != std::string::npos; });
  };
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
    EXPECT_EQ(calls(hidden).starts_with("start impression mediaVolume"), !fails);
    EXPECT_EQ(calls(hidden).ends_with(" finish"), !fails);
    EXPECT_EQ(volumes(hidden), fails ? 0 : 97);
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
  EXPECT_EQ(calls(hidden), "") << "its page has not loaded yet";
  hidden.finish();
  window->setSight({.onScreen = CGRect{}});
  platform->advance(1s);
  EXPECT_EQ(calls(hidden), "start impression mediaVolume") << "no geometry where nothing of it changes";
  const auto start = argument(hidden, "start");
  EXPECT_EQ(kind(start), "video beginToRender native native");
  EXPECT_EQ(at(start, "loaded"), JSON(JSON::Object{}));
  const auto resources = at(start, "resources");
  ASSERT_TRUE(resources.array() && resources.array()->size() == 1);
  EXPECT_EQ(at(resources.array()->front(), "verificationParameters"), JSON(" "));
  const auto address = at(resources.array()->front(), "resourceUrl");
  EXPECT_TRUE(address.string() && address.string()->starts_with("https://"));
  EXPECT_EQ(hidden.navigate("https://elsewhere.example/"), WKNavigationActionPolicy::Cancel);
  EXPECT_EQ(hidden.navigate("about:srcdoc"), WKNavigationActionPolicy::Allow);

  const auto signalled = [&](float progress) {
    const size_t before = hidden.scripts().size();
    screen->signalPlaybackNativeVideoOMSDK(progress);
    if (hidden.scripts().size() == before) return std::string();
    const auto& script = hidden.scripts().back();
    return script.substr(script.find('"') + 1, script.rfind('"') - script.find('"') - 1);
  };
  for (const auto& [progress, event] :
       std::vector<std::pair<float, std::string>>{{0.255F, "firstQuartile"},
                                                  {0.3F, ""},
                                                  {0.5F, "midpoint"},
                                                  {0.755F, "thirdQuartile"},
                                                  {1, "complete"},
                                                  {1.005F, "complete"},
                                                  {0.98F, ""},
                                                  {0, ""},
                                                  {std::numeric_limits<float>::quiet_NaN(), ""}})
    EXPECT_EQ(signalled(progress), event) << progress;
  screen->volumePlaybackNativeVideoChangeOMSD(0.75F);
  EXPECT_NE(hidden.scripts().back().find(",\"volumeChange\",0.75,"), std::string::npos);

  screen.reset();  // a screen that goes away finishes
  EXPECT_TRUE(calls(hidden).ends_with("finish") && hidden.isMuted());
  platform->advance(1s);
  EXPECT_TRUE(platform->webViews().empty());
}

TEST_F(SessionTest, ABannerThatOutlivesThePlatformStaysQuiet) {
  const auto banner = this->banner();
  loadAd(*banner);
  const auto controller = banner->vc();
  const auto screen = std::make_shared<Screen>();
  screen->startOMSDKSessionForNativeVideo();
  const auto friendly = UIView::make();
  controller->addFriendlyObstructionOMSDKFor(friendly);
  headless::Platform::uninstall();
  controller->removeFriendlyObstructionOMSDKFor(friendly);
  controller->impressionOMSDK();
  controller->finishOMSDKSession();
  screen->signalPlaybackNativeVideoOMSDK(0.5F);
  screen->finishOMSDKSession();
  EXPECT_EQ(controller->omidSession(), nullptr);
}

}  // namespace
}  // namespace velto::test
