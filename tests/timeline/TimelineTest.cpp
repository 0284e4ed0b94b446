// The story that each load leaves behind: the right reason for each fault, and what happened on the way.
#include "velto/ads/VeltoAdMediationAdapterProtocol.h"
#include "velto/ads/VeltoAdMediationAdapterRegistry.h"
#include "velto/timeline/LoadRecord.h"

#include "../ui/UITest.h"

namespace velto {
namespace {

using headless::Answer;
using Why = VeltoAdEndReason;
using Kind = VeltoTimelineKind;

constexpr char adapterName[] = "VeltoAdMediationAdapterAdMob";

// Answers with an ad of that adapter, or never.
struct OneNetwork : VeltoAdMediationAdapterProtocol {
  void adapt(const std::shared_ptr<VeltoMediationItemResponse>&, std::optional<int64_t> size,
             const std::shared_ptr<VeltoTaskResponseHeaders>& headers, uint64_t,
             VeltoAdCompletion completion) override {
    if (adapter) completion(VeltoAd::adWithMediation(adapter, size, headers), std::nullopt);
  }
  std::shared_ptr<test::FakeAdapter> adapter;
};

class TimelineTest : public test::UITest {
 protected:
  TimelineTest() { VeltoAdMediationAdapterRegistry::registerAdapter(adapterName, network); }
  ~TimelineTest() override { VeltoAdMediationAdapterRegistry::registerAdapter(adapterName, nullptr); }

  static Answer transport(NSErrorCause cause) { return Answer::failure({"other", 1, "", cause}); }
  static Answer phone(int64_t code) { return Answer::failure({"NSURLErrorDomain", code, ""}); }
  static Answer content(const char* word, std::string body = "") {
    return {.headers = {{"x-content", word}, {"x-width", "320"}, {"x-height", "50"}},
            .body = std::move(body)};
  }
  static Answer walk(const std::string& items) { return mediation(R"({"mediation":[)" + items + "]}"); }
  Answer brought(std::shared_ptr<test::FakeAdapter> adapter, const char* kind = "Banner") {
    network->adapter = std::move(adapter);
    return walk(std::string(R"({"cn":"VeltoAdmob)") + kind + R"(Adapter"})");
  }
  static VeltoAdTimeline last(const auto& ad) { return ad->veltoAdTimeline().back(); }
  static std::string kindsOf(const VeltoAdTimeline& timeline) {
    std::string words;
    for (const auto& entry : timeline.entries)
      words.append(words.empty() ? "" : " ").append(nameOf(entry.kind));
    return words;
  }
  // The error that came with it.
  static void expectError(const auto& told, Why why) {
    ASSERT_EQ(told.has_value(), wordsOf(why).errorCode.has_value());
    if (!told) return;
    EXPECT_EQ(told->reason, why);
    EXPECT_EQ(told->errorCode, wordsOf(why).errorCode);
    EXPECT_NE(told->explanation().find(wordsOf(why).advice), std::string::npos);
  }

  const std::shared_ptr<OneNetwork> network = std::make_shared<OneNetwork>();
};

// What servers, networks and connections do. The delegate hears of it, but not after a refresh, which ends the same.
TEST_F(TimelineTest, EachFaultOnTheWayToAnAdHasItsReason) {
  using test::FakeAdapter;
  const auto viewless = FakeAdapter::make(VeltoAdTypeBanner);
  viewless->hasView = false;
  const auto withHeaders = [](std::vector<HeaderFields::Field> headers) {
    return Answer{.headers = std::move(headers)};
  };
  const std::vector<std::pair<Answer, Why>> faults{
      {Answer::offline(), Why::Offline},
      {phone(-1001), Why::TimedOut},
      {phone(-1003), Why::NameNotFound},
      {phone(-1), Why::TransportFailed},
      {transport(NSErrorCause::NotConnected), Why::NotConnected},
      {transport(NSErrorCause::Untrusted), Why::Untrusted},
      {transport(NSErrorCause::SecureConnectionFailed), Why::SecureConnectionFailed},
      {transport(NSErrorCause::ConnectionLost), Why::ConnectionLost},
      {transport(NSErrorCause::TooLarge), Why::AnswerTooLarge},
      {{.status = 302, .headers = {{"Location", "http://elsewhere.example/"}}}, Why::RedirectRefused},
      {status(204), Why::StatusNoFill},
      {status(500), Why::StatusServerError},
      {status(404), Why::StatusUnexpected},
      {Answer::withoutData(), Why::AnswerWithoutData},
      {{.isHTTP = false}, Why::AnswerNotHTTP},
      {withHeaders({{"Content-Type", "text/plain"}}), Why::KindMissing},
      {content("picture"), Why::KindUnknown},
      {withHeaders({{"x-content", "html"}, {"x-width", "320"}}), Why::SizeMissing},
      {content("no_fill"), Why::HeaderNoFill},
      {content("vast"), Why::VideoAnswer},
      {content("html", "\xff"), Why::BodyNotText},
      {content("html", "velto://noFillAd"), Why::MarkupNoFill},
      {mediation("[]"), Why::InstructionsUnreadable},
      {walk(R"({"cn":"Nobody"})"), Why::NobodyFilled},
      {brought(std::make_shared<FakeAdapter>(VeltoAdTypeBanner, false)), Why::AdapterTakesNoController},
      {brought(viewless), Why::AdapterWithoutView},
      {brought(FakeAdapter::make(VeltoAdTypeInterstitial)), Why::AdapterOfOtherKind},
      {brought(nullptr), Why::AdapterNeverAnswered}};
  const std::map<Why, std::shared_ptr<FakeAdapter>> adapters{
      {Why::AdapterTakesNoController, std::make_shared<FakeAdapter>(VeltoAdTypeBanner, false)},
      {Why::AdapterWithoutView, viewless},
      {Why::AdapterOfOtherKind, FakeAdapter::make(VeltoAdTypeInterstitial)}};
  const auto ad = banner();
  ad->setEnableAutoRefresh(true);
  for (const auto& [answer, why] : faults) {
    SCOPED_TRACE(wordsOf(why).name);
    const auto adapter = adapters.find(why);
    network->adapter = adapter == adapters.end() ? nullptr : adapter->second;
    delegate->lastError.reset();
    load(*ad, answer);
    EXPECT_EQ(last(ad).end, why);
    expectError(delegate->lastError, why);
    EXPECT_EQ(platform->views().contentHeld(), 0) << "no web process stays without an ad";
    delegate->lastError.reset();
    platform->urlSession().enqueue("/sdk/", answer);
    platform->advance(std::chrono::seconds(31));
    EXPECT_EQ(last(ad).entries.front().detail, VeltoTimelineEntry::Detail(VeltoAskedBy::Refresh));
    EXPECT_EQ(last(ad).end, why);
    EXPECT_FALSE(delegate->lastError);
  }
  EXPECT_EQ(ad->veltoAdTimeline().size(), 32U) << "no more are kept";

  // Two answers, of which the first counts.
  load(*ad, walk(""));
  EXPECT_EQ(last(ad).end, Why::InstructionsEmpty);
  VeltoSettings settings;
  settings.gender = static_cast<VeltoGender>(3);
  ad->load(settings);
  platform->runUntilIdle();
  expectError(delegate->lastError, Why::BadRequestValue);
  VeltoFramework::setEndpoint("no name");
  ad->load();
  platform->runUntilIdle();
  EXPECT_EQ(last(ad).end, Why::NoServerAddress);
}

TEST_F(TimelineTest, EachEndOfABannerHasItsReason) {
  const auto failing = [](NSErrorCause cause) { return NSError{"engine", 1, "", cause}; };
  const std::vector<std::pair<std::function<void(std::shared_ptr<VeltoBannerViewController>&)>, Why>> ends{
      {[&](auto&) { page().fail(failing(NSErrorCause::Unknown)); }, Why::PageFailed},
      {[&](auto&) { page().fail(failing(NSErrorCause::Untrusted)); }, Why::PageUntrusted},
      {[&](auto&) { page().fail(failing(NSErrorCause::ProcessCrashed)); }, Why::PageProcessCrashed},
      {[&](auto&) { page().fail(failing(NSErrorCause::ProcessOutOfMemory)); }, Why::PageProcessOutOfMemory},
      {[&](auto&) { page().fail(failing(NSErrorCause::ProcessEnded)); }, Why::PageProcessEnded},
      {[&](auto&) { page().navigate("velto://failLoad"); }, Why::PageGaveUp},
      {[&](auto&) { page().navigate("mraid://unload"); }, Why::PageLeft},
      {[&](auto& ad) { ad->removeBanner(); }, Why::Removed},
      {[&](auto& ad) { load(*ad, markup()); }, Why::LoadedAnew},
      {[&](auto& ad) {
         load(*ad, status(204));
         ad->removeBanner();
       },
       Why::Removed},
      {[&](auto&) {
         platform->urlSession().enqueue(markup());
         platform->advance(std::chrono::seconds(31));
       },
       Why::Refreshed},
      {[&](auto&) {
         platform->urlSession().enqueue(status(204));
         platform->advance(std::chrono::seconds(31));
       },
       Why::RefreshWithoutAd},
      {[&](auto& ad) { ad.reset(); }, Why::ControllerGone}};
  for (const auto& [end, why] : ends) {
    SCOPED_TRACE(wordsOf(why).name);
    auto ad = banner();
    ad->setEnableAutoRefresh(true);
    delegate->lastError.reset();
    loadAd(*ad, markup(test::richPage));
    const auto vc = ad->vc();
    EXPECT_FALSE(last(ad).end);
    end(ad);
    if (wordsOf(why).errorCode) expectError(delegate->lastError, why);
    platform->runUntilIdle();
    EXPECT_EQ(vc->placement().timelines().front().end, why);
  }

  // What a page left out is the reason, not what took its place.
  const auto silent = banner();
  load(*silent, markup());
  load(*silent, markup());
  EXPECT_EQ(silent->veltoAdTimeline().front().end, Why::PageNeverLoaded);

  auto container = UIView::make();
  const auto elsewhere =
      VeltoBannerViewController::initWithDelegate(delegate, VeltoBannerSize320x50, container);
  load(*elsewhere, markup());
  expectError(delegate->lastError, Why::ContainerElsewhere);
  container.reset();
  load(*elsewhere, markup());
  EXPECT_EQ(last(elsewhere).end, Why::ContainerGone);
  delegate->host.reset();
  const auto homeless = banner();
  load(*homeless, markup());
  EXPECT_EQ(last(homeless).end, Why::HostGone);

  // An answer that is on its way finds nobody, or no platform.
  const auto waiting = banner();
  waiting->load();
  headless::Platform::uninstall();
  EXPECT_EQ(last(waiting).end, Why::PlatformGone);
  EXPECT_EQ(last(silent).end, Why::PlatformGone);
}

TEST_F(TimelineTest, EachEndOfAnInterstitialHasItsReason) {
  const auto shown = [this](const auto& ad, Answer answer = markup()) {
    load(*ad, std::move(answer));
    ad->show();
    platform->advance(std::chrono::seconds(1));
    EXPECT_TRUE(last(ad).first(Kind::Appeared));
  };
  const auto ad = interstitial();
  expectError(ad->show(window->controller()), Why::NothingReady);
  load(*ad, markup());
  load(*ad, markup());
  EXPECT_EQ(ad->veltoAdTimeline().front().end, Why::NeverShown);
  window->hide();
  expectError(ad->show(window->controller()), Why::WindowNotOnScreen);
  ad->show();
  platform->advance(std::chrono::seconds(1));
  expectError(full->lastError, Why::PresentationRefused);
  EXPECT_FALSE(last(ad).end) << "it may be shown later";
  window->show();
  load(*ad, markup());
  EXPECT_EQ(ad->veltoAdTimeline()[1].end, Why::PresentationRefused) << "as it never was";

  ad->show();
  platform->advance(std::chrono::seconds(1));
  expectError(ad->show(window->controller()), Why::PresentedAlready);
  expectError(interstitial()->show(window->controller()), Why::NothingReady);
  ad->vc()->_tapCloseButton();
  EXPECT_EQ(last(ad).end, Why::ClosedByPerson);
  platform->advance(std::chrono::seconds(1));

  shown(ad, markup(test::richPage));
  auto& closing = page();
  closing.finish();
  load(*ad, markup());  // waits for its turn
  closing.navigate("mraid://close");
  EXPECT_EQ(ad->veltoAdTimeline()[3].end, Why::PageLeft);
  platform->advance(std::chrono::seconds(1));
  EXPECT_TRUE(last(ad).first(Kind::Ready));

  shown(ad, brought(test::FakeAdapter::make(VeltoAdTypeInterstitial), "Interstitial"));
  platform->advance(std::chrono::seconds(15));
  EXPECT_EQ(last(ad).end, Why::AdapterShowedNothing);
  shown(ad, brought(test::FakeAdapter::make(VeltoAdTypeInterstitial), "Interstitial"));
  network->adapter->told()->mediationBannerDidClose();
  EXPECT_EQ(last(ad).end, Why::ClosedByAdapter);
}

// --- the way of an ad

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
  const auto metrics = VeltoMetrics::collect();
  const auto ad = banner();
  ad->setPlacement("a \"quoted\"\nname");
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
  const std::string label = "{placement=\"a \\\"quoted\\\"\\nname\"";
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
  for (int i = 0; i < 100; ++i) window->tap({195, 790});
  ad->removeBanner();
  platform->runUntilIdle();
  EXPECT_EQ(last(ad).end, Why::Removed);
  EXPECT_EQ(last(ad).leftOut, 100 - PlacementRecord::mostOfAKind);
  EXPECT_LT(last(ad).entries.size(), 40U);
  EXPECT_EQ(last(ad).json().at("endAt").number(), last(ad).endSeconds);
}

}  // namespace
}  // namespace velto
