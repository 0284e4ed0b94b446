// Video ads from the address to the file that plays, in virtual time: what the application hears, and what servers are told.
#include "velto/vast/VMAPDocument.h"

#include "VideoAdFixture.h"

namespace velto::test {
namespace {

TEST_F(VideoAdTest, AnAdFromItsAddressToItsEnd) {
  platform->urlSession().respond("https://ads/", {.body = document({{}})});
  VeltoVideoAdSettings settings;
  settings.position = VeltoVideoAdPosition::Midroll;
  settings.contentIdentifier = "film 1";
  settings.contentPosition = 65.5;
  settings.volume = 0.5F;
  ad->setSettings(settings);
  ad->load("https://ads/?[BREAKPOSITION],[APPBUNDLE],[CONTENTID],[GDPRCONSENT],[MEDIAPLAYHEAD]");
  EXPECT_FALSE(ad->playIn(host)) << "not ready";
  platform->runUntilIdle();
  EXPECT_EQ(platform->urlSession().requests().back().url.query(),
            "2,org.example.host,film%201,-1,00%3A01%3A05.500");
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

TEST_F(VideoAdTest, TheNetworkThatWasSeenChoosesAmongFiles) {
  const auto bitrateThatPlays = [&] {
    play({{.files = file("large.webm", R"(type="video/webm" width="640" height="360" bitrate="4000")") +
                    file("small.webm", R"(type="video/webm" width="320" height="180" bitrate="400")")}});
    ad->stop();
    platform->runUntilIdle();
    const auto story = ad->veltoAdTimeline().back();
    return std::get<VeltoVideoFile>(story.first(VeltoTimelineKind::FileChosen)->detail).bitrate;
  };
  EXPECT_EQ(bitrateThatPlays(), 4000) << "nothing is known yet";
  platform->media().carried(1000);
  EXPECT_EQ(bitrateThatPlays(), 400);
  platform->media().carried(21'000);
  EXPECT_EQ(bitrateThatPlays(), 4000) << "it has become better";
  VeltoVideoAdSettings settings;
  settings.bandwidth = 800;
  ad->setSettings(settings);
  EXPECT_EQ(bitrateThatPlays(), 400) << "the application knows better";
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

TEST_F(VideoAdTest, ThoseWhoseTurnDoesNotComeAreToldOnceAlsoWhereAFileIsThere) {
  play({{.id = "a", .attributes = "sequence=\"1\""},
        {.id = "b", .attributes = "sequence=\"2\""},
        {.id = "c", .attributes = "sequence=\"3\""}});
  platform->advance(7s);
  ASSERT_EQ(platform->media().players().size(), 2U) << "the next one's file is on its way";
  sent();
  ad->stop();
  EXPECT_EQ(sent(), "a-close b-error206 c-error206 ");
  expectClean();
}

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

// As a playlist does it: the next one at once, or inside what is told of the end.
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
  for (const auto* moment : {"complete", "content resume", "end"}) {
    SCOPED_TRACE(moment);
    told->during = [&](const std::string& what, VeltoVideoAd& own) {
      EXPECT_TRUE(own.info() || (what != "start" && what != "complete"));
      if (what == moment) own.loadDocument(document({{.id = moment}}));
      if (what != "end") return;
      EXPECT_EQ(own.state(), VeltoVideoAd::State::Loading) << "for all who ask";
      EXPECT_TRUE(what == moment || own.veltoAdTimeline().back().end) << "and begins afterwards";
    };
    ASSERT_TRUE(ad->playIn(host));
    EXPECT_FALSE(ad->info()) << "that before is none of this load's";
    EXPECT_FALSE(ad->isPaused());
    platform->advance(1min);
    const auto all = heard();
    ASSERT_GT(all.size(), 3U);
    EXPECT_EQ(Lines(all.end() - 3, all.end()), (Lines{"content resume", "end", "loaded"}));
    told->during = nullptr;
  }
  ASSERT_TRUE(ad->playIn(host));
  platform->runUntilIdle();
  EXPECT_EQ(told->started->identifier, "end");
}

// Documents can be there before what plays them is: the load waits, and may be another one by then.
TEST_F(VideoAdTest, ALoadWaitsForWhatPlaysFiles) {
  platform->media().preparesAfter = 3s;
  load({{}});
  EXPECT_EQ(heard(), Lines{});
  EXPECT_FALSE(ad->playIn(host));
  platform->advance(3s);
  EXPECT_EQ(heard(), Lines{"loaded"});
  load({{}});
  platform->advance(2s);
  ad->stop();
  platform->advance(5s);
  load({{}});
  platform->advance(2s);
  load({{.id = "b"}});
  platform->advance(2s);
  EXPECT_EQ(heard(), Lines{}) << "not for the one before";
  platform->advance(1s);
  EXPECT_EQ(heard(), Lines{"loaded"});
  ASSERT_TRUE(ad->playIn(host));
  platform->advance(1min);
  EXPECT_EQ(told->started->identifier, "b");
  heard();
  sent();
  // Nor longer than for all of a load.
  VeltoVideoAdSettings settings;
  settings.loadTimeout = 2s;
  ad->setSettings(settings);
  load({{.attributes = "sequence=\"1\""}, {.id = "b", .attributes = "sequence=\"2\""}});
  platform->advance(1999ms);
  EXPECT_EQ(heard(), Lines{});
  platform->advance(1ms);
  EXPECT_EQ(heard(), Lines{"failed 400"});
  EXPECT_EQ(sent(), "a-error400 b-error400 ");
  load({{}});
  ad.reset();
  platform->advance(1min);
  EXPECT_EQ(heard(), Lines{});
  expectClean();
}

}  // namespace
}  // namespace velto::test
