// Video ads in virtual time: what the application hears, what servers are told and in which order, what is measured, every way
// out.
#include "velto/vast/VMAPDocument.h"
#include "velto/video/VeltoVideoAd.h"
#include "velto/video/VideoAdControls.h"
#include "velto/video/VideoAdScreen.h"

#include <regex>

#include "../ui/UITest.h"

namespace velto::test {
namespace {

using namespace std::chrono_literals;
using headless::VideoScript;
using Lines = std::vector<std::string>;

class Told final : public VeltoVideoAdDelegate {
 public:
  Lines heard;
  std::function<void(const std::string& what, VeltoVideoAd& ad)> during;
  std::optional<VeltoVideoAdInfo> started;

  void veltoVideoAdDidLoad(VeltoVideoAd& ad) override { add("loaded", ad); }
  void veltoVideoAdDidFail(VeltoVideoAd& ad, const VeltoVideoAdError& error) override {
    EXPECT_NE(error.explanation, "");
    add("failed " + std::to_string(error.code), ad);
  }
  void veltoVideoAdDidRequestContentPause(VeltoVideoAd& ad) override { add("content pause", ad); }
  void veltoVideoAdDidStart(VeltoVideoAd& ad, const VeltoVideoAdInfo& info) override {
    started = info;
    add("start", ad);
  }
  void veltoVideoAdDidPass(VeltoVideoAd& ad, VeltoVideoAdQuartile quartile) override {
    add(std::to_string(static_cast<int>(quartile) + 1) + "/4", ad);
  }
  void veltoVideoAdDidPause(VeltoVideoAd& ad) override { add("pause", ad); }
  void veltoVideoAdDidResume(VeltoVideoAd& ad) override { add("resume", ad); }
  void veltoVideoAdDidPress(VeltoVideoAd& ad) override { add("press", ad); }
  void veltoVideoAdDidSkip(VeltoVideoAd& ad) override { add("skip", ad); }
  void veltoVideoAdDidComplete(VeltoVideoAd& ad) override { add("complete", ad); }
  void veltoVideoAdDidRequestContentResume(VeltoVideoAd& ad) override { add("content resume", ad); }
  void veltoVideoAdDidEndAll(VeltoVideoAd& ad) override { add("end", ad); }

 private:
  void add(const std::string& what, VeltoVideoAd& ad) {
    heard.push_back(what);
    if (during) during(what, ad);
  }
};

std::string file(const std::string& name,
                 const std::string& more = R"(type="video/webm" width="640" height="360")") {
  return "<MediaFile delivery=\"progressive\" " + more + ">https://v/" + name + "</MediaFile>";
}

// An ad with everything, whose servers' addresses begin with its identifier.
struct AdText {
  std::string id = "a";
  std::string files = file("a.webm");
  std::string attributes = {};  // of Ad
  std::string more = {};        // in InLine
  std::string skip = {};        // such as skipoffset="00:00:05"
  std::string linear = {};

  std::string text() const {
    std::string events;
    for (const char* event : {"loaded", "start", "firstQuartile", "midpoint", "thirdQuartile", "complete",
                              "mute", "unmute", "pause", "resume", "skip", "close", "fullscreen"})
      events +=
          "<Tracking event=\"" + std::string(event) + "\">https://t/" + id + "-" + event + "</Tracking>";
    return "<Ad id=\"" + id + "\" " + attributes + "><InLine><AdSystem>S</AdSystem><AdTitle>T</AdTitle>" +
           "<Impression>https://t/" + id + "-impression</Impression><Error>https://t/" + id +
           "-error[ERRORCODE]</Error><ViewableImpression><Viewable>https://t/" + id +
           "-viewable</Viewable><NotViewable>" + "https://t/" + id +
           "-notViewable</NotViewable></ViewableImpression>" + more + "<Creatives><Creative><Linear " + skip +
           "><Duration>00:00:10</Duration><TrackingEvents>" + events +
           "</TrackingEvents><VideoClicks><ClickThrough>" + "https://shop/" + id +
           "</ClickThrough><ClickTracking>https://t/" + id + "-click[CLICKPOS]</ClickTracking>" +
           "</VideoClicks><MediaFiles>" + files + "</MediaFiles>" + linear +
           "</Linear></Creative></Creatives></InLine></Ad>";
  }
};

std::string document(const std::vector<AdText>& ads) {
  std::string text = "<VAST version=\"4.2\">";
  for (const auto& ad : ads) text += ad.text();
  return text + "</VAST>";
}

class VideoAdTest : public UITest {
 protected:
  VideoAdTest() {
    platform->urlSession().respond("https://t/", {});
    host->setFrame({{0, 100}, {390, 220}});
    window->view().addSubview(host);
    platform->runUntilIdle();
    restingTimers = platform->mainQueue().timers();
    platform->urlSession().forgetAnswered();
  }
  ~VideoAdTest() override { ad.reset(); }

  void load(const std::vector<AdText>& ads) {
    ad->loadDocument(document(ads));
    platform->runUntilIdle();
  }
  void play(const std::vector<AdText>& ads) {
    load(ads);
    ASSERT_TRUE(ad->playIn(host));
    platform->runUntilIdle();
  }
  // What servers were told since the last time.
  std::string sent() {
    platform->runUntilIdle();
    std::string all;
    for (const auto& request : platform->urlSession().requests())
      if (request.url.host() == "t") all += request.url.path() + " ";
    const auto since = all.substr(seen_);
    seen_ = all.size();
    return std::regex_replace(since, std::regex("/"), "");
  }
  Lines heard() { return std::exchange(told->heard, {}); }
  VideoAdControls& controls() { return controlsIn(*host); }
  static VideoAdControls& controlsIn(const UIView& view) {
    if (auto* found = dynamic_cast<VideoAdControls*>(const_cast<UIView*>(&view))) return *found;
    for (const auto& subview : view.subviews())
      if (auto* found = find(*subview)) return *found;
    throw std::logic_error("no controls");
  }
  static VideoAdControls* find(const UIView& view) {
    if (auto* found = dynamic_cast<VideoAdControls*>(const_cast<UIView*>(&view))) return found;
    for (const auto& subview : view.subviews())
      if (auto* found = find(*subview)) return found;
    return nullptr;
  }
  void tap(const UIView& view) {
    platform->runUntilIdle();  // layout
    const auto frame = frameInWindow(view);
    window->tap({frame.midX(), frame.midY()});
    platform->runUntilIdle();
  }
  // Nothing of the ads is left anywhere.
  void expectClean() {
    platform->runUntilIdle();
    EXPECT_EQ(host->subviews().size(), 0U);
    EXPECT_EQ(window->controller()->presentedViewController(), nullptr);
    for (const auto* player : platform->media().players()) EXPECT_TRUE(player->isReleased());
    EXPECT_EQ(platform->mainQueue().timers(), restingTimers);
  }

  size_t restingTimers = 0;  // of what registration began
  std::shared_ptr<UIView> host = UIView::make();
  std::shared_ptr<Told> told = std::make_shared<Told>();
  std::shared_ptr<VeltoVideoAd> ad = VeltoVideoAd::make(told);

 private:
  size_t seen_ = 0;
};

const Lines wholeAd{"start", "1/4", "2/4", "3/4", "complete"};

Lines between(const Lines& first, const Lines& last) {
  Lines all{"loaded", "content pause"};
  all.insert(all.end(), first.begin(), first.end());
  all.insert(all.end(), last.begin(), last.end());
  all.insert(all.end(), {"content resume", "end"});
  return all;
}

TEST_F(VideoAdTest, AnAdFromItsAddressToItsEnd) {
  platform->urlSession().respond("https://ads/", {.body = document({{}})});
  VeltoVideoAdSettings settings;
  settings.position = VeltoVideoAdPosition::Midroll;
  settings.contentIdentifier = "film 1";
  settings.volume = 0.5F;
  ad->setSettings(settings);
  ad->load("https://ads/?[BREAKPOSITION],[APPBUNDLE],[CONTENTID],[GDPRCONSENT]");
  EXPECT_FALSE(ad->playIn(host)) << "not ready";
  platform->runUntilIdle();
  EXPECT_EQ(platform->urlSession().requests().back().url.query(), "2,org.example.host,film%201,-1");
  EXPECT_EQ(sent(), "");
  ASSERT_TRUE(ad->playIn(host));
  EXPECT_EQ(told->heard, Lines{"loaded"}) << "never inside the application's call";
  platform->runUntilIdle();
  EXPECT_EQ(sent(), "a-loaded a-impression a-start ");
  EXPECT_EQ(platform->media().players().back()->appliedVolume(), 0.5F);
  EXPECT_TRUE(controls().skipButton().isHidden());
  EXPECT_EQ(told->started->title, "T");
  EXPECT_EQ(told->started->duration, 10);
  EXPECT_FALSE(told->started->skippableAfter);
  EXPECT_EQ(controls().label().title(), "Ad · 0:10");
  platform->advance(1999ms);
  EXPECT_EQ(sent(), "");
  platform->advance(500ms);
  EXPECT_EQ(sent(), "a-viewable ");
  platform->advance(1ms);
  EXPECT_EQ(sent(), "a-firstQuartile ");
  EXPECT_EQ(controls().label().title(), "Ad · 0:08");
  const auto& lines = controls().subviews();
  EXPECT_NEAR(lines[2]->frame().size.width, lines[1]->frame().size.width / 4, 0.1) << "what was played";
  platform->advance(2500ms);
  EXPECT_EQ(sent(), "a-midpoint ");
  platform->advance(1min);
  EXPECT_EQ(sent(), "a-thirdQuartile a-complete ");
  EXPECT_EQ(told->heard, between(wholeAd, {}));
  EXPECT_EQ(ad->state(), VeltoVideoAd::State::Empty);
  expectClean();
}

TEST_F(VideoAdTest, APodWithFilesAndAdsThatFail) {
  auto& media = platform->media();
  media.unplayable = {"video/x-odd"};
  media.unsure = {"video/x-new"};
  media.setVideo("https://v/missing.webm", {.loadFails = true});
  media.setVideo("https://v/never.webm", {.loads = false});
  media.setVideo("https://v/text.webm", {.isNoVideo = true});
  media.setVideo("https://v/cut.webm", {.endsAt = 6s});
  media.setVideo("https://v/broken.webm", {.failsAt = 3s});
  const auto playAll = [&](const std::vector<AdText>& ads) {
    play(ads);
    platform->advance(2min);
    expectClean();
    return heard();
  };
  struct Case {
    const char* what;
    std::string files;
    Lines heard;
    std::string sent;
  };
  const Lines one = {"start", "1/4", "2/4", "3/4", "complete"};
  const std::string whole =
      "a-loaded a-impression a-start a-viewable a-firstQuartile a-midpoint a-thirdQuartile a-complete ";
  const std::vector<Case> cases = {
      {"the next file plays", file("missing.webm") + file("text.webm") + file("never.webm") + file("a.webm"),
       one, whole},
      {"not there", file("missing.webm"), {"failed 401"}, "a-error401 "},
      {"too late", file("never.webm"), {"failed 402"}, "a-error402 "},
      {"of another kind", file("a.odd", "type=\"video/x-odd\""), {"failed 403"}, "a-error403 "},
      {"no video", file("text.webm"), {"failed 405"}, "a-error405 "},
      {"cut off",
       file("cut.webm"),
       {"start", "1/4", "2/4", "failed 405"},
       "a-loaded a-impression a-start a-viewable a-firstQuartile a-midpoint a-error405 "},
      {"what is sure comes first",
       file("a.webm", R"(type="video/x-new" width="640" height="360")") + file("broken.webm"),
       {"start", "1/4", "failed 405"},
       "a-loaded a-impression a-start a-viewable a-firstQuartile a-error405 "},
      {"broken in the middle",
       file("broken.webm"),
       {"start", "1/4", "failed 405"},
       "a-loaded a-impression a-start a-viewable a-firstQuartile a-error405 "},
  };
  for (const auto& [what, files, heardOf, sentOf] : cases) {
    SCOPED_TRACE(what);
    EXPECT_EQ(playAll({{.files = files}}), between(heardOf, {}));
    EXPECT_EQ(sent(), sentOf);
  }
  // In a pod the next one follows; before it has begun, one that stands alone takes its place.
  const AdText broken{.id = "b", .files = file("missing.webm"), .attributes = "sequence=\"1\""};
  const AdText second{.id = "c", .attributes = "sequence=\"2\""};
  EXPECT_EQ(playAll({second, broken}), between({"failed 401"}, one));
  EXPECT_EQ(told->started->number, 2U);
  EXPECT_EQ(told->started->count, 2U);
  EXPECT_EQ(playAll({broken, {.id = "d"}, second}), between(one, one));
  // The next one is loaded while one plays: there is no gap.
  media.setVideo("https://v/slow.webm", {.loadsAfter = 4s});
  play({{.attributes = "sequence=\"1\""}, {.files = file("slow.webm"), .attributes = "sequence=\"2\""}});
  platform->advance(5s);
  EXPECT_EQ(controls().label().title(), "Ad 1 of 2 · 0:05");
  platform->advance(15s);
  EXPECT_EQ(heard(), between(one, one));
  // One that waits for data goes on, or fails where that takes too long.
  sent();
  media.setVideo("https://v/slow.webm", {.stallsAt = 4s, .stallsFor = 6s});
  play({{.files = file("slow.webm")}});
  platform->advance(10s);
  EXPECT_EQ(sent(), "a-loaded a-impression a-start a-viewable a-firstQuartile ");
  platform->advance(6s);
  EXPECT_EQ(sent(), "a-midpoint a-thirdQuartile a-complete ");
  media.setVideo("https://v/slow.webm", {.stallsAt = 4s, .stallsFor = 1h});
  EXPECT_EQ((heard(), playAll({{.files = file("slow.webm")}})), between({"start", "1/4", "failed 402"}, {}));
}

TEST_F(VideoAdTest, LoadsThatFail) {
  struct Case {
    const char* what;
    headless::Answer answer;
    int code;
  };
  for (const auto& [what, answer, code] : {Case{"no ads", {.body = "<VAST version=\"3.0\"/>"}, 303},
                                           {"nothing", {.status = 204}, 303},
                                           {"no document", {.body = "<html>"}, 100},
                                           {"silence", headless::Answer::silence(), 301}}) {
    SCOPED_TRACE(what);
    platform->urlSession().enqueue("https://ads/", answer);
    ad->load("https://ads/");
    platform->advance(1min);
    EXPECT_EQ(heard(), Lines{"failed " + std::to_string(code)});
    EXPECT_EQ(ad->state(), VeltoVideoAd::State::Empty);
    EXPECT_FALSE(ad->playIn(host));
  }
  ad->load("no address");
  EXPECT_EQ(told->heard, Lines{});
  platform->runUntilIdle();
  EXPECT_EQ(heard(), Lines{"failed 300"});
  // The whole of a load is limited, too; a later load takes the place of an earlier one.
  VeltoVideoAdSettings settings;
  settings.loadTimeout = 3s;
  settings.longest = 5;
  ad->setSettings(settings);
  platform->urlSession().respond("https://slow/", {.body = document({{}}), .delay = 4s});
  ad->load("https://slow/");
  platform->advance(10s);
  EXPECT_EQ(heard(), Lines{"failed 301"});
  ad->load("https://slow/");
  load({{}});
  platform->advance(10s);
  EXPECT_EQ(heard(), Lines{"failed 202"}) << "ten seconds";
  // A document that says less than its file has, and a stream without an end.
  settings.longest = 30;
  ad->setSettings(settings);
  platform->media().setVideo("https://v/long.webm", {.duration = {60, 1}});
  platform->media().setVideo("https://v/stream.webm", {.duration = {}});
  for (const auto& [name, starts] : {std::pair("long.webm", false), {"stream.webm", true}}) {
    play({{.files = file(name)}});
    platform->advance(2min);
    const auto all = heard();
    EXPECT_EQ(all.at(2), starts ? "start" : "failed 202") << name;
    EXPECT_EQ(all.at(all.size() - 3), "failed 202") << name;
    expectClean();
  }
  // What is too old when its turn comes.
  sent();
  load({{.more = "<Expires>60</Expires>"}});
  platform->advance(61s);
  ASSERT_TRUE(ad->playIn(host));
  EXPECT_EQ(sent(), "a-error304 ");
  EXPECT_EQ(heard(), between({"failed 304"}, {}));
}

// As a playlist does it: the next one at once, or inside what is told of the end.
TEST_F(VideoAdTest, ABreakOfAScheduleIsLoadedByItsOwnRules) {
  const std::string pod = document({{.attributes = "sequence=\"1\""}, {.attributes = "sequence=\"2\""}});
  platform->urlSession().respond("https://ads/?p=1", {.body = pod});
  VMAPAdSource tag, inside;
  tag.adTag = "https://ads/?p=[BREAKPOSITION]";
  inside.document = VASTDocument::read(pod);
  inside.allowMultipleAds = false;
  for (const auto& [source, count] : {std::pair(&tag, 2U), {&inside, 1U}}) {
    ad->load(*source);
    platform->runUntilIdle();
    ASSERT_TRUE(ad->playIn(host));
    platform->runUntilIdle();
    EXPECT_EQ(told->started.value().count, count);
    ad->stop();
    platform->runUntilIdle();
  }
}

TEST_F(VideoAdTest, TheNextLoadWaitsForTheEndOfTheLastAd) {
  play({{}});
  ad->loadDocument(document({{.id = "b"}}));
  platform->runUntilIdle();
  EXPECT_EQ(ad->state(), VeltoVideoAd::State::Playing) << "not in the middle";
  heard();
  ad->stop();
  ad->loadDocument(document({{.id = "c"}}));
  platform->runUntilIdle();
  EXPECT_EQ(heard(), (Lines{"content resume", "end", "loaded"}));
  told->during = [](const std::string& what, VeltoVideoAd& own) {
    if (what == "complete") own.loadDocument(document({{.id = "d"}}));
  };
  ASSERT_TRUE(ad->playIn(host));
  platform->advance(1min);
  auto all = heard();
  ASSERT_GT(all.size(), 3U);
  EXPECT_EQ(Lines(all.end() - 3, all.end()), (Lines{"content resume", "end", "loaded"}));
  told->during = nullptr;
  ASSERT_TRUE(ad->playIn(host));
  platform->runUntilIdle();
  EXPECT_EQ(told->started->identifier, "d");
}

TEST_F(VideoAdTest, APersonSteersIt) {
  play({{.skip = "skipoffset=\"00:00:05\""}});
  sent();
  heard();
  platform->advance(2500ms);
  sent();
  EXPECT_EQ(controls().skipButton().title(), "Skip in 3");
  tap(controls().skipButton());
  EXPECT_FALSE(ad->skip());
  ad->pause();
  EXPECT_EQ(heard(), Lines{"1/4"}) << "never inside the application's call";
  ad->resume();
  platform->runUntilIdle();
  EXPECT_EQ(heard(), (Lines{"pause", "resume"}));
  sent();
  tap(controls().muteButton());
  EXPECT_EQ(controls().muteButton().title(), "Unmute");
  EXPECT_EQ(platform->media().players().back()->appliedVolume(), 0);
  ad->setVolume(0.5F);
  tap(controls().muteButton());
  EXPECT_EQ(platform->media().players().back()->appliedVolume(), 0.5F);
  EXPECT_EQ(sent(), "a-mute a-unmute ");
  tap(controls().playButton());
  platform->advance(1h);
  EXPECT_EQ(platform->mainQueue().timers(), restingTimers) << "nothing is looked at while it waits";
  EXPECT_EQ(controls().playButton().title(), "Play");
  tap(controls().playButton());
  EXPECT_EQ(sent(), "a-pause a-resume ");
  EXPECT_EQ(heard(), (Lines{"pause", "resume"}));
  // On the ad, and beside it: both lead to the shop, and the ad waits there; pressed again, it goes on.
  window->tap({200, 200});
  window->tap({200, 200});
  tap(controls().moreButton());
  EXPECT_EQ(sent(), "a-click200%2C100 a-pause a-resume a-click-1 a-pause ");
  EXPECT_EQ(platform->application().opened.size(), 2U);
  EXPECT_EQ(platform->application().opened.back().url.absoluteString(), "https://shop/a");
  EXPECT_EQ(heard(), (Lines{"press", "pause", "resume", "press", "pause"}));
  ad->resume();
  platform->runUntilIdle();
  ad->setFullscreen(true);
  platform->advance(2500ms);
  EXPECT_EQ(controls().skipButton().title(), "Skip");
  tap(controls().skipButton());
  EXPECT_EQ(sent(), "a-resume a-fullscreen a-midpoint a-skip ");
  EXPECT_EQ(heard(), (Lines{"resume", "2/4", "skip", "content resume", "end"}));
  expectClean();
}

TEST_F(VideoAdTest, WholeWindowAndKeys) {
  load({{.skip = "skipoffset=\"00:00:02\""}});
  ASSERT_TRUE(ad->playOver(window->controller()));
  platform->runUntilIdle();
  const auto screen = window->controller()->presentedViewController();
  ASSERT_NE(screen, nullptr);
  EXPECT_EQ(screen->view()->frame().size, window->view().bounds().size);
  sent();
  heard();
  EXPECT_TRUE(window->pressEscape()) << "too early: stays";
  EXPECT_TRUE(window->pressKey(UIKey::M));
  EXPECT_TRUE(window->pressKey(UIKey::Space));
  EXPECT_TRUE(window->pressKey(UIKey::Space));
  EXPECT_FALSE(window->pressKey(UIKey::LeftArrow));
  EXPECT_EQ(sent(), "a-mute a-pause a-resume ");
  platform->advance(2s);
  EXPECT_TRUE(window->pressEscape());
  EXPECT_EQ(sent(), "a-viewable a-skip ");
  expectClean();
  platform->media().setVideo("https://v/endless.webm", {.duration = {100'000, 1}});
  load({{.files = file("endless.webm")}});
  ASSERT_TRUE(ad->playOver(window->controller()));
  platform->advance(15s);
  EXPECT_TRUE(window->pressEscape());
  platform->runUntilIdle();
  EXPECT_EQ(ad->state(), VeltoVideoAd::State::Playing);
  platform->advance(10s);
  EXPECT_TRUE(window->pressEscape());
  expectClean();
  EXPECT_EQ(heard().back(), "end");
}

// Nobody sees it: it waits. And it is only viewable where half of it is in sight for two seconds at a stretch.
TEST_F(VideoAdTest, PausesOutOfSight) {
  WindowSight gone;
  gone.minimized = true;
  window->setSight(gone);
  play({{}});
  platform->advance(5s);
  EXPECT_EQ(sent(), "a-loaded ") << "not seen, not begun";
  window->setSight({});
  platform->advance(1500ms);
  EXPECT_EQ(sent(), "a-impression a-start ");
  const auto cover = UIView::make();
  cover->setBackgroundColor(UIColor::blackColor());
  cover->setFrame({{0, 100}, {390, 120}});
  window->view().addSubview(cover);
  platform->advance(1s);
  cover->removeFromSuperview();
  platform->advance(1s);
  platform->application().setLocked(true);
  platform->advance(10s);
  platform->application().setLocked(false);
  platform->advance(250ms);
  window->hide();
  platform->advance(1h);
  window->show();
  platform->advance(250ms);
  EXPECT_EQ(sent(), "a-firstQuartile a-pause a-resume a-pause a-resume ");
  platform->advance(2s);
  EXPECT_EQ(sent(), "a-midpoint a-viewable ");
  tap(controls().playButton());
  window->hide();
  platform->advance(1s);
  window->show();
  platform->advance(1min);
  EXPECT_EQ(sent(), "a-pause ") << "the person's pause stays";
  // Taken out of its window it is over, also while it waits.
  heard();
  ad->resume();
  host->removeFromSuperview();
  platform->advance(5s);
  EXPECT_EQ(heard(), (Lines{"resume", "pause", "content resume", "end"}));
  EXPECT_EQ(sent(), "a-resume a-pause a-close ");
  EXPECT_EQ(host->subviews().size(), 0U);
}

// In each of its calls, and in each state between them, the application may be done with it.
TEST_F(VideoAdTest, EndsCleanlyAtAnyMoment) {
  const AdText pod{.attributes = "sequence=\"1\"", .skip = "skipoffset=\"0%\""};
  const AdText broken{.files = file("missing.webm"), .attributes = "sequence=\"2\""};
  platform->media().setVideo("https://v/missing.webm", {.loadFails = true});
  const auto run = [&](bool whole) {
    ad = VeltoVideoAd::make(told);
    load({pod, broken, pod});
    if (ad) whole ? ad->playOver(window->controller()) : ad->playIn(host);
    platform->runUntilIdle();
    if (ad) ad->pause();
    if (ad) ad->resume();
    platform->runUntilIdle();
    if (ad && find(window->view())) tap(find(window->view())->moreButton());
    if (ad) ad->resume();
    platform->advance(1min);
  };
  run(false);
  const auto calls = heard();
  ASSERT_EQ(calls.size(), 20U);
  for (size_t at = 0; at < calls.size(); ++at)
    for (const bool stops : {false, true}) {
      SCOPED_TRACE(std::to_string(at) + " " + calls[at]);
      told->during = [&](const std::string&, VeltoVideoAd& own) {
        if (told->heard.size() != at + 1) return;
        if (stops) return own.stop();
        ad.reset();
      };
      run(at % 2);
      const auto all = heard();
      ASSERT_GT(all.size(), at);
      EXPECT_EQ(all[at], calls[at]);
      EXPECT_TRUE(stops || all.size() == at + 1) << "silent afterwards";
      EXPECT_TRUE(!stops || at == 0 || all.back() == "end");
      expectClean();
    }
  told->during = nullptr;
  heard();

  // While it loads, while it is about to play, with its window, with the platform.
  platform->urlSession().respond("https://ads/", {.body = document({{}}), .delay = 1s});
  ad = VeltoVideoAd::make(told);
  ad->load("https://ads/");
  ad->stop();
  platform->advance(10s);
  load({{}});
  ASSERT_TRUE(ad->playIn(host));
  ad->stop();
  platform->advance(10s);
  EXPECT_EQ(heard(), (Lines{"loaded", "end"}));
  load({{}});
  ASSERT_TRUE(ad->playOver(window->controller()));
  platform->advance(1s);
  window->controller()->platformWindowGone();
  platform->advance(10s);
  EXPECT_EQ(heard(), (Lines{"loaded", "content pause", "start", "content resume", "end"}));
  expectClean();
  play({{}});
  headless::Platform::uninstall();
  EXPECT_FALSE(ad->playIn(host));
  ad->load("https://ads/");
  ad->stop();
  ad.reset();
  window.reset();
}

TEST_F(VideoAdTest, IconsAndCompanions) {
  const std::string icons =
      "<Icons><Icon program=\"choices\" width=\"20\" height=\"10\" xPosition=\"right\" yPosition=\"top\" "
      "offset=\"00:00:02\" "
      "duration=\"00:00:03\"><StaticResource "
      "creativeType=\"image/png\">https://i/a.png?a=1&amp;b=2</StaticResource><IconClicks>"
      "<IconClickThrough>https://choices/</IconClickThrough><IconClickTracking>https://t/icon-click</"
      "IconClickTracking>"
      "</IconClicks><IconViewTracking>https://t/icon-view</IconViewTracking></Icon></Icons>";
  const std::string companions =
      "</Linear></Creative><Creative><CompanionAds><Companion id=\"c\" width=\"300\" "
      "height=\"60\"><HTMLResource><![CDATA["
      "<a "
      "href='https://own/'>x</a>]]></HTMLResource><CompanionClickTracking>https://t/companion-click</"
      "CompanionClickTracking>"
      "<TrackingEvents><Tracking "
      "event=\"creativeView\">https://t/companion-view</Tracking></TrackingEvents></Companion>"
      "</CompanionAds></Creative><Creative><Linear>";
  platform->setPagesFinishByThemselves(true);
  play({{.linear = icons + companions}});
  EXPECT_TRUE(platform->webViews().empty());
  ASSERT_EQ(ad->companions().size(), 1U);
  EXPECT_EQ(ad->companions()[0].identifier, "c");
  const auto companion = ad->companionView(0);
  ASSERT_NE(companion, nullptr);
  EXPECT_EQ(companion, ad->companionView(0));
  EXPECT_EQ(ad->companionView(1), nullptr);
  platform->advance(1s);
  sent();
  window->view().addSubview(companion);
  EXPECT_EQ(sent(), "companion-view ");
  auto* page = platform->webViews().front();
  EXPECT_EQ(window->tapLink(*page, "https://own/"), WKNavigationActionPolicy::Cancel);
  EXPECT_EQ(sent(), "companion-click ");
  EXPECT_EQ(platform->application().opened.back().url.absoluteString(), "https://own/");

  platform->advance(1s);
  ASSERT_EQ(platform->webViews().size(), 2U);
  auto& icon = *platform->webViews().back();
  EXPECT_NE(icon.html().find("a.png?a=1&amp;b=2"), std::string::npos);
  EXPECT_EQ(frameInWindow(*icon.webView().superview()), (CGRect{{370, 100}, {20, 10}}));
  EXPECT_EQ(sent(), "a-viewable icon-view ");
  window->tapLink(icon, "https://choices/");
  EXPECT_EQ(sent(), "icon-click ");
  EXPECT_EQ(platform->application().opened.back().url.absoluteString(), "https://choices/");
  platform->advance(3s);
  EXPECT_EQ(platform->webViews().size(), 1U) << "its time is over";
  platform->advance(1min);
  sent();
  window->tapLink(*page, "https://own/");
  EXPECT_EQ(sent(), "companion-click ") << "companions stay";
  play({{.linear = std::regex_replace(icons, std::regex("duration=\"00:00:03\""), "")}});
  EXPECT_EQ(companion->superview(), nullptr) << "it was another ad's";
  platform->advance(1min);
  EXPECT_TRUE(platform->webViews().size() <= 1) << "its icon went with it";
  // However large, and wherever: "skip" can be reached.
  play({{.skip = "skipoffset=\"0%\"",
         .linear = "<Icons><Icon width=\"400\" height=\"1e999\" xPosition=\"right\" "
                   "yPosition=\"inf\"><StaticResource "
                   "creativeType=\"image/png\">https://i/a.png</StaticResource></Icon><Icon program=\"b\" "
                   "width=\"400\" "
                   "height=\"400\" xPosition=\"right\" yPosition=\"bottom\"><StaticResource "
                   "creativeType=\"image/png\">https://i/b.png</StaticResource></Icon></Icons>"}});
  const auto& large = *platform->webViews().back()->webView().superview();
  EXPECT_EQ(frameInWindow(large), (CGRect{{292.5, 265}, {97.5, 55}}));
  heard();
  tap(controls().skipButton());
  EXPECT_EQ(heard().at(0), "skip");
}

// The scripts of the document run, those that may not are told of, and hear the truth.
TEST_F(VideoAdTest, IsMeasuredByTheScriptsOfTheDocument) {
  const auto verification = [](const std::string& vendor, const std::string& framework) {
    return "<Verification vendor=\"" + vendor + "\"><JavaScriptResource apiFramework=\"" + framework +
           "\">https://" + vendor + "/v.js</JavaScriptResource><VerificationParameters>p-" + vendor +
           "</VerificationParameters><TrackingEvents>" +
           "<Tracking event=\"verificationNotExecuted\">https://t/" + vendor +
           "-[REASON]</Tracking></TrackingEvents>" + "</Verification>";
  };
  platform->veltoBundle().files["omsdk-v1.js"] = "service()";
  VeltoVideoAdSettings settings;
  platform->media().setVideo("https://v/a.webm", {.stallsAt = 6s, .stallsFor = 2s});
  settings.refusedVendors = {"unwanted"};
  settings.startsMuted = true;
  ad->setSettings(settings);
  platform->setPagesFinishByThemselves(true);
  play({{.more = "<AdVerifications>" + verification("good", "omid") + verification("unwanted", "omid") +
                 verification("odd", "other") + "</AdVerifications>",
         .skip = "skipoffset=\"00:00:05\""}});
  EXPECT_EQ(sent(), "a-loaded unwanted-1 odd-2 a-impression a-start ");
  ASSERT_EQ(platform->webViews().size(), 1U) << "the hidden page of the session";
  const auto& page = *platform->webViews().front();
  EXPECT_TRUE(page.hasRun("https://good/v.js"));
  EXPECT_TRUE(page.hasRun("p-good"));
  EXPECT_FALSE(page.hasRun("https://unwanted/"));
  EXPECT_TRUE(page.hasRun("\"skipOffset\":5"));
  EXPECT_TRUE(page.hasRun("\"percentageInView\":100")) << "its own controls do not cover it";
  ad->setMuted(false);
  platform->advance(3s);
  tap(controls().moreButton());
  ad->resume();
  platform->advance(9500ms);  // the page lives a second longer than the ad
  size_t at = 0;
  for (const char* event :
       {"impression", "\"start\"", "volumeChange", "firstQuartile", "adUserInteraction", "pause", "resume",
        "midpoint", "bufferStart", "bufferFinish", "thirdQuartile", "complete"}) {
    const auto& scripts = page.scripts();
    while (at < scripts.size() && scripts[at].find(event) == std::string::npos) ++at;
    EXPECT_LT(at, scripts.size()) << event;
  }
}

}  // namespace
}  // namespace velto::test
