// Each code with which a video ad can fail arises from the sandbox server's document of that name, and reaches the servers of
// the ad, the timeline and, where the ad is not played, the application.
#include "velto/platform/foundation/Text.h"
#include "velto/vast/VASTError.h"
#include "velto/video/VeltoVASTURL.h"

#include "VideoAdFixture.h"
#include "sandbox/RequestCheck.h"
#include "sandbox/RuleBook.h"
#include "sandbox/Scenario.h"
#include "sandbox/Server.h"
#include "sandbox/Text.h"

namespace velto::test {
namespace {

class VideoAdCodesTest : public VideoAdTest {
 protected:
  VideoAdCodesTest() {
    for (auto& rule : sandbox::readScenarioText(sandbox::defaultScenario(), "built in", ""))
      rules_.append(std::move(rule));
    platform->urlSession().clearRules();
    platform->urlSession().respond([](const auto&) { return true; },
                                   [this](const NSURLRequest& request) { return answered(request.url); });
    platform->setPagesFinishByThemselves(true);
  }
  headless::Answer answered(const NSURL& url) {
    sandbox::RecordedRequest record;
    record.method = "GET";
    record.path = url.path();
    record.query = sandbox::decodeQuery("?" + url.query().value_or(""));
    sandbox::RequestFacts facts;
    facts.kind = sandbox::kindOf(record);
    facts.path = record.path;
    facts.key = record.queryValue("key");
    const auto chosen = rules_.choose(facts);
    if (!chosen) return {.status = 404};
    return {.status = chosen->answer.status,
            .body = replaceAll(chosen->answer.body, "{{host}}", "ads.example"),
            .delay = chosen->answer.delay};
  }
  // A player finds of a file what the server answers; the one that plays is not among its answers.
  void serveFile(const std::string& name) {
    const auto url = "https://ads.example/" + name;
    const auto answer = answered(NSURL::URLByEscaping(url).value());
    platform->media().setVideo(url, {.loadsAfter = answer.delay,
                                     .loadFails = answer.status != 200,
                                     .isNoVideo = !answer.body.value_or("").empty()});
  }
  void run(int code, bool isLate = false) {
    VeltoVideoAdSettings settings;
    settings.longest = 60;
    ad->setSettings(settings);
    platform->media().hasPlayer = code != 400;
    platform->urlSession().forgetAnswered();
    ad->load(VeltoVASTURL::VASTURLforHost("ads.example", "code-" + std::to_string(code), 1, 640, 360, "App",
                                          "https://s.example")
                 ->stringURL()
                 .value());
    platform->advance(10s);
    if (!ad->playIn(host)) return;
    platform->advance(1s);
    if (code == 206) ad->stop();
    if (isLate) platform->advance(2min);
    if (const auto companion = ad->companionView(0)) {
      window->view().addSubview(companion);
      platform->webViews().back()->navigate("velto://failLoad");
    }
    platform->advance(2min);
  }
  std::map<std::string, int> codesTold() {
    std::map<std::string, int> codes;
    for (const auto& request : platform->urlSession().requests("landing?error="))
      ++codes[request.url.query()->substr(6)];
    return codes;
  }

 private:
  sandbox::RuleBook rules_;
};

// The address of its picture turns out to be wrong when the video is long over.
TEST_F(VideoAdCodesTest, AnEndCardThatCannotBeFetchedIsTold) {
  run(603, true);
  EXPECT_EQ(ad->state(), VeltoVideoAd::State::Empty);
  EXPECT_EQ(codesTold(), (std::map<std::string, int>{{"603", 1}}));
  const auto story = ad->veltoAdTimeline().back();
  const auto* failed = story.first(VeltoTimelineKind::VideoFailed);
  ASSERT_NE(failed, nullptr);
  EXPECT_EQ(std::get<VeltoVideoFailure>(failed->detail).code, 603);
}

TEST_F(VideoAdCodesTest, EachReachesWhomItConcerns) {
  for (const char* name : {"missing.webm", "silent.webm", "text.webm"}) serveFile(name);
  struct Case {
    VASTError error;
    int servers;  // that are told: of the ad, and of the wrappers around it
    bool plays = false;
  };
  using enum VASTError;
  const std::vector<Case> all = {{NotXML, 1},
                                 {NotVAST, 1},
                                 {VersionNotSupported, 1},
                                 {Trafficking, 1},
                                 {WrongLinearity, 1},
                                 {WrongDuration, 1},
                                 {CategoryMissing, 2},
                                 {CategoryBlocked, 2},
                                 {BreakShortened, 1, true},
                                 {Wrapper, 2},
                                 {WrapperTimeout, 1},
                                 {WrapperLimit, 2},
                                 {NoAdsAfterWrapper, 1},
                                 {NotShownInTime, 1},
                                 {Linear, 1},
                                 {FileNotFound, 1},
                                 {FileTimeout, 1},
                                 {NoSupportedFile, 1},
                                 {FileNotShown, 1},
                                 {InteractiveNotRun, 1, true},
                                 {VerificationNotRun, 1, true},
                                 {CompanionRequired, 1},
                                 {CompanionNotFetched, 1, true},
                                 {CompanionNotSupported, 1, true}};
  for (const auto& [error, servers, plays] : all) {
    const auto code = static_cast<int>(error);
    const auto text = std::to_string(code);
    SCOPED_TRACE(text);
    run(code);
    EXPECT_EQ(codesTold(), (std::map<std::string, int>{{text, servers}}));
    const auto calls = heard();
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "failed " + text), plays ? 0 : 1);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "start"), plays ? 1 : 0);
    const auto story = ad->veltoAdTimeline().back();
    const auto* failed = story.first(VeltoTimelineKind::VideoFailed);
    ASSERT_NE(failed, nullptr);
    EXPECT_EQ(std::get<VeltoVideoFailure>(failed->detail).code, code);
    EXPECT_TRUE(story.end);
    expectClean();
  }
}

}  // namespace
}  // namespace velto::test
