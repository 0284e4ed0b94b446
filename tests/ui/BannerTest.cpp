// A banner's life: load, show, press, refresh, fail, remove, and being destroyed at any of these.
#include "velto/ads/VeltoAdManager.h"
#include "velto/measurement/OMIDVeltoAdSession.h"
#include "velto/platform/ui/ViewChanges.h"

#include <map>

#include "UITest.h"

namespace velto {
namespace {

using namespace std::chrono_literals;
using headless::Answer;
using test::Heard;

struct StateDelegate : test::RecordingDelegate {
  void veltoBannerViewControllerDidChangeState(Controller& own) override {
    note("state " + std::to_string(own.state()) + " " + std::to_string(int(own.adSize().width)), own);
  }
};

class BannerTest : public test::UITest {
 protected:
  size_t requests() { return platform->urlSession().requests("/sdk/").size(); }
};

TEST_F(BannerTest, ALoadRunsItsWholeRoadInOrder) {
  const auto b = banner();
  platform->urlSession().enqueue(with(markup("<p>ad</p>"), {{"x-ttl", "9"}}));
  b->load();
  EXPECT_EQ(platform->views().contentHeld(), 1) << "the web process starts while the request is on its way";
  platform->runUntilIdle();
  EXPECT_TRUE(page().usedPreparedContent());
  EXPECT_EQ(page().html(), "<p>ad</p>");
  EXPECT_TRUE(VeltoAdManager::shared()->ads().empty()) << "shown, so not offered again";
  EXPECT_EQ(frameInWindow(*b->vc()->webView()), (CGRect{{35, 844 - 34 - 50}, {320, 50}}));

  page().finish();
  EXPECT_TRUE(delegate->heard.empty()) << "the page says itself when it is ready";
  page().navigate("velto://loadFinished");
  EXPECT_EQ(delegate->lastController, b->vc().get());
  EXPECT_EQ(window->tapLink(page(), "https://shop.example/"), WKNavigationActionPolicy::Cancel);
  EXPECT_EQ(delegate->heard, (Heard{"finish", "press"}));
  EXPECT_EQ(platform->application().opened.size(), 1U);
  window->tap({5, 100});
  EXPECT_EQ(delegate->heard.size(), 2U) << "a tap beside the banner is none of its";

  b->removeBanner();
  EXPECT_EQ(b->vc()->parentViewController(), window->controller().get()) << "later, on the main queue";
  platform->runUntilIdle();
  EXPECT_EQ(b->vc()->parentViewController(), nullptr);
  EXPECT_TRUE(platform->webViews().empty()) << "no web process stays without an ad";
  EXPECT_EQ(delegate->heard.size(), 2U);
}

TEST_F(BannerTest, NavigationFailureRemovesTheBannerAndTheNextLoadWorks) {
  const auto b = banner();
  loadAd(*b);
  page().fail(NSError{"WebKitNetworkError", 399, "crashed"});
  EXPECT_EQ(delegate->lastError->error->code, 399);
  platform->runUntilIdle();
  EXPECT_TRUE(window->view().subviews().empty());
  loadAd(*b);
  page().navigate("velto://failLoad");
  platform->runUntilIdle();
  EXPECT_TRUE(window->view().subviews().empty());
  EXPECT_EQ(delegate->heard, (Heard{"finish", "fail 1", "finish"}))
      << "a page that gives up does so silently";

  loadAd(*b);
  delegate.reset();  // one that is gone is not called
  page().navigate("velto://loadFinished");
  window->tapLink(page(), "https://shop.example/");
  page().fail(NSError{"d", 1, ""});
  platform->runUntilIdle();
  EXPECT_TRUE(platform->webViews().empty());
}

TEST_F(BannerTest, AnAdThatTakesItsProcessAlongLeavesThePlaceToTheNext) {
  const auto b = banner();
  b->setEnableAutoRefresh(true);
  const auto requests = [&] { return platform->urlSession().requests("/sdk/").size(); };
  const auto lose = [&](NSErrorCause cause, bool isRefreshed = true) {
    platform->urlSession().enqueue("/sdk/", markup());
    page().navigate("velto://loadFinished");
    page().fail(NSError{"WebProcess", 1, "", cause});
    platform->runUntilIdle();
    EXPECT_TRUE(platform->webViews().empty());
    EXPECT_EQ(b->vc()->state(), VeltoBannerStateEmpty);
    EXPECT_EQ(!window->view().subviews().empty(), isRefreshed) << "its place stays";
  };
  const auto comesAfter = [&](int seconds) {
    const auto before = requests();
    platform->advance(std::chrono::seconds(seconds - 1));
    EXPECT_EQ(requests(), before) << seconds;
    platform->advance(std::chrono::seconds(1));
    EXPECT_EQ(requests(), before + 1) << seconds;
  };
  loadAd(*b);
  lose(NSErrorCause::ProcessCrashed);
  comesAfter(30);
  lose(NSErrorCause::ProcessHung);
  comesAfter(30);
  lose(NSErrorCause::ProcessOutOfMemory);
  comesAfter(60);
  lose(NSErrorCause::ProcessEnded);
  comesAfter(120);
  platform->urlSession().enqueue("/sdk/", markup());
  page().navigate("velto://loadFinished");
  comesAfter(120);  // and as this one lived on until then
  lose(NSErrorCause::ProcessCrashed);
  comesAfter(30);
  lose(NSErrorCause::ProcessCrashed);
  comesAfter(30);
  b->setRefreshPaused(true);
  platform->advance(std::chrono::seconds(30));
  lose(NSErrorCause::ProcessCrashed);
  const auto before = requests();
  b->setRefreshPaused(false);
  EXPECT_EQ(requests(), before + 1) << "what came due meanwhile is not put off";
  b->setEnableAutoRefresh(false);
  loadAd(*b);
  lose(NSErrorCause::ProcessCrashed, false);
}

TEST_F(BannerTest, AContainerMustBeInsideTheHostController) {
  auto inside = UIView::make();
  window->view().addSubview(inside);
  inside->setFrame({{20, 200}, {350, 100}});
  auto fine = VeltoBannerViewController::initWithDelegate(delegate, VeltoBannerSize320x50, inside);
  loadAd(*fine);
  EXPECT_EQ(frameInWindow(*fine->vc()->webView()), (CGRect{{35, 200}, {320, 50}}));

  headless::HostWindow other;
  const auto elsewhere = VeltoBannerViewController::initWithDelegate(delegate, VeltoBannerSize320x50,
                                                                     other.controller()->view());
  delegate->heard.clear();
  for (int i = 0; i < 2; ++i) load(*elsewhere, markup());
  std::exchange(inside, nullptr)->removeFromSuperview();  // and it must be there still
  load(*fine, markup());
  EXPECT_EQ(delegate->heard, (Heard{"fail 2", "fail 2", "fail 2"}));
  EXPECT_EQ(platform->views().contentHeld(), 0);
  fine.reset();
  platform->runUntilIdle();
  EXPECT_TRUE(window->controller()->childViewControllers().empty());
}

TEST_F(BannerTest, PlacementsAndTheirConstraints) {
  // A phone with a notch: 47 points above, 34 below.
  for (const auto& [position, origin] :
       std::map<VeltoBannerPosition, CGPoint>{{VeltoBannerPositionTop, {35, 47}},
                                              {VeltoBannerPositionBottom, {35, 760}},
                                              {VeltoBannerPositionResized, {35, 760}},
                                              {static_cast<VeltoBannerPosition>(5), {0, 0}}}) {
    const auto b = banner(position);
    loadAd(*b);
    EXPECT_EQ(b->vc()->view()->frame(), (CGRect{origin, {320, 50}})) << position;
    EXPECT_EQ(b->vc()->viewContraints().size(), origin == CGPoint{} ? 2U : 4U) << position;
  }
  const auto point =
      VeltoBannerViewController::initWithDelegate(delegate, VeltoBannerSize320x50, CGPoint{10, 20});
  loadAd(*point);
  EXPECT_EQ(point->vc()->view()->frame(), (CGRect{{10, 67}, {320, 50}}));
  const auto whole = banner(VeltoBannerPositionFullScreen);
  loadAd(*whole, markup(test::readyPage, 0, 0));
  EXPECT_EQ(whole->vc()->view()->frame(), (CGRect{{0, 47}, {390, 844 - 47 - 34}}));
  platform->device().facts.systemVersion = "10.3";  // which knows no safe area, only the bars
  const CGRect between{{0, 47}, {390, 763}};
  EXPECT_EQ(whole->vc()->getFullScreenFrameFor(window->controller()->view(), window->controller()), between);
  window->setSafeAreaInsets({10, 0, 0, 0});
  window->resize({400, 300});
  platform->runUntilIdle();
  EXPECT_EQ(whole->vc()->view()->frame(), (CGRect{{0, 10}, {400, 290}}));
  EXPECT_EQ(point->vc()->view()->frame(), (CGRect{{10, 30}, {320, 50}}));
}

TEST_F(BannerTest, RefreshCountsFromEachLoadAndFailsSilently) {
  const auto b = banner();
  b->setEnableAutoRefresh(true);
  b->setRefreshTimeSeconds(10);
  VeltoSettings settings;
  settings.keywords = {"x", "y"};
  platform->urlSession().enqueue(markup());
  b->load(settings);
  platform->runUntilIdle();
  platform->urlSession().enqueue(markup("<p>second</p>"));
  platform->advance(10s);
  EXPECT_NE(platform->urlSession().requests("/sdk/").at(1).httpBody->find("\"okw\": \"x,y\""),
            std::string::npos)
      << "the settings of a load stay for its refreshes";
  EXPECT_EQ(platform->webViews().size(), 1U) << "replaced in place";
  EXPECT_EQ(page().html(), "<p>second</p>");
  EXPECT_FALSE(page().usedPreparedContent()) << "it shares the process of the one it replaces";

  platform->urlSession().enqueue(status(500));
  platform->advance(10s);
  EXPECT_EQ(requests(), 3U);
  EXPECT_TRUE(delegate->heard.empty());
  EXPECT_TRUE(page().loads().empty()) << "a failed refresh takes the ad away";
  EXPECT_EQ(platform->views().contentHeld(), 0) << "and holds no web process";

  platform->urlSession().enqueue(markup());
  platform->advance(10s);
  EXPECT_EQ(b->vc()->view()->frame().size, (CGSize{320, 50}));

  b->setRefreshTimeSeconds(20);  // from the next load on
  platform->advance(5s);
  b->load();
  platform->advance(19s);
  EXPECT_EQ(requests(), 5U);
  platform->advance(1s);
  EXPECT_EQ(requests(), 6U);

  platform->urlSession().respond("", markup());
  delegate->heard.clear();
  window.reset();  // the host's view goes
  platform->advance(20s);
  EXPECT_EQ(requests(), 7U);
  EXPECT_TRUE(delegate->heard.empty()) << "that is no news to a refresh either";
  b->load();
  platform->runUntilIdle();
  EXPECT_EQ(delegate->heard, Heard{"fail 2"});

  b->removeBanner();
  b->load();  // as a delegate may that hears of a failure: this one is refreshed
  platform->advance(20s);
  EXPECT_EQ(requests(), 10U);
  b->removeBanner();
  platform->advance(60s);
  EXPECT_EQ(requests(), 10U);
}

TEST_F(BannerTest, InASlotItStandsWhereThatIsAndGrowsOverTheWindow) {
  headless::HostSlot slot;
  slot.moveTo(window.get());
  slot.setFrame({{20, 100}, {340, 50}});
  delegate->host = slot.controller();
  const auto b = banner(VeltoBannerPositionTop);
  const auto place = [&](headless::HostWindow& in) {
    const auto& web = page().webView();
    return CGRect{in.view().convertPointFromView({0, 0}, web), web.frame().size};
  };
  EXPECT_TRUE(slot.room().isEmpty());
  loadAd(*b, markup(test::richPage));
  const CGRect inSlot{{30, 100}, {320, 50}};
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(slot.room().size(), (CGSize{320, 50}));
    EXPECT_EQ(place(*window), inSlot);
    page().navigate("mraid://expand");
    platform->advance(1s);
    EXPECT_EQ(place(*window), (CGRect{{0, 47}, {390, 763}})) << "between the bars";
    page().navigate("mraid://close");
    platform->advance(1s);
  }
  headless::HostWindow other({320, 200});
  slot.moveTo(&other);
  slot.setFrame({{0, 10}, {320, 50}});
  EXPECT_EQ(place(other), (CGRect{{0, 10}, {320, 50}}));
  EXPECT_EQ(b->state(), VeltoBannerStateShown);
  b->removeBanner();
  platform->runUntilIdle();
  EXPECT_TRUE(slot.room().isEmpty());
}

TEST_F(BannerTest, ItsStateIsToldAheadOfWhatItComesFrom) {
  const auto told = std::make_shared<StateDelegate>();
  told->host = window->controller();
  const auto b =
      VeltoBannerViewController::initWithDelegate(told, VeltoBannerSize320x50, VeltoBannerPositionTop);
  const auto heard = [&] { return std::exchange(told->heard, {}); };
  load(*b, status(204));
  EXPECT_EQ(heard(), (Heard{"state 1 0", "state 0 0", "fail 0"}));
  loadAd(*b, markup(test::richPage));
  EXPECT_EQ(heard(), (Heard{"state 1 0", "state 2 320", "finish"}));
  for (const char* command : {"mraid://expand", "mraid://close"}) page().navigate(command);
  page().navigate("mraid://setResizeProperties?w=100&h=60&offsetX=0&offsetY=0&allowOffscreen=true");
  page().navigate("mraid://resize");
  platform->advance(1s);
  EXPECT_EQ(heard(), (Heard{"state 3 320", "state 2 320", "state 4 320"}));
  b->setSize(VeltoBannerSize300x250);
  loadAd(*b, markup(test::readyPage, 300, 250));
  EXPECT_EQ(heard(), (Heard{"state 2 300", "finish"})) << "one takes the place of the other";
  EXPECT_NE(platform->urlSession().requests("/sdk/").back().url.absoluteString().find("300x250"),
            std::string::npos);

  // Nobody sees it for two and a half intervals.
  b->setEnableAutoRefresh(true);
  loadAd(*b);
  const size_t before = requests();
  b->setRefreshPaused(true);
  platform->advance(75s);
  EXPECT_EQ(requests(), before);
  platform->urlSession().enqueue("/sdk/", status(500));
  heard();
  b->setRefreshPaused(false);
  platform->runUntilIdle();
  EXPECT_EQ(requests(), before + 1) << "once, at once";
  EXPECT_EQ(heard(), Heard{"state 0 0"}) << "a refresh that failed left it empty";
  platform->advance(31s);
  EXPECT_EQ(requests(), before + 2);
}

TEST_F(BannerTest, NoTimerWithoutIntervalOrBeforeTheNextLoad) {
  const auto b = banner();
  for (const bool enabled : {false, true})
    for (const int64_t seconds : {int64_t{0}, int64_t{-5}, int64_t{1}}) {
      b->setEnableAutoRefresh(enabled);
      b->setRefreshTimeSeconds(seconds);
      EXPECT_FALSE(b->vc()->hasRefreshTimer());
      b->load();
      EXPECT_EQ(b->vc()->hasRefreshTimer(), enabled && seconds > 0);
    }
  b->setEnableAutoRefresh(true);
  b->setRefreshTimeSeconds(INT64_MAX);
  b->load();
  platform->advance(1h);
  EXPECT_EQ(requests(), 7U) << "longer than any clock holds is never";
}

TEST_F(BannerTest, OnlyTheFirstAdIsAnimatedAndIsSeenInItsPlaceWhateverHappensWhileItComes) {
  platform->urlSession().respond("", markup());
  const CGRect place{{0, 0}, {320, 50}};
  for (const bool takenBack : {false, true}) {
    const auto b = banner();
    b->setAnimation(VeltoAnimationFromLeft);
    b->load();
    platform->runUntilIdle();
    EXPECT_EQ(page().alpha(), 0) << "hidden until it has loaded";
    if (takenBack) b->setAnimation(VeltoAnimationNone);
    page().navigate("velto://loadFinished");
    EXPECT_EQ(b->vc()->webView()->alpha(), 1);
    EXPECT_EQ(page().frame().minX() < 0, !takenBack);
    platform->advance(600ms);
    window->resize(takenBack ? CGSize{390, 844} : CGSize{700, 500});
    platform->advance(1400ms);
    EXPECT_EQ(page().alpha(), 1) << takenBack;
    EXPECT_EQ(page().frame(), place) << takenBack;
    b->load();
    platform->runUntilIdle();
    EXPECT_EQ(b->vc()->webView()->alpha(), 1) << "without animation it is shown at once";
    page().navigate("velto://loadFinished");
    EXPECT_EQ(page().frame(), place);
  }
}

TEST_F(BannerTest, AnotherNetworksBanner) {
  const auto b = banner();
  b->setAnimation(VeltoAnimationFromRight);
  const auto adapter = test::FakeAdapter::make(1);
  const auto ad = VeltoAd::adWithMediation(adapter, 1, nullptr);
  ad->size = CGSize{320, 50};
  ad->ttl = 9;
  VeltoAdManager::shared()->_addAdInCache(ad);
  b->vc()->presentMediationBannerView(adapter->getBannerView(), ad);
  platform->advance(2s);
  EXPECT_EQ(delegate->heard, Heard{"finish"});
  EXPECT_EQ(adapter->loadedView, adapter->getBannerView());
  EXPECT_TRUE(VeltoAdManager::shared()->ads().empty()) << "shown, so not offered again";
  EXPECT_EQ(frameInWindow(*adapter->getBannerView()), (CGRect{{35, 760}, {320, 50}}));

  // Of two that wait for an answer nobody knows yet whose ad it will be; once that is known, its own.
  const auto early = test::FakeAdapter::make(1);
  const auto waiting = banner();
  const auto other = banner();
  waiting->load();
  other->load();
  post(constNotificationAdMobAdapterGADBannerReady, early);
  waiting->vc()->presentMediationBannerView(early->getBannerView(), test::mediated(early));
  EXPECT_EQ(early->root.lock(), waiting->vc());
  for (const auto& ready : {early, adapter}) post(constNotificationAdMobAdapterGADBannerReady, ready);
  EXPECT_EQ(early->root.lock(), waiting->vc());
  EXPECT_EQ(adapter->root.lock(), b->vc());
}

TEST_F(BannerTest, AThousandRefreshesLeaveNothingBehind) {
  auto b = banner();
  b->setEnableAutoRefresh(true);
  b->setRefreshTimeSeconds(1);
  platform->setPagesFinishByThemselves(true);
  platform->veltoBundle().files["omsdk-v1.js"] = "service()";
  platform->urlSession().respond("", with(markup(), {{"x-ttl", "1000000"}}));
  b->load();
  platform->advance(1000s);
  EXPECT_EQ(delegate->heard.size(), 1001U);
  EXPECT_LE(platform->webViews().size(), 2U) << "one that is shown, one whose scripts have a second";
  const std::weak_ptr<OMIDVeltoAdSession> session = b->vc()->omidSession();
  EXPECT_FALSE(session.expired());
  EXPECT_EQ(window->view().subviews().size(), 1U);
  EXPECT_EQ(window->view().constraints().size(), 4U);
  b.reset();
  platform->advance(2s);
  EXPECT_TRUE(session.expired());
  window->view().setFrame({{0, 0}, {400, 400}});
  platform->runUntilIdle();
  EXPECT_FALSE(ViewChanges::isObserved());
  EXPECT_EQ(platform->mainQueue().pending(), 1U) << "no timer or task goes on but the tracker's";
}

}  // namespace
}  // namespace velto
