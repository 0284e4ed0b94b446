// The ad's web view: its configuration, the order of loading, and every row of the navigation policy.
#include "velto/ads/VeltoAdManager.h"
#include "velto/core/VeltoDataStore.h"

#include "UITest.h"

namespace velto {
namespace {

using Policy = WKNavigationActionPolicy;
using Type = WKNavigationType;

class WebViewHostTest : public test::UITest {
 protected:
  std::shared_ptr<VeltoBannerViewController> owner = banner();
  VeltoBannerViewControllerPrivate& host = *owner->vc();
  std::shared_ptr<VeltoShownAd> shown = VeltoShownAd::shownBy(host, nullptr);
};

TEST_F(WebViewHostTest, Configuration) {
  [[maybe_unused]] const auto view = shown->createWKWebViewInstance({});
  const auto& c = page().configuration();
  EXPECT_TRUE(c.allowsInlineMediaPlayback);
  EXPECT_TRUE(c.allowsAirPlayForMediaPlayback);
  EXPECT_EQ(c.dataDetectorTypes, 2U);
  EXPECT_EQ(c.mediaTypesRequiringUserActionForPlayback, 0U);
  const auto& script = c.userContentController.userScripts.at(0);
  EXPECT_EQ(script.source,
            "var meta = document.createElement('meta'); meta.setAttribute('name', 'viewport'); "
            "meta.setAttribute('content', 'width=device-width, initial-scale=1.0, maximum-scale=1.0, "
            "user-scalable=no'); "
            "document.getElementsByTagName('head')[0].appendChild(meta);");
  EXPECT_EQ(script.injectionTime, WKUserScriptInjectionTime::AtDocumentEnd);
  EXPECT_TRUE(script.forMainFrameOnly);
  EXPECT_FALSE(page().scrollBehavior().bounces || page().scrollBehavior().scrollEnabled);
  EXPECT_EQ(page().scrollBehavior().contentInsetAdjustmentBehavior, 2);
}

TEST_F(WebViewHostTest, MarkupIsLoadedOnceWebDataIsGone) {
  const auto view = shown->createWKWebViewInstance({});
  shown->loadBannerDataIn(view, VeltoAd::adWithHTML("<p>x</p>", 1, nullptr));
  EXPECT_TRUE(page().loads().empty()) << "not before the data is cleared";
  platform->runUntilIdle();
  EXPECT_EQ(platform->websiteDataStore().cookieClears, 1);
  EXPECT_EQ(platform->websiteDataStore().dataClears, 1);
  EXPECT_FALSE(page().loads().at(0).baseURL);
  EXPECT_TRUE(page().hasRun("navigator.userAgent"));
}

TEST_F(WebViewHostTest, NavigationPolicy) {
  loadAd(*owner);
  delegate->heard.clear();
  auto& opened = platform->application().opened;
  const std::vector<std::tuple<std::string, Type, Policy, const char*>> rows{
      {"velto://loadFinished", Type::Other, Policy::Cancel, nullptr},
      {"velto://loadFinished", Type::LinkActivated, Policy::Cancel, nullptr},
      {"velto://loadFinished/", Type::Other, Policy::Cancel, nullptr},
      {"velto://anything", Type::LinkActivated, Policy::Cancel, nullptr},
      {"VELTO://loadFinished", Type::Other, Policy::Allow, nullptr},
      {"mraid://close", Type::Other, Policy::Allow, nullptr},
      {"mraid://open?url=x", Type::LinkActivated, Policy::Allow, nullptr},
      {"https://shop.example/a", Type::LinkActivated, Policy::Cancel, "https://shop.example/a"},
      {"shop.example/a", Type::LinkActivated, Policy::Cancel, "https://shop.example/a"},
      {"tel:123", Type::LinkActivated, Policy::Allow, nullptr},
      {"https://shop.example/a", Type::Other, Policy::Allow, nullptr},
      {"https://shop.example/a", Type::FormSubmitted, Policy::Allow, nullptr},
      {"https://shop.example/?velto://failLoad", Type::Other, Policy::Allow, nullptr},
      {"about:blank", Type::Other, Policy::Allow, nullptr},
  };
  for (const auto& [url, type, decision, opens] : rows) {
    opened.clear();
    EXPECT_EQ(page().navigate(url, type), decision) << url;
    EXPECT_EQ(opened.empty() ? "" : opened.back().url.absoluteString(), opens ? opens : "") << url;
  }
  EXPECT_EQ(page().navigate(WKNavigationAction{}), Policy::Cancel);
  EXPECT_EQ(delegate->heard, (std::vector<std::string>{"finish", "finish"}));
}

TEST_F(WebViewHostTest, DispatchByKindOfAd) {
  const VeltoControllerDelegate own = std::shared_ptr<VeltoBannerViewControllerDelegate>(delegate);
  const auto mediated = [&](uint64_t type, bool takesRoot) {
    return VeltoAd::adWithMediation(std::make_shared<test::FakeAdapter>(type, takesRoot), 1, nullptr);
  };
  host._processAd(mediated(2, true), std::nullopt, own, true);   // an interstitial's ad
  host._processAd(mediated(1, false), std::nullopt, own, true);  // takes no root view controller
  host._processAd(mediated(0, true), std::nullopt, own, true);
  host._processAd(mediated(2, true), std::nullopt, own, false);  // on a refresh: silent
  host._processAd(nullptr, VeltoErrorAd::veltoErrorAdWithCode(4), own, true);
  host._processAd(nullptr, VeltoErrorAd::veltoErrorAdWithCode(4), own, false);
  const auto noView = test::FakeAdapter::make(1);
  noView->hasView = false;
  host._processAd(test::mediated(noView), std::nullopt, own, true);
  host._processAd(mediated(1, true), std::nullopt, own, true);
  EXPECT_EQ(delegate->heard, (test::Heard{"fail 2", "fail 2", "fail 2", "fail 4", "fail 2", "finish"}));
}

}  // namespace
}  // namespace velto
