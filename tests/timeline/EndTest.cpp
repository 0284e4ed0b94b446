// Why loads end: the right reason for each fault and for each end of an ad.
#include "TimelineTest.h"

namespace velto::test {
namespace {

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
  for (const auto& [answer, second] :
       {std::pair(walk(""), Why::ItemNotInList), {mediation("{}"), Why::NobodyFilled}}) {
    load(*ad, answer);
    EXPECT_EQ(last(ad).end, Why::InstructionsEmpty);
    expectError(delegate->lastError, second);
  }
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

// Of all items but the last, whose ad comes.
TEST_F(TimelineTest, EachFaultOfAnItemHasItsReason) {
  const std::string passback = R"({"cn":"VeltoPassbackBannerAdapter")";
  const std::string monetize = R"({"cn":"VeltoMonetizeBannerAdapter")";
  const std::string data = R"(,"e":{"data":)";
  network->error = VeltoErrorAd::veltoErrorAdWithCode(VeltoErrorNoFill);
  for (Answer answer : {status(500), Answer::offline(), status(204), content("picture")})
    platform->urlSession().enqueue("/dev/", answer);
  const auto ad = banner();
  load(*ad,
       walk(R"({"cn":"Nobody"},{},{"cn":"VeltoAdmobBannerAdapter"},)" + passback + "}," + passback + data +
            R"("%%%x"}},)" + passback + data + R"("PGEgaHJlZj0idmVsdG86Ly9ub0ZpbGxBZCI+PC9hPg=="}},)" +
            monetize + "}," + monetize + data + R"("a"}},)" + monetize + data + R"("a"}},)" + monetize +
            data + R"("a"}},)" + monetize + data + R"("a"}},)" + passback + data + R"("PHA+"}})"));
  EXPECT_EQ(passedOver(last(ad)),
            (std::vector{Why::AdapterUnknown, Why::AdapterUnknown, Why::Unexplained, Why::ItemWithoutData,
                         Why::ItemWithoutData, Why::MarkupNoFill, Why::ItemWithoutData,
                         Why::StatusServerError, Why::Offline, Why::StatusNoFill, Why::KindUnknown}));
  EXPECT_FALSE(last(ad).end);
  EXPECT_FALSE(delegate->lastError);
}

// A machine on which no page can be shown costs ads, and is told of like any other fault.
TEST_F(TimelineTest, AnEngineThatCannotStartCostsAdsAlone) {
  platform->views().failWebContent({"engine", 1, "no namespaces", NSErrorCause::EngineUnavailable});
  const auto ad = banner();
  ad->setEnableAutoRefresh(true);
  const auto full1 = interstitial();
  load(*ad, markup(test::richPage));
  load(*full1, markup());
  for (const auto& told : {delegate->lastError, full->lastError}) {
    expectError(told, Why::EngineUnavailable);
    EXPECT_EQ(told->error->localizedDescription, "no namespaces");
  }
  EXPECT_FALSE(full1->isReady());
  platform->urlSession().enqueue("/sdk/", markup());
  platform->advance(std::chrono::seconds(31));
  EXPECT_EQ(ad->veltoAdTimeline().size(), 2U);
  for (const auto& told : {last(ad), last(full1)}) EXPECT_EQ(told.end, Why::EngineUnavailable);
  EXPECT_EQ(platform->views().contentHeld() + platform->views().webViewsMade(), 0);
  load(*ad, brought(test::FakeAdapter::make(VeltoAdTypeBanner)));
  EXPECT_TRUE(last(ad).filled()) << "what needs no page is shown";
}

TEST_F(TimelineTest, EachEndOfABannerHasItsReason) {
  const auto failing = [](NSErrorCause cause) { return NSError{"engine", 1, "", cause}; };
  const std::vector<std::pair<std::function<void(std::shared_ptr<VeltoBannerViewController>&)>, Why>> ends{
      {[&](auto&) { page().fail(failing(NSErrorCause::Unknown)); }, Why::PageFailed},
      {[&](auto&) { page().fail(failing(NSErrorCause::Untrusted)); }, Why::PageUntrusted},
      {[&](auto&) { page().fail(failing(NSErrorCause::ProcessCrashed)); }, Why::PageProcessCrashed},
      {[&](auto&) { page().fail(failing(NSErrorCause::ProcessOutOfMemory)); }, Why::PageProcessOutOfMemory},
      {[&](auto&) { page().fail(failing(NSErrorCause::ProcessEnded)); }, Why::PageProcessEnded},
      {[&](auto&) { page().fail(failing(NSErrorCause::ProcessHung)); }, Why::PageProcessHung},
      {[&](auto&) { page().fail(failing(NSErrorCause::EngineUnavailable)); }, Why::EngineUnavailable},
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
  platform->advance(std::chrono::seconds(1));

  // What its network takes back while it waits for its turn.
  shown(ad);
  load(*ad, brought(test::FakeAdapter::make(VeltoAdTypeInterstitial), "Interstitial"));
  post(constNotificationAdMobAdapterGADInterstitialError, network->adapter);
  EXPECT_EQ(last(ad).end, Why::AdapterFailed);
  expectError(full->lastError, Why::AdapterFailed);
  ad->vc()->_tapCloseButton();
  platform->advance(std::chrono::seconds(1));

  const auto other = std::make_shared<UIViewController>();
  load(*ad, markup());
  window->controller()->presentViewController(other, false, nullptr);
  expectError(ad->show(window->controller()), Why::WindowBusy);
  other->dismissViewControllerAnimated(false, nullptr);

  network->ad = VeltoAd::adWithHTML("", {}, nullptr);
  network->ad->html.reset();
  load(*ad, brought(nullptr, "Interstitial"));
  expectError(ad->show(window->controller()), Why::AdEmpty);
  ad->show();
  load(*ad, status(204));
  load(*ad, markup());
  EXPECT_EQ(ad->veltoAdTimeline().end()[-3].end, Why::AdEmpty) << "as it could never be shown";
}

}  // namespace
}  // namespace velto::test
