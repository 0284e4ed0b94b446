// From a classified answer to an ad, and the list of ads not shown yet.
#include "velto/network/VeltoURL.h"

#include <cmath>

#include "FetchTest.h"

namespace velto {
namespace {

using namespace std::chrono_literals;
using headless::Answer;

class AdsTest : public test::FetchTest {
 protected:
  static Answer typed(const char* content, std::string body = "x") {
    return with(Answer{.headers = {{"x-content", content}}, .body = std::move(body)},
                {{"x-width", "1"}, {"x-height", "1"}});
  }
};

TEST_F(AdsTest, MarkupBecomesAnAd) {
  const auto outcome = fetch(with(markup("<p>ad</p>"), {{"x-fst", "100000000"}, {"x-ttl", "30"}}));
  ASSERT_TRUE(outcome.ad);
  auto& ad = *outcome.ad;
  EXPECT_TRUE(ad.isEqualAd(ad));
  EXPECT_FALSE(ad.isEqualAd(*fetch(markup()).ad));
  EXPECT_EQ(ad.html, "<p>ad</p>");
  EXPECT_EQ(ad.sourceType, VeltoAdSourceMarkup);
  EXPECT_EQ(ad.timer, 100000);
  EXPECT_EQ(ad.ttl, 30);
  EXPECT_EQ(ad.size, (CGSize{320, 50}));
  EXPECT_EQ(ad.bannerSize, VeltoBannerSize320x50);
  EXPECT_EQ(ad.veltoKey, "key-1");
  EXPECT_EQ(ad.site, VeltoURL::serverNames().adServer);
  EXPECT_EQ(ad.createdAt, headless::VirtualQueue::defaultStart);
  EXPECT_TRUE(
      ad.description().ends_with(">\n\tSourceType: 0\n\tWidth: 320.000000\n\tHeight: 50.000000"
                                 "\n\tTimer: 100000\n\tAdapter: (null)"));
}

TEST_F(AdsTest, WhatIsNoAdBecomesItsError) {
  for (const auto& [answered, code] : {std::pair(204, 0), {500, 1}, {404, 2}, {302, 2}, {201, 2}, {503, 2}}) {
    auto answer = markup();
    answer.status = answered;
    EXPECT_EQ(fetch(answer).code(), code) << answered;
  }
  EXPECT_EQ(fetch(Answer::offline()).code(), 4);
  const auto headed = [](std::vector<HeaderFields::Field> fields, const char* width = "1") {
    return with({.headers = std::move(fields), .body = "x"}, {{"x-width", width}, {"x-height", "1"}});
  };
  const HeaderFields::Field html{"Content-Type", "text/html"};
  for (const auto& answer :
       {Answer{.isHTTP = false}, Answer::withoutData(), typed("unheard-of"), typed("HTML"), headed({}),
        headed({{"x-content", ""}, html}), headed({{"Content-Type", "text/html; charset=utf-8"}}),
        headed({{"X-Content", "mediation"}, html}), headed({html}, "320px"),
        Answer{.headers = {{"x-content", "html"}, {"x-width", "320"}}}})
    EXPECT_EQ(fetch(answer).code(), 1);
  for (const auto& answer : {typed("no_fill"), typed("vast"), typed("html", "caf\xe9"),
                             markup("<a href=\"velto://noFillAd\">x</a>")})
    EXPECT_EQ(fetch(answer).code(), 0);
  EXPECT_EQ(fetch(headed({html})).ad->html, "x");
  EXPECT_EQ(fetch(markup("<script src='MRAID.JS'>")).ad->sourceType, VeltoAdSourceMarkup);
  EXPECT_EQ(fetch(markup("no_velto://noFillAd here")).ad->sourceType, VeltoAdSourceMarkup);
  EXPECT_EQ(fetch(typed("html", {"a\0b", 3})).ad->html, std::string("a\0b", 3));
  EXPECT_EQ(fetch(static_cast<VeltoBannerSize>(9)).code(), 2);
}

TEST_F(AdsTest, AnAdCanBeReusedOnlyOnceItsLifetimeHasRunOut) {
  const auto ad = fetch(with(markup(), {{"x-ttl", "30"}})).ad;
  EXPECT_FALSE(ad->canBeUsedFor(VeltoBannerSize320x50));
  platform->advance(10s);
  EXPECT_FALSE(ad->canBeUsedFor(VeltoBannerSize320x50));
  platform->advance(20s);
  EXPECT_TRUE(ad->canBeUsedFor(VeltoBannerSize320x50));
  EXPECT_FALSE(ad->canBeUsedFor(VeltoBannerSize728x90));
  registerKey("key-2");
  EXPECT_FALSE(ad->canBeUsedFor(VeltoBannerSize320x50));
  registerKey("key-1");
  ad->ttl = std::nan("");
  EXPECT_FALSE(ad->canBeUsedFor(VeltoBannerSize320x50));
}

TEST_F(AdsTest, FetchedAdsWaitInTheListUntilTheyAreShown) {
  const auto manager = VeltoAdManager::shared();
  const auto ad = fetch(with(markup(), {{"x-ttl", "30"}})).ad;
  platform->urlSession().enqueue("/sdk/", markup());  // without lifetime: never kept; and nobody waits for it
  VeltoAdManager::fetchFor(VeltoAdTypeBanner, VeltoBannerSize300x250, std::nullopt, nullptr);
  platform->runUntilIdle();
  ASSERT_EQ(manager->ads(), std::vector{ad});

  platform->advance(30s);
  const auto requests = platform->urlSession().requests("/sdk/").size();
  EXPECT_EQ(fetch().ad, ad);
  EXPECT_EQ(fetch().ad, ad) << "reuse does not take it out";
  EXPECT_EQ(platform->urlSession().requests("/sdk/").size(), requests);

  auto& center = platform->notificationCenter();
  center.postNotification({"constNotificationAdShowedVelto", {}});
  center.postNotification({"constNotificationAdShowedVelto", std::string("ad")});
  EXPECT_EQ(manager->ads().size(), 1U);
  center.postNotification({"constNotificationAdShowedVelto", ad});
  EXPECT_TRUE(manager->ads().empty());
  EXPECT_NE(fetch(markup()).ad, ad);
}

}  // namespace
}  // namespace velto
