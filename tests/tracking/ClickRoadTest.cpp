// The road of a click, from the markup to the acknowledgement.
#include "../ui/UITest.h"
#include "TrackTest.h"

namespace velto {
namespace {

class ClickRoadTest : public test::UITest {
 protected:
  ClickRoadTest() {
    platform->urlSession().pending().at(0)->answer({.body = "1"});  // the install of the registration
    platform->urlSession().respond("trk_", headless::Answer{.body = "1"});
    platform->runUntilIdle();
  }

  // The page as an engine reads it back: its links, escaped for HTML.
  void showAd(VeltoBannerViewController& banner, const std::string& body) {
    platform->urlSession().enqueue("/sdk/", markup());
    banner.load();
    platform->runUntilIdle();
    page().answerScripts([body](const std::string& script) {
      return script == "document.body.innerHTML" ? JSON(body) : JSON();
    });
    page().finish();
    platform->runUntilIdle();
    page().navigate("velto://loadFinished");
    platform->runUntilIdle();
  }
  std::vector<NSURLRequest> clicks() { return platform->urlSession().requests("trk_click"); }
  static constexpr char link[] =
      "<a href=\"https://t.example/?r=ord%3DO7%26veltos%3DB7%26veltop%3DP7&amp;x=1\">ad</a>";
};

TEST_F(ClickRoadTest, APressIsTrackedWithTheAdsIdentifiersOnce) {
  const auto b = banner();
  showAd(*b, link);
  window->tapLink(page(), "https://t.example/");
  ASSERT_EQ(clicks().size(), 1U);
  const auto stored =
      std::get<DefaultsDictionary>(*platform->defaults()->objectForKey("kVeltoTrackIdentifierKey"));
  ASSERT_EQ(stored.size(), 1U);
  EXPECT_EQ(stored.begin()->second, "click");
  EXPECT_TRUE(test::decoded(stored.begin()->first).ends_with(":B7:P7:O7"));
  platform->runUntilIdle();
  EXPECT_EQ(platform->defaults()->objectForKey("kVeltoTrackIdentifierKey"),
            DefaultsValue(DefaultsDictionary{}));

  window->tapLink(page(), "https://t.example/");
  EXPECT_EQ(clicks().size(), 1U) << "a second press of the same ad is none";
  showAd(*b, link);
  window->tapLink(page(), "https://t.example/");
  EXPECT_EQ(clicks().size(), 2U);
}

TEST_F(ClickRoadTest, APageWithoutIdentifiersTracksNothing) {
  const auto b = banner();
  showAd(*b, "<a href=\"https://t.example/\">ad</a>");
  window->tapLink(page(), "https://t.example/");
  EXPECT_EQ(delegate->heard.back(), "press");
  EXPECT_TRUE(clicks().empty());
}

}  // namespace
}  // namespace velto
