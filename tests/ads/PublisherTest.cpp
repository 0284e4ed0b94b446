// The identifiers that a page's markup carries.
#include "velto/ads/AdPublisherInfoSDKVelto.h"
#include "velto/platform/ui/WKWebView.h"

#include "../support/HeadlessTest.h"

namespace velto {
namespace {

using AdPublisherInfoSDKVelto::PublisherIdentifiers;
using AdPublisherInfoSDKVelto::publisherIdentifiersIn;

class PublisherTest : public test::HeadlessTest {};

TEST_F(PublisherTest, FindsTheThreeInTheirOrder) {
  const PublisherIdentifiers found{"1", "2", "3"};
  const std::string whole = "<a href=\"https://x/?u=ord%3D1%26veltos%3D2%26veltop%3D3";
  for (const std::string end :
       {"", "&amp;x=1", "\">", "%26x%3D4", "veltop%3D5", "ord%3D7%26veltos%3D8%26veltop%3D9"})
    EXPECT_EQ(publisherIdentifiersIn(whole + end), found) << end;
  const std::pair<const char*, PublisherIdentifiers> others[] = {
      {"ord%3D1%26aveltos%3D2veltos%3D9%26bveltop%3D3", found},  // around the marks anything may stand
      {"ord%3D%26veltos%3D%26veltop%3D", {"", "", ""}},
      // values stay escaped, and any word may end in the mark
      {"keyword%3D5%2526%26veltos%3D%2525%26veltop%3Dp", {"5%2526", "%2525", "p"}}};
  for (const auto& [markup, identifiers] : others) EXPECT_EQ(publisherIdentifiersIn(markup), identifiers);
}

TEST_F(PublisherTest, AnythingElseIsNothing) {
  for (const std::string markup :
       {"", "veltos%3D1", "ord%3D1%26veltop%3D3%26veltos%3D2", "ord%3D1%26veltos%3D2",
        "ord%3D1veltos%3D2%26veltop%3D3", "ord%3D1&%26veltos%3D2%26veltop%3D3",
        "ord%3D1%26veltos%3D2\"%26veltop%3D3", "Ord%3D1%26veltos%3D2%26veltop%3D3",
        "ord%3D1%26Veltos%3D2%26veltop%3D3", "ord%3D1ord%3D1%26veltos%3D2%26veltop%3D3",
        "ord=1&veltos=2&veltop=3", "ord%3d1%26veltos%3d2%26veltop%3d3"})
    EXPECT_FALSE(publisherIdentifiersIn(markup)) << markup;
}

TEST_F(PublisherTest, LongPagesAreReadInOneGo) {
  std::string page;
  while (page.size() < 5 << 20) page += "%26veltos%3D<b>rd%3D</b>";
  EXPECT_FALSE(publisherIdentifiersIn(page + "ord%3D" + page));
  page.insert(0, "ord%3D1%26veltos%3D2%26veltop%3D3");
  EXPECT_TRUE(publisherIdentifiersIn(page));
}

TEST_F(PublisherTest, ThePageIsReadOffTheMainThreadAndAnsweredOnIt) {
  const auto webView = WKWebView::initWithFrame({}, {});
  auto& page = platform->views().webView();
  const std::pair<std::optional<JSON>, std::string> answers[] = {
      {JSON("ord%3D1%26veltos%3D2%26veltop%3D3"), "123"}, {JSON(5), "---"}, {std::nullopt, "---"}};
  std::string heard;
  for (const auto& [answer, expected] : answers) {
    page.answerScripts([said = answer](const std::string&) { return said; });
    heard.clear();
    const auto before = platform->backgroundWork();
    AdPublisherInfoSDKVelto::findPublisherInformations(
        webView, [&](auto ordId, auto bannerId, auto publisherId) {
          EXPECT_TRUE(platform->mainQueue().isCurrent());
          EXPECT_EQ(platform->backgroundWork(), before + 1) << "read off the main thread";
          for (const auto& part : {ordId, bannerId, publisherId}) heard += part.value_or("-");
        });
    EXPECT_EQ(heard, "");
    platform->runUntilIdle();
    EXPECT_EQ(heard, expected);
    EXPECT_EQ(platform->backgroundWork(), before + 1);
  }
  EXPECT_EQ(page.scripts().back(), "document.body.innerHTML");
}

}  // namespace
}  // namespace velto
