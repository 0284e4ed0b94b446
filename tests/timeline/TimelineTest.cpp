// The story that each load leaves behind: what happened on the way, and who hears of it.
#include "TimelineTest.h"

#include <cmath>

namespace velto::test {
namespace {

// What an inspecting tool does is what the application or the world could do, and its timeline says who asked.
TEST_F(TimelineTest, APlacementIsListedReloadedAndMadeToFail) {
  struct Looker : TimelineSink {
    void added(const std::string&, uint64_t, const VeltoTimelineEntry&) override {}
    void ended(const VeltoAdTimeline&) override {}
    void placementsChanged() override { states.append(" ").append(state()); }
    static std::string state() {
      const auto all = TimelineHub::shared()->placements();
      return all.empty() ? "none" : all.back()->stateName();
    }
    std::string states;
  };
  const auto looker = std::make_shared<Looker>();
  TimelineHub::shared()->add(looker);
  auto ad = banner();
  auto placement = TimelineHub::shared()->placements().at(0);
  EXPECT_EQ(std::string(placement->kindName()), "banner");
  EXPECT_FALSE(placement->simulate(Why::PageProcessCrashed)) << "there is no page";
  for (const auto why : InspectedPlacement::simulatedReasons()) {
    SCOPED_TRACE(wordsOf(why).name);
    platform->urlSession().enqueue("/sdk/", markup());
    placement->reload();
    platform->runUntilIdle();
    page().finish();
    page().navigate("velto://loadFinished");
    const size_t asked = platform->urlSession().requests().size();
    EXPECT_TRUE(placement->simulate(why));
    platform->runUntilIdle();
    EXPECT_EQ(last(ad).end, why);
    EXPECT_EQ(last(ad).entries.front().detail, VeltoTimelineEntry::Detail(VeltoAskedBy::Inspector));
    expectError(delegate->lastError, why);
    EXPECT_EQ(platform->urlSession().requests().size(), asked);
  }
  EXPECT_EQ(looker->states, " empty loading shown empty")
      << "an ad stays until another has come, or it fails";
  const auto full1 = interstitial();
  platform->urlSession().enqueue("/sdk/", markup());
  TimelineHub::shared()->placements().at(1)->reload();
  platform->runUntilIdle();
  EXPECT_EQ(Looker::state(), "ready");
  const auto record = placement->record();
  placement.reset();
  ad.reset();
  platform->runUntilIdle();
  EXPECT_EQ(TimelineHub::shared()->placements().size(), 1U);
  EXPECT_TRUE(record->timelines().back().end) << "and can be read still";
}

TEST_F(TimelineTest, AnAdTellsItsWholeWayAndWhoLooksOnHearsIt) {
  struct Observer : VeltoAdTimelineObserver {
    void veltoAdTimelineDidAdd(const std::string& placement, uint64_t,
                               const VeltoTimelineEntry& entry) override {
      EXPECT_EQ(placement, "home");
      kinds.append(kinds.empty() ? "" : " ").append(nameOf(entry.kind));
    }
    void veltoAdTimelineDidEnd(const VeltoAdTimeline& timeline) override { ended = timeline; }
    std::string kinds;
    std::optional<VeltoAdTimeline> ended;
  };
  platform->veltoBundle().files["omsdk-v1.js"] = "service()";
  auto observer = std::make_shared<Observer>();
  const auto ad = banner();
  ad->setPlacement("home");
  ad->setAnimation(VeltoAnimationFromLeft);
  ad->addTimelineObserver(observer);
  auto answer =
      walk(R"({"cn":"Nobody"},{"cn":"VeltoPassbackBannerAdapter","e":{"data":"PHA+PC9wPm1yYWlkLmpz"}})");
  answer.delay = std::chrono::milliseconds(250);
  platform->urlSession().enqueue("/sdk/", answer);
  ad->load();
  platform->advance(std::chrono::milliseconds(250));
  page().finish();
  page().navigate("velto://loadFinished");
  window->tapLink(page(), "https://shop.example/");
  ad->removeBanner();
  platform->advance(std::chrono::seconds(1));
  const auto told = last(ad);
  EXPECT_EQ(
      kindsOf(told),
      "asked request-built sent first-byte answered network-tried network-passed-over network-tried resolved "
      "web-process markup-given page-loaded rich-media measured visible load-finished animated "
      "tapped "
      "measured tapped");
  EXPECT_NEAR(told.first(Kind::FirstByte)->seconds - told.first(Kind::Sent)->seconds, 0.25, 1e-6);
  const auto json = writeJSON(told.json(), false).value();
  for (const char* part :
       {R"("network":"Nobody","reason":"adapter-unknown")", R"("class":"mediation","status":200)",
        R"("kind":"rich-media")", R"("process":"warm")", R"("outcome":"link-opened")", R"("end":"removed")",
        R"("connection":"made")"})
    EXPECT_NE(json.find(part), std::string::npos) << part << json;
  EXPECT_EQ(observer->kinds, kindsOf(told));
  ASSERT_TRUE(observer->ended);
  EXPECT_EQ(observer->ended->load, told.load);
  observer.reset();
  loadAd(*ad);

  // An ad that was fetched before needs no request.
  const auto full1 = interstitial();
  load(*full1, with(markup(), {{"x-ttl", "1"}}));
  platform->advance(std::chrono::seconds(5));
  full1->setAutoShowWhenReady(true);
  full1->load();
  platform->advance(std::chrono::seconds(1));
  EXPECT_EQ(kindsOf(last(full1)),
            "asked list-hit resolved web-process ready show-asked markup-given appeared");
  EXPECT_EQ(std::get<VeltoSeconds>(last(full1).first(Kind::ListHit)->detail).seconds, 4);
}

// What tools read: a log without secrets, a trace that is whole whenever the process ends, figures for many devices.
TEST_F(TimelineTest, LogTraceAndFiguresTellTheSame) {
  platform->veltoBundle().files["omsdk-v1.js"] = "service()";
  platform->diagnostics()->keepLog();
  platform->diagnostics()->keepTrace();
  platform->diagnostics()->keepMarks();
  const auto metrics = VeltoMetrics::collect();
  const auto ad = banner();
  ad->setPlacement("a \"quoted\"\nname\xff");  // which is no text
  platform->urlSession().enqueue("/sdk/", [] {
    auto slow = markup();
    slow.delay = std::chrono::milliseconds(300);
    return slow;
  }());
  ad->load();
  platform->advance(std::chrono::milliseconds(300));
  page().finish();
  page().navigate("velto://loadFinished");
  platform->advance(std::chrono::seconds(2));
  window->view().setHidden(true);
  platform->advance(std::chrono::seconds(2));
  load(*ad, status(204));
  EXPECT_TRUE(ad->veltoAdTimeline().front().first(Kind::PaintedFirst));
  const auto trace = platform->diagnostics()->trace();
  const auto events = readJSON(*trace + "]");
  ASSERT_TRUE(events && events->array()) << *trace;
  std::map<std::string, int> depth;
  std::string spans;
  for (const auto& event : *events->array()) {
    const auto& fields = *event.object();
    const auto phase = *fields.at("ph").string();
    auto& open = depth[std::to_string(*fields.at("id").number())];
    open += phase == "b" ? 1 : (phase == "e" ? -1 : 0);
    if (phase != "n") spans += phase + " " + *fields.at("name").string() + ", ";
    EXPECT_TRUE(fields.at("ts").number() && fields.at("name").string() && open >= 0);
  }
  EXPECT_EQ(depth, (std::map<std::string, int>{{"1.000000", 1}, {"2.000000", 0}})) << "one is shown still";
  EXPECT_NE(spans.find("b answer, e answer, b page, e page, "), std::string::npos) << spans;

  std::string log;
  for (const auto& line : platform->diagnostics()->lines()) {
    log += line.text + "\n";
    EXPECT_EQ(line.fields.at(1).first, "load");
  }
  EXPECT_NE(log.find("2: answered class=unknown status=204"), std::string::npos) << log;
  EXPECT_NE(log.find("2: status-no-fill. The server had no ad"), std::string::npos) << log;
  EXPECT_EQ(log.find("key-1"), std::string::npos);

  std::string marks, moments;
  for (const auto& mark : platform->diagnostics()->marks())
    if (mark.seconds == 0)
      moments += mark.name + " ";
    else
      marks +=
          mark.name + " " + std::to_string(std::lround(mark.seconds * 1000)) + mark.text.substr(18) + ", ";
  EXPECT_EQ(marks, "answer 300 1, load 300 1: filled, ");
  EXPECT_TRUE(moments.starts_with("asked request-built ")) << moments;
  EXPECT_EQ(platform->diagnostics()->marks().back().name, "load");
  EXPECT_EQ(platform->diagnostics()->marks().back().text.substr(18), " 2: status-no-fill");
  ad->removeBanner();
  platform->runUntilIdle();
  const auto figures = metrics->placements().at(0);
  EXPECT_EQ(figures.loads, 2U);
  EXPECT_EQ(figures.refreshes, 0U);
  EXPECT_EQ(figures.fill(), 0.5);
  EXPECT_NEAR(figures.loadSeconds.sum, 0.3, 1e-6);
  EXPECT_NEAR(figures.loadSeconds.quantile(0.5), 0.3, 0.15);
  EXPECT_NEAR(figures.visiblePercent.sum, 50, 5) << "half of the time";
  const auto text = metrics->openMetrics();
  const std::string label = "{placement=\"a \\\"quoted\\\"\\nname\uFFFD\"";
  for (const auto& line :
       {"velto_loads_total" + label + ",reason=\"status-no-fill\"} 1\n",
        "velto_load_seconds_bucket" + label + ",le=\"0.32\"} 1\n",
        "velto_visible_percent_bucket" + label + ",le=\"40.0\"} 0\n", std::string("# EOF\n")})
    EXPECT_NE(text.find(line), std::string::npos) << line << text;
  headless::Platform::uninstall();
  EXPECT_TRUE(readJSON(*trace)) << "whole, and closed";
}

// A page that does the same for ever fills no memory, and loses nothing that comes once.
TEST_F(TimelineTest, RepetitionsAreCountedNotKept) {
  const auto ad = banner();
  loadAd(*ad);
  ad->vc()->ad()->setOrdId("order", "banner", "publisher");  // which the first tap uses up
  for (int i = 0; i < 100; ++i) window->tap({195, 790});
  EXPECT_EQ(last(ad).first(Kind::Tapped)->detail, VeltoTimelineEntry::Detail(VeltoTap::ClickTracked));
  EXPECT_EQ(last(ad).entries.back().detail, VeltoTimelineEntry::Detail(VeltoTap::Told));
  ad->removeBanner();
  platform->runUntilIdle();
  EXPECT_EQ(last(ad).end, Why::Removed);
  EXPECT_EQ(last(ad).leftOut, 100 - PlacementRecord::mostOfAKind);
  EXPECT_LT(last(ad).entries.size(), 40U);
  EXPECT_EQ(last(ad).json().at("endAt").number(), last(ad).endSeconds);
}

}  // namespace
}  // namespace velto::test
