// What a page is told, statement by statement, and what its commands may do in which state.
#include "velto/ads/VeltoAdManager.h"
#include "velto/mraid/UIViewControllerMRAIDSDKVelto.h"
#include "velto/mraid/VeltoMRAIDBridge.h"

#include "../ui/UITest.h"

namespace velto {
namespace {

using namespace std::chrono_literals;

class MRAIDTest : public test::UITest {
 protected:
  MRAIDTest() {
    lock = platform->notificationCenter().addObserver(
        VeltoNotificationUIInterfaceOrientationMaskLock,
        [this](const NSNotification& posted) { locks.push_back(std::get<int64_t>(posted.object)); });
    loadAd(*owner, markup("<script src='mraid.js'></script>"));
    said();
  }
  headless::RecordingWebView& first() { return headless::RecordingWebView::of(*host.webView()); }
  void command(const std::string& text) { first().navigate(mraid(text)); }
  // Statements since the last call, without what surrounds each.
  std::vector<std::string> said() {
    const auto& scripts = first().scripts();
    std::vector<std::string> statements;
    for (; heard < scripts.size(); ++heard) {
      const std::string& text = scripts[heard];
      if (text.starts_with("window.mraid.") && text.ends_with(";"))
        statements.push_back(text.substr(13, text.size() - 14));
    }
    return statements;
  }
  VeltoMRAIDHandler& handler() { return *host.veltoGetMRAIDHandler(); }

  size_t heard = 0;
  std::vector<int64_t> locks;
  Handle lock;
  std::shared_ptr<VeltoBannerViewController> owner = banner(VeltoBannerPositionTop);
  VeltoBannerViewControllerPrivate& host = *owner->vc();
};

using Statements = std::vector<std::string>;

std::string exposed(const std::string& rectangle, const char* percentage = "100.0") {
  return std::string("fireEvent(\"exposureChange\",{exposedPercentage: ") + percentage +
         ", visibleRectangle: {" + rectangle + "}, occlusionRectangles: null})";
}

TEST_F(MRAIDTest, TheReadySequence) {
  EXPECT_EQ(page().scripts().front(), UIViewControllerMRAIDSDKVelto::MRAIDJs()) << "before the load";
  EXPECT_EQ(page().html(), "") << "the ad's own tag is gone";
  platform->application().schemes.insert("tel");
  platform->eventStore().eventStatus = 3;
  platform->location().lastKnown = CLLocation{52.5, -13.25, 20, 1'700'000'000.5};
  page().finish();
  const Statements expected = {
      "setSupports(\"sms\", true)",
      "setSupports(\"tel\", false)",
      "setSupports(\"storePicture\", false)",
      "setSupports(\"calendar\", true)",
      "setSupports(\"inlineVideo\", true)",
      "setSupports(\"vpaid\", false)",
      "setSupports(\"location\", true)",
      "setScreenSize({width: 390.00, height: 844.00})",
      "setMaxSize({width: 390.00, height: 763.00})",
      "setDefaultPosition({x: 0.00, y: 0.00, width: 320.00, height: 50.00})",
      "setCurrentPosition({x: 0.00, y: 0.00, width: 320.00, height: 50.00})",
      "setVersion(\"2.0\")",
      "setPlacementType(\"inline\")",
      "setIsViewable(true)",
      "setState(\"default\")",
      "setLocation({lat: 52.500000, lon: -13.250000, type: 1, accuracy: 20.000000, "
      "lastfix: 1700000000.500000, ipservice: null})",
      "fireEvent(\"viewableChange\",true)",
      "fireEvent(\"sizeChange\",{width: 320.00, height: 50.00})",
      exposed("x: 0.00, y: 0.00, width: 320.00, height: 50.00"),
      "fireEvent(\"ready\")",
  };
  EXPECT_EQ(said(), expected);
  platform->location().servicesEnabled = false;
  page().finish();
  const auto without = said();
  EXPECT_EQ(without.size(), expected.size() - 1);
  EXPECT_EQ(without[6], "setSupports(\"location\", false)");
  handler().state = "expanded";
  page().finish();
  EXPECT_EQ(handler().state, "expanded") << "only a loading ad becomes ready";
}

TEST_F(MRAIDTest, VisibilityVolumeAndOcclusions) {
  host.viewWillDisappear(false);
  host.viewWillDisappear(false);
  EXPECT_EQ(said(),
            (Statements{"setIsViewable(false)", exposed("x: 0.00, y: 0.00, width: 0.00, height: 0.00", "0.0"),
                        "fireEvent(\"viewableChange\",false)", "setIsViewable(false)"}));
  host.audioVolumeChange(0.5F, host.webView());
  host.audioVolumeChange(0.5F, nullptr);
  EXPECT_EQ(said(), (Statements{"fireEvent(\"audioVolumeChange\",{volumePercentage: 50.0})"}));
  EXPECT_EQ(
      VeltoMRAIDBridge::_exposure(99.96F, {{-0.0, 2}, {3, 4}}, {"{{1, -2.5}, {30, 4e1}}", "no rectangle"}),
      "{exposedPercentage: 100.0, visibleRectangle: {x: 0.00, y: 2.00, width: 3.00, height: 4.00}, "
      "occlusionRectangles: [\n  \"{x: 1.00, y: -2.50, width: 30.00, height: 40.00}\",\n"
      "  \"{x: 0.00, y: 0.00, width: 0.00, height: 0.00}\"\n]}");
}

TEST_F(MRAIDTest, ExpandAndItsClose) {
  command("expand");
  EXPECT_EQ(said(), (Statements{"setPlacementType(\"inline\")",
                                "setCurrentPosition({x: 0.00, y: 47.00, width: 390.00, height: 763.00})",
                                "fireEvent(\"sizeChange\",{width: 390.00, height: 763.00})",
                                exposed("x: 0.00, y: 47.00, width: 390.00, height: 763.00"),
                                "setState(\"expanded\")"}));
  EXPECT_EQ(host.webView()->subviews().size(), 1U);
  command("expand");
  EXPECT_EQ(said(), Statements{}) << "not twice";
  command("resize");
  EXPECT_EQ(said().back(), "setState(\"resized\")") << "elsewhere a resize changes the word only";
  handler().state = "expanded";
  locks.clear();
  command("close");
  platform->runUntilIdle();
  const auto closing = said();
  ASSERT_EQ(closing.size(), 5U);
  EXPECT_EQ(closing.front(), "setPlacementType(\"inline\")")
      << "told as an expansion, with no new default position";
  EXPECT_EQ(closing.back(), "setState(\"default\")");
  EXPECT_EQ(locks, (std::vector<int64_t>{30}));
  EXPECT_TRUE(host.webView()->subviews().empty());

  for (const bool own : {false, true}) {
    command("close");
    command(std::string("setExpandProperties?p={\"useCustomClose\":") + (own ? "true}" : "false}"));
    command("expand");
    EXPECT_EQ(host.webView()->subviews().size(), own ? 1U : 0U) << "a page that says no gets no button";
  }
  platform->runUntilIdle();
  window->tap({380, 60});
  platform->advance(100ms);
  EXPECT_EQ(handler().state, "default");
  command("setExpandProperties?p=[]");
  EXPECT_FALSE(handler().expandProperty) << "what does not decode clears";
}

TEST_F(MRAIDTest, ResizeAndItsClose) {
  const std::string set = "setResizeProperties?p=";
  command("resize");
  platform->advance(100ms);
  EXPECT_EQ(said(),
            (Statements{"fireEvent(\"error\",Resize() cannot be called before setResizeProperties().)",
                        "setState(\"resized\")"}))
      << "asked all the same, without a record";
  command("close");
  platform->advance(100ms);
  said();
  command(set +
          R"({"width":300,"height":250,"offsetX":0,"offsetY":9000,"customClosePosition":"bottom-left"})");
  command("resize");
  command("resize");
  platform->advance(100ms);
  EXPECT_EQ(handler().state, "resized") << "off screen is no matter unless it is allowed";
  ASSERT_EQ(host.webView()->subviews().size(), 1U) << "of two resizes in a row one button stays";
  EXPECT_EQ(host.webView()->subviews()[0]->frame(), (CGRect{{0, 200}, {50, 50}}));
  const Statements resized{"setCurrentPosition({x: 45.00, y: 560.00, width: 300.00, height: 250.00})",
                           "fireEvent(\"sizeChange\",{width: 300.00, height: 250.00})",
                           exposed("x: 45.00, y: 560.00, width: 300.00, height: 250.00"),
                           "setState(\"resized\")"};
  auto statements = said();
  statements.resize(4);
  EXPECT_EQ(statements, resized);
  command("expand");
  EXPECT_EQ(said(), Statements{}) << "a resized ad does not expand";
  command("close");
  platform->advance(100ms);
  EXPECT_EQ(said().back(), "setState(\"default\")");
  EXPECT_TRUE(host.webView()->subviews().empty());

  const Statements offScreen{
      "fireEvent(\"error\",Current resize properties would result in the close region being off "
      "screen. Ignoring resize.)"};
  // Against a screen of 390 × 763, for a view at the origin.
  const struct {
    const char* position;
    int x, y;
    bool passes;
  } cases[] = {
      {"top-right", 0, -10, false},  {"top-right", 0, 713, true},    {"top-right", 0, 714, false},
      {"top-right", 41, 0, false},   {"top-left", 340, 0, true},     {"top-left", -1, 0, false},
      {"bottom-left", 0, 463, true}, {"bottom-left", 0, 464, false}, {"bottom-right", -251, 0, false},
      {"center", 999, 999, true},    {"top-center", 999, 0, true},   {"bottom-center", 0, -201, false},
      {nullptr, 0, 0, true},         {nullptr, 41, 0, false}};
  for (const auto& test : cases) {
    const std::string named =
        test.position ? std::string(R"(,"customClosePosition":")") + test.position + "\"" : "";
    command(set + R"({"allowOffscreen":true,"height":250,"width":300,"offsetX":)" + std::to_string(test.x) +
            ",\"offsetY\":" + std::to_string(test.y) + named + "}");
    command("resize");
    platform->advance(100ms);
    EXPECT_EQ(handler().state == "resized", test.passes) << named << test.x << " " << test.y;
    EXPECT_EQ(said() == offScreen, !test.passes);
    command("close");
    platform->advance(100ms);
    said();
  }
}

TEST_F(MRAIDTest, OrientationLocks) {
  EXPECT_EQ(locks, (std::vector<int64_t>{30})) << "a new handler says so";
  command("setOrientationProperties?p={\"forceOrientation\":\"landscape\"}");
  EXPECT_EQ(locks.back(), 30) << "an inline ad that is not expanded locks nothing";
  EXPECT_EQ(platform->device().facts.orientation, 1);
  command("expand");
  for (const auto& [wish, mask, orientation] :
       {std::tuple("portrait", 2, 1), {"none", 30, 0}, {"landscape", 16, 4}}) {
    command(std::string("setOrientationProperties?p={\"forceOrientation\":\"") + wish + "\"}");
    EXPECT_EQ(locks.back(), mask) << wish;
    EXPECT_EQ(handler().orientation, orientation) << wish;
  }
  command("setOrientationProperties?p=nonsense");
  EXPECT_EQ(handler().orientation, 4);
  owner->removeBanner();
  platform->runUntilIdle();
  EXPECT_EQ(locks.back(), 30) << "nothing of a removed ad stays locked";
}

TEST_F(MRAIDTest, InterstitialPlacementClosesToHidden) {
  handler().readyInterstitialPlacementType(host.webView(), {390, 763});
  handler().setOrientationProperty(
      VeltoMRAIDPropertyOrientation::decode(R"({"forceOrientation":"landscape"})"));
  EXPECT_EQ(handler().orientation, 4);
  said();
  command("close");
  EXPECT_EQ(said(), (Statements{"setState(\"hidden\")", "setIsViewable(false)"}));
  handler().state = "default";
  handler().placementType = MRAIDText("interstitial");
  command("close");
  EXPECT_EQ(handler().state, "default") << "the word from elsewhere is not the table's";
}

TEST_F(MRAIDTest, OpenOnlyWhatTheApplicationCan) {
  for (const char* text : {"open?u=https://a.example/?b&c", "open?u=b.example/x", "open?u=odd://x", "open",
                           "open?u=", "setLocation?u=https://x", "mraidLog?m=hi"})
    command(text);
  std::vector<std::string> opened;
  for (const auto& each : platform->application().opened) opened.push_back(each.url.absoluteString());
  EXPECT_EQ(opened, (std::vector<std::string>{"https://a.example/?b&c", "https://b.example/x"}));
}

TEST_F(MRAIDTest, PicturesAndEventsOnlyWhenGranted) {
  auto& session = platform->urlSession();
  const std::string event =
      R"(createCalendarEvent?e={"description":"Fair","start":"2024-05-01T10:00Z","reminder":"-1",)"
      R"("recurrence":"{\"frequency\":\"daily\"}"})";
  const auto requests = session.requests().size();
  command("storePicture?u=https://a.example/b.png");
  command(event);
  platform->runUntilIdle();
  EXPECT_EQ(session.requests().size(), requests);
  EXPECT_TRUE(platform->eventStore().events.empty());

  platform->photoLibrary().setAuthorizationStatus(3);
  platform->eventStore().eventStatus = 3;
  platform->application().setPagesNeedTouch(true);
  command("storePicture?u=https://a.example/b.png");
  command(event);
  platform->runUntilIdle();
  EXPECT_EQ(session.requests().size(), requests) << "nobody has touched the ad";
  EXPECT_TRUE(platform->eventStore().events.empty());
  platform->application().setPagesNeedTouch(false);
  session.enqueue(markup("<html>no picture</html>"));
  session.enqueue(markup("GIF89a..."));
  command("storePicture?u=https://a.example/b.png");
  command("storePicture?u=https://a.example/c.gif");
  command(event);
  platform->runUntilIdle();
  ASSERT_EQ(platform->photoLibrary().pictures().size(), 1U);
  EXPECT_EQ(platform->photoLibrary().pictures()[0].address, "https://a.example/c.gif");
  ASSERT_EQ(platform->eventStore().events.size(), 1U);
  const auto& saved = platform->eventStore().events[0];
  EXPECT_EQ(saved.title, "Fair");
  EXPECT_EQ(saved.recurrenceRules.at(0).frequency, EKRecurrenceFrequencyDaily);
  EXPECT_FALSE(saved.recurrenceRules[0].recurrenceEnd);
}

TEST_F(MRAIDTest, TheSecondPart) {
  auto& session = platform->urlSession();
  session.enqueue(markup("<p>not rich media</p>"));
  command("expand?u=https://a.example/2");
  platform->runUntilIdle();
  EXPECT_EQ(platform->webViews().size(), 1U);
  EXPECT_EQ(platform->views().contentHeld(), 0);
  const std::string rich = "<script src='mraid.js'></script>two";
  session.enqueue(headless::Answer{.headers = {{"x-content", "html"}}, .body = rich});  // needs no size
  command("expand?u=https://a.example/2");
  platform->runUntilIdle();
  ASSERT_EQ(platform->webViews().size(), 2U);
  auto& second = *platform->webViews()[1];
  EXPECT_EQ(second.html(), "two");
  EXPECT_EQ(second.webView().frame().size, (CGSize{390, 763}));
  second.finish();
  EXPECT_TRUE(second.hasRun("setState(\"expanded\")"));
  EXPECT_EQ(said(), Statements{}) << "the first page is not spoken to";
  second.navigate(mraid("setExpandProperties?p={\"useCustomClose\":true}"));
  command("setOrientationProperties?p={\"forceOrientation\":\"landscape\"}");
  command("setResizeProperties?p={\"width\":300}");
  EXPECT_EQ(handler().orientation, 0) << "what the first asks for does not turn the second";
  second.navigate("mraid://close");
  EXPECT_EQ(handler().orientationProperty().forceOrientation, "landscape") << "and counts when it is back";
  EXPECT_TRUE(handler().resizeProperty);
  EXPECT_FALSE(handler().expandProperty) << "nor does it keep what the second has set";
  EXPECT_EQ(handler().state, "default");

  session.enqueue(markup(rich));
  command("expand?u=https://a.example/a%20b/%C3%BC");
  command("close");
  platform->runUntilIdle();
  EXPECT_EQ(session.requests().back().url.absoluteString(), "https://a.example/a%20b/%C3%BC");
  EXPECT_EQ(platform->webViews().size(), 1U) << "what comes while it is fetched closes it";
  EXPECT_EQ(handler().state, "default");

  session.enqueue(markup(rich));
  command("expand?u=https://a.example/2");
  platform->runUntilIdle();
  EXPECT_EQ(platform->webViews().size(), 2U);
  window->tap({380, 60});
  platform->advance(100ms);
  EXPECT_EQ(platform->webViews().size(), 1U) << "a person's close takes the second part away too";
}

}  // namespace
}  // namespace velto
