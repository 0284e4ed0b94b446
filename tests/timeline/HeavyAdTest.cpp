// Ads that cost the device too much: what is counted, what is told, and what becomes of them. And that no page works
// for nobody.
#include "../ui/UITest.h"

namespace velto {
namespace {

using Kind = VeltoTimelineKind;
using Limit = VeltoAdLimit;
using std::chrono::seconds;

constexpr uint64_t MiB = 1 << 20;

class HeavyAdTest : public test::UITest {
 protected:
  // A banner with an ad whose process has done something else before.
  std::shared_ptr<VeltoBannerViewController> shown(VeltoHeavyAdPolicy policy = VeltoHeavyAdPolicyReport) {
    auto ad = banner();
    ad->setEnableAutoRefresh(true);
    ad->setRefreshTimeSeconds(1000);
    ad->setHeavyAdPolicy(policy);
    loadAd(*ad);
    use = {7, 1, 100, 50, 80 * MiB, 1000, 0};
    page().setUse(use);
    platform->runUntilIdle();
    return ad;
  }
  // So much more in each second.
  void work(int times, double processor, uint64_t network = 0, uint64_t memory = 0) {
    for (int i = 0; i < times; ++i) {
      platform->advance(seconds(1));
      *use.processorSeconds += processor;
      *use.mainThreadSeconds += processor / 2;
      *use.networkBytes += network;
      *use.memoryBytes += memory;
      *use.wakeUps += 100;
      page().setUse(use);
      platform->runUntilIdle();
    }
  }
  void hide() {
    window->setSight({.painted = false});
    platform->advance(seconds(3));
  }
  static std::vector<VeltoAdExcess> found(const auto& ad) {
    std::vector<VeltoAdExcess> list;
    const auto told = ad->veltoAdTimeline().back();
    for (const auto& entry : told.entries)
      if (const auto* excess = std::get_if<VeltoAdExcess>(&entry.detail)) list.push_back(*excess);
    return list;
  }
  WebPageUse use;
};

// In the second in which it was crossed, with what there was then, and not again.
TEST_F(HeavyAdTest, EachLimitIsToldOnce) {
  struct Case {
    std::function<void()> before;  // the limit is crossed
    std::function<void()> crossing;
    VeltoAdExcess excess;
  };
  const std::vector<Case> cases{
      {[&] { work(4, 0.01, 1'000'000); }, [&] { work(1, 0, 500'000); }, {Limit::Network, 4.5e6, 4e6}},
      {[&] { work(16, 0.9); }, [&] { work(1, 0.9); }, {Limit::ProcessorPeak, 15.3, 15}},
      {[&] { work(133, 0.45); }, [&] { work(1, 0.45); }, {Limit::Processor, 60.3, 60}},
      {[&] { work(3, 0.1, 0, 100 * MiB); },
       [&] { work(1, 0.1, 0, MiB); },
       {Limit::Memory, 301.0 * MiB, 300.0 * MiB}},
      {[&] {
         work(2, 5);  // while it is seen
         hide();
         work(5, 0.1);
       },
       [&] { work(1, 0.1); },
       {Limit::Unseen, 0.6, 0.5}}};
  for (const auto& [before, crossing, excess] : cases) {
    SCOPED_TRACE(nameOf(excess.limit));
    window->setSight({});
    const auto ad = shown();
    before();
    EXPECT_TRUE(found(ad).empty());
    crossing();
    ASSERT_EQ(found(ad).size(), 1U);
    EXPECT_EQ(found(ad)[0].limit, excess.limit);
    EXPECT_NEAR(found(ad)[0].figure, excess.figure, 1e-6 * excess.figure);
    EXPECT_EQ(found(ad)[0].most, excess.most);
    work(2, 0.01, 1000);
    EXPECT_EQ(found(ad).size(), 1U);
    EXPECT_EQ(ad->state(), VeltoBannerStateShown);
  }
}

TEST_F(HeavyAdTest, OfThoseThatShareAProcessAllAreToldAndNoneGoes) {
  const auto ad = shown(VeltoHeavyAdPolicyReplace);
  use.pages = 3;
  use.isShared = true;
  work(31, 0.6);
  ASSERT_EQ(found(ad).size(), 1U);
  EXPECT_EQ(found(ad)[0].limit, Limit::ProcessorPeak);
  EXPECT_EQ(found(ad)[0].ads, 3);
  EXPECT_EQ(ad->state(), VeltoBannerStateShown);
  EXPECT_FALSE(ad->adWeight()->processorSeconds) << "its own is not known";
  work(60, 0.4);
  use.pages = 1;
  use.isShared = false;
  work(150, 0.4);
  EXPECT_EQ(found(ad).size(), 1U) << "what the others used went with them";
  work(1, 1);
  ASSERT_EQ(found(ad).size(), 2U);
  EXPECT_EQ(found(ad)[1].limit, Limit::Processor);
  EXPECT_EQ(ad->veltoAdTimeline().back().end, VeltoAdEndReason::PageTooHeavy) << "that was its own";
}

TEST_F(HeavyAdTest, NobodyIsBlamedForAnother) {
  const auto metrics = VeltoMetrics::collect();
  const auto ad = shown();
  EXPECT_EQ(ad->adWeight()->processorSeconds, 0) << "what was before is not the ad's";
  work(100, 0.4);  // a busy one, but never too much at a time
  use.pages = 2;
  work(20, 1, 0, 50 * MiB);
  use.pages = 1;
  work(2, 0.1, 1000, 10 * MiB);
  use = {8, 1, 0, 0, 0, 0, use.networkBytes};  // it has moved
  work(2, 0.1);
  use.memoryBytes = 500 * MiB;
  page().setUse({});  // and then ended
  platform->runUntilIdle();
  EXPECT_TRUE(found(ad).empty());
  const auto weight = ad->adWeight();
  ASSERT_TRUE(weight);
  EXPECT_NEAR(*weight->processorSeconds, 40.2, 0.3);
  EXPECT_NEAR(*weight->mainThreadShare(), 20.1 / 124, 0.01);
  EXPECT_NEAR(static_cast<double>(*weight->wakeUps), 10'300, 200);
  EXPECT_EQ(weight->memoryBytes, 10 * MiB);
  ad->removeBanner();
  platform->runUntilIdle();
  const auto told = ad->veltoAdTimeline().back();
  EXPECT_EQ(told.entries.back().kind, Kind::Weighed);
  const auto fields = told.entries.back().fields();
  EXPECT_EQ(fields.at("memoryBytes").number(), 10.0 * MiB);

  const auto touched = shown();
  window->hide();
  platform->advance(seconds(3));
  work(1, 0.4);
  EXPECT_TRUE(found(touched).empty());
  work(1, 0.4);
  EXPECT_EQ(found(touched).at(0).limit, Limit::Unseen) << "in a window that is hidden, too";
  window->show();
  window->tap({195, 790});
  work(100, 1, 1'000'000, 100 * MiB);
  EXPECT_EQ(found(touched).size(), 1U) << "a person wants it";
  VeltoHeavyAdLimits limits;
  limits.networkBytes = 10;
  touched->setHeavyAdLimits(limits);
  loadAd(*touched);
  page().setUse({.process = 9, .processorSeconds = 1, .networkBytes = 20});
  platform->runUntilIdle();
  EXPECT_EQ(found(touched).size(), 1U) << "its next ad is another";
  limits.networkBytes = 100;
  touched->setHeavyAdLimits(limits);
  loadAd(*touched);
  page().setUse({.process = 9, .networkBytes = 2000, .touched = true});
  platform->runUntilIdle();
  EXPECT_TRUE(found(touched).empty()) << "with a key, too";
  touched->removeBanner();
  platform->runUntilIdle();
  const auto figures = metrics->placements().at(0);
  EXPECT_EQ(figures.heavy, (std::map<Limit, uint64_t>{{Limit::Network, 1}, {Limit::Unseen, 1}}));
  EXPECT_EQ(figures.memoryBytes.count, 2U);
  EXPECT_NEAR(figures.processorSeconds.quantile(1), 100, 20);
  const auto text = metrics->openMetrics();
  EXPECT_NE(text.find("velto_heavy_ads_total{placement=\"banner\",limit=\"network\"} 1\n"),
            std::string::npos);
  EXPECT_NE(text.find("velto_ad_memory_bytes_count{placement=\"banner\"} 2\n"), std::string::npos);
}

TEST_F(HeavyAdTest, ThePolicyDecidesWhatBecomesOfIt) {
  const auto replaced = shown(VeltoHeavyAdPolicyReplace);
  platform->urlSession().enqueue(markup());
  work(5, 0, 1'000'000);
  EXPECT_EQ(replaced->veltoAdTimeline().back().end, VeltoAdEndReason::PageTooHeavy);
  EXPECT_EQ(replaced->state(), VeltoBannerStateEmpty);
  EXPECT_EQ(platform->views().webViews().size(), 0U) << "closed, it uses nothing";
  platform->advance(seconds(1000));
  EXPECT_EQ(replaced->veltoAdTimeline().size(), 2U);
  EXPECT_EQ(platform->views().webViews().size(), 1U) << "the next refresh goes on";
  loadAd(*replaced, markup(test::richPage));
  page().navigate("mraid://expand");
  platform->runUntilIdle();
  ASSERT_EQ(replaced->state(), VeltoBannerStateExpanded);
  page().setUse({.process = 7, .networkBytes = 5'000'000});
  platform->runUntilIdle();
  EXPECT_EQ(replaced->state(), VeltoBannerStateEmpty) << "also where it covers all";
  EXPECT_EQ(platform->views().webViews().size(), 0U);
  EXPECT_TRUE(replaced->vc()->view()->subviews().empty());
  loadAd(*replaced);
  EXPECT_EQ(replaced->vc()->view()->frame().size, (CGSize{320, 50})) << "and the next has its own place";
  replaced->removeBanner();

  const auto full1 = interstitial();
  full1->setHeavyAdPolicy(VeltoHeavyAdPolicyReplace);
  load(*full1, markup());
  full1->show();
  platform->advance(seconds(1));
  use = {7, 1, 0, 0, 0, 0, 0};
  work(5, 0, 1'000'000);
  EXPECT_EQ(full1->veltoAdTimeline().back().end, VeltoAdEndReason::PageTooHeavy);
  platform->advance(seconds(1));
  EXPECT_EQ(full1->state(), VeltoInterstitialStateEmpty);

  const auto paused = shown(VeltoHeavyAdPolicyPauseUnseen);
  hide();
  EXPECT_FALSE(page().hasRun("pause()")) << "not heavy yet";
  work(5, 0, 1'000'000);
  EXPECT_TRUE(page().hasRun("pause()") && page().isMuted());
  window->setSight({});
  platform->runUntilIdle();
  EXPECT_TRUE(page().hasRun("play()") && !page().isMuted());
  EXPECT_EQ(paused->state(), VeltoBannerStateShown);
}

// Both parts of an expanded page are looked at. What a person does to one of them is done to the ad.
TEST_F(HeavyAdTest, TheSecondPartCounts) {
  const auto ad = banner();
  loadAd(*ad, markup(test::richPage));
  platform->urlSession().enqueue(markup(test::richPage));
  page().navigate("mraid://expand?u=https%3A%2F%2Fa.example%2F2");
  platform->runUntilIdle();
  ASSERT_EQ(platform->webViews().size(), 2U);
  auto& first = *platform->webViews()[0];
  auto& second = *platform->webViews()[1];
  second.finish();
  platform->advance(seconds(3));
  EXPECT_TRUE(second.isInSight() && !first.isInSight());
  hide();
  EXPECT_FALSE(second.isInSight());
  second.setUse({.process = 9, .networkBytes = 1, .touched = true});
  first.setUse({.process = 8, .networkBytes = 5'000'000});
  platform->runUntilIdle();
  EXPECT_TRUE(found(ad).empty());
  second.navigate("mraid://close");
  window->setSight({});
  platform->runUntilIdle();
  EXPECT_TRUE(first.isInSight());
}

// The engine holds a page back that nobody sees. It is there again in the turn in which it can be seen.
TEST_F(HeavyAdTest, AnUnseenPageIsHeldBack) {
  platform->advance(seconds(10));
  const auto rest = platform->mainQueue().pending();
  const auto ad = banner();
  load(*ad, markup());
  platform->advance(seconds(10));
  EXPECT_TRUE(page().isInSight()) << "it loads, and cannot be seen before";
  page().finish();
  page().navigate("velto://loadFinished");
  platform->advance(seconds(10));
  EXPECT_TRUE(page().isInSight());
  EXPECT_EQ(platform->mainQueue().pending(), rest) << "nothing runs for it";

  window->hide();
  platform->advance(seconds(3));
  EXPECT_TRUE(page().isInSight()) << "the toolkit hides it by itself";
  window->show();
  platform->runUntilIdle();

  // A look for what it used while it was seen comes on top of those of each second, and no other follows from it.
  window->setSight({.painted = false});
  platform->advance(std::chrono::milliseconds(1900));
  for (const int percent : {10, 20, 30}) {
    page().setUse({.process = 7, .processorSeconds = percent / 100.0});
    platform->advance(std::chrono::milliseconds(60));
  }
  EXPECT_EQ(platform->mainQueue().pending(), rest + 1);
  window->setSight({});
  platform->advance(seconds(2));

  const CGRect all = window->view().bounds();
  hide();
  window->setSight({.covers = {all}});
  platform->runUntilIdle();
  window->setSight({});
  platform->runUntilIdle();
  EXPECT_FALSE(page().isInSight()) << "looked at just now";
  platform->advance(std::chrono::milliseconds(50));
  EXPECT_TRUE(page().isInSight());
  platform->advance(seconds(2));
  const std::vector<std::pair<WindowSight, bool>> sights{
      {{.minimized = true}, false},
      {{.focused = false}, false},
      {{.measurable = false}, true},
      {{.painted = false}, false},
      {{.onScreen = CGRect{{0, 0}, {390, 400}}}, false},
      {{.onScreen = CGRect{{0, 0}, {390, 700}}}, true},  // soon to be seen
      {{.clip = CGRect{{0, 0}, {390, 500}}}, false},
      {{.covers = {all}}, false},
      {{.covers = {{{0, 0}, {390, 780}}}}, true}};
  for (size_t i = 0; i < sights.size(); ++i) {
    SCOPED_TRACE(i);
    window->setSight(sights[i].first);
    platform->advance(std::chrono::milliseconds(900));
    EXPECT_TRUE(page().isInSight()) << "what comes back at once goes on";
    platform->advance(seconds(2));
    EXPECT_EQ(page().isInSight(), sights[i].second);
    EXPECT_EQ(platform->mainQueue().pending(), rest);
    window->setSight({});
    platform->runUntilIdle();
    EXPECT_TRUE(page().isInSight());
    platform->advance(seconds(2));
  }
}

}  // namespace
}  // namespace velto
