// Documents of video ads, played by the program itself from a server of this machine: what is told, and what is found.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <future>
#include <mutex>
#include <set>
#include <sstream>

#include "../support/LoopbackServer.h"
#include "../support/Program.h"
#include "preview/Player.h"
#include "preview/Story.h"
#include "preview/vast/FileLook.h"
#include "sandbox/Server.h"

namespace velto::preview {
namespace {

using test::TemporaryFolder;
using test::textOf;
using Ids = std::set<std::string>;

// As WebM, of 320 by 180 pixels.
std::string filmOf(const TemporaryFolder& folder, int seconds, int pictures) {
  const auto file = folder.path("film.webm");
  const auto outcome =
      test::run({"gst-launch-1.0", "-q", "videotestsrc", "num-buffers=" + std::to_string(seconds * pictures),
                 "!", "video/x-raw,width=320,height=180,framerate=" + std::to_string(pictures) + "/1", "!",
                 "vp8enc", "deadline=1", "!", "webmmux", "!", "filesink", "location=" + file});
  EXPECT_EQ(outcome.code, 0);
  return textOf(file);
}

class VideoAdPlay : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    const TemporaryFolder made;
    shortFilm = filmOf(made, 2, 15);
    longFilm = filmOf(made, 120, 2);
  }
  VideoAdPlay() {
    const auto serve = [this](const char* path, const std::string& bytes, const char* type) {
      server_->Get(path, [&bytes, type](const auto&, auto& response) { response.set_content(bytes, type); });
    };
    serve("/short.webm", shortFilm, "video/webm");
    serve("/long.webm", longFilm, "video/webm");
    server_->Get("/inner.xml", [this](const auto&, auto& response) {
      response.set_content(
          document("<Tracking event=\"complete\">" + at("/gone") + "</Tracking>",
                   file("short", "width=\"640\" height=\"360\"") + file("none", "width=\"1\" height=\"1\"")),
          "text/xml");
    });
    server_->Get("/t/mute", [this](const auto&, auto&) { release(); });
    server_->Get("/(t|script).*",
                 [](const auto&, auto& response) { response.set_content("", "text/javascript"); });
    server_->Get("/hanging.webm", [this](const auto& request, auto& response) {
      response.status = 404;
      if (request.method == "HEAD") return;
      std::call_once(isAsked_, [this] { asked.set_value(); });
      isReleased_.wait_for(std::chrono::minutes(2));
    });
    server_->Get("/gone.js", [](const auto&, auto& response) {
      response.status = 404;
      response.set_content("gone", "text/x-gone");
    });
    server_.start();
  }

  std::string at(const std::string& path) const { return server_.address(path); }
  std::string file(const std::string& name, const std::string& size = "width=\"320\" height=\"180\"") const {
    return "<MediaFile delivery=\"progressive\" type=\"video/webm\" " + size + ">" +
           at("/" + name + ".webm") + "</MediaFile>";
  }
  std::string document(const std::string& trackings, const std::string& files,
                       const std::string& script = "/script", int seconds = 2) const {
    std::string events;
    for (const char* event : {"start", "midpoint", "mute", "skip"})
      events += "<Tracking event=\"" + std::string(event) + "\">" + at("/t/") + event +
                "?[CACHEBUSTING]</Tracking>";
    return "<VAST "
           "version=\"4.2\"><Ad><InLine><AdSystem>S</AdSystem><AdTitle>T</AdTitle><AdServingId>1</"
           "AdServingId>"
           "<Impression>" +
           at("/t/impression") + "</Impression><Error>" + at("/t/[ERRORCODE]") +
           "</Error><AdVerifications><Verification vendor=\"v\"><JavaScriptResource apiFramework=\"omid\">" +
           at(script) +
           "</JavaScriptResource></Verification></AdVerifications><Creatives><Creative><UniversalAdId>1</"
           "UniversalAdId>"
           "<Linear skipoffset=\"00:00:00\"><Duration>00:0" +
           std::to_string(seconds / 60) + ":0" + std::to_string(seconds % 60) +
           "</Duration><TrackingEvents>" + events + trackings +
           "</TrackingEvents><VideoClicks><ClickThrough>https://shop.example/</ClickThrough><ClickTracking>" +
           at("/t/click") + "</ClickTracking></VideoClicks><MediaFiles>" + files +
           "</MediaFiles></Linear></Creative></Creatives></InLine></Ad></VAST>";
  }
  std::string wrapper(const std::string& path) const {
    return "<VAST version=\"4.2\"><Ad><Wrapper><AdSystem>S</AdSystem><Error>" + at("/t/[ERRORCODE]") +
           "</Error><Impression>" + at("/t/outer") + "</Impression><VASTAdTagURI>" + at(path) +
           "</VASTAdTagURI></Wrapper></Ad></VAST>";
  }
  static Story storyIn(const std::string& lines) {
    Story story;
    std::istringstream in(lines);
    for (std::string line; std::getline(in, line);)
      if (const auto entry = readJSON(line); entry && entry->object()) story.add(*entry->object());
    return story;
  }
  Story storyOf(const std::string& name) const {
    return storyIn(textOf(folder.path("report/" + name + "/events.jsonl")));
  }
  static Ids idsIn(const Story& story) {
    Ids ids;
    for (const auto* finding : story.of("finding")) ids.insert(textIn(*finding, "id"));
    return ids;
  }
  static std::multiset<std::string> toldIn(const Story& story) {
    std::multiset<std::string> names;
    for (const auto* told : story.of("told")) names.insert(textIn(*told, "name"));
    return names;
  }

  inline static std::string shortFilm, longFilm;
  const TemporaryFolder folder;
  // The film that hangs: that it is asked for, and that it may answer.
  std::promise<void> asked;
  void release() {
    std::call_once(release_, [this] { released_.set_value(); });
  }

 private:
  std::once_flag isAsked_, release_;
  std::promise<void> released_;
  const std::shared_future<void> isReleased_ = released_.get_future();
  test::LoopbackServer server_;
};

TEST_F(VideoAdPlay, AFolderIsCheckedDocumentByDocument) {
  folder.write("ads/fine.xml", document("", file("short")));
  folder.write("ads/faulty.xml", wrapper("/inner.xml"));
  folder.write("ads/lost.xml", wrapper("/gone.xml"));
  folder.write("ads/broken.xml", "<VAST version=\"4.2\"><Ad>");
  folder.write("ads/feed.xml", "<rss/>");
  // A busy machine answers late.
  const auto outcome =
      test::run({PREVIEW_PROGRAM, "--all", folder.path("ads"), "--report", folder.path("report"), "--strict",
                 "--allow", "vast-slow", "--jobs", "2", "--timeout", "100"});
  EXPECT_EQ(outcome.code, 1) << outcome.output;
  EXPECT_EQ(storyIn(outcome.output).of("play").size(), 4U) << outcome.output;

  const auto fine = storyOf("fine.xml");
  EXPECT_EQ(idsIn(fine), Ids());
  EXPECT_EQ(toldIn(fine), (std::multiset<std::string>{"impression", "midpoint", "start"}));
  EXPECT_EQ(numberIn(*fine.last("end"), "code", -1), 0);
  EXPECT_NE(textOf(folder.path("report/fine.xml/requests.har")).find("/t/impression"), std::string::npos);

  const auto faulty = storyOf("faulty.xml");
  EXPECT_EQ(idsIn(faulty), (Ids{"vast-file-differs", "vast-file-failed", "vast-not-told"}));
  EXPECT_EQ(faulty.of("document").size(), 2U);
  EXPECT_EQ(toldIn(faulty).count("impression"), 2U);

  EXPECT_EQ(idsIn(storyOf("lost.xml")), (Ids{"vast-not-played", "vast-wrapper-failed"}));
  EXPECT_EQ(idsIn(storyOf("broken.xml")), (Ids{"vast-not-played", "vast-not-xml"}));
}

TEST_F(VideoAdPlay, StepsPressMuteAndSkip) {
  const auto ad = folder.write("ad.xml", document("", file("long"), "/gone.js", 120));
  const auto steps = folder.write(
      "steps",
      "wait-for event told/impression\nwait-for event resource/text/x-gone\nexpect frame 0 312 390 "
      "219\nvolume 0\n"
      "wait-for event told/mute\ntap 190 420\nwait-for event DidPress\nwait-for event DidPause\n"
      "expect open https://shop.example/\nskip\nwait-for event told/skip\n"
      "wait-for event DidEndAll\nexpect count told/midpoint 0\nexpect no finding vast-not-told\nskip\n");
  const auto outcome = test::run({PREVIEW_PROGRAM, "--vast", ad, "--steps", steps, "--timeout", "100"});
  const auto story = storyIn(outcome.output);
  EXPECT_EQ(outcome.code, 1);
  ASSERT_NE(story.last("failure"), nullptr) << outcome.output;
  EXPECT_EQ(textIn(*story.last("failure"), "text"), "it cannot be skipped now") << outcome.output;
  EXPECT_TRUE(idsIn(story).contains("vast-part-failed")) << outcome.output;
}

TEST_F(VideoAdPlay, ServersAreTrustedByAnAuthorityOfTheirOwn) {
  folder.write("ads/short.webm", shortFilm);
  folder.write("ads/t/impression", "1");
  sandbox::Options options;
  options.dataFolder = folder.path("server");
  options.serveFolder = folder.path("ads");
  sandbox::Server server(options);
  server.start();
  const auto own = "https://localhost:" + std::to_string(server.port());
  auto text = document("", file("short"));
  for (const char* path : {"/short.webm", "/t/impression"})
    text.replace(text.find(at(path)), at(path).size(), own + path);
  folder.write("ads/ad.xml", text);
  const auto outcome =
      test::run({PREVIEW_PROGRAM, "--vast", own + "/ad.xml", "--ca", server.caFile(), "--strict", "--allow",
                 "vast-slow", "--report", folder.path("report/own"), "--timeout", "100"});
  EXPECT_EQ(outcome.code, 0) << outcome.output;
  EXPECT_EQ(idsIn(storyOf("own")), Ids());
  EXPECT_EQ(toldIn(storyOf("own")), (std::multiset<std::string>{"impression", "midpoint", "start"}));
}

// What is not known yet is waited for: the film answers once the ad is muted.
TEST_F(VideoAdPlay, StepsExpectNoFindingTooEarly) {
  const auto ad = folder.write("ad.xml", document("", file("long") + file("hanging"), "/script", 120));
  const auto steps = folder.write("steps", "volume 0\nexpect no finding vast-file-failed\n");
  const auto outcome = test::run({PREVIEW_PROGRAM, "--vast", ad, "--steps", steps, "--timeout", "100"});
  const auto story = storyIn(outcome.output);
  EXPECT_EQ(outcome.code, 1);
  ASSERT_NE(story.last("failure"), nullptr) << outcome.output;
  EXPECT_EQ(textIn(*story.last("failure"), "text"), "there is one: vast-file-failed") << outcome.output;
}

TEST_F(VideoAdPlay, FilesOfNoInterestAnyMoreHoldUpNoOthers) {
  constexpr std::chrono::seconds longest{60};
  std::vector<std::string> told;
  FileLook files(longest, {}, [&](const FileFacts& facts) { told.push_back(facts.url); });
  files.look(at("/hanging.webm"));
  ASSERT_EQ(asked.get_future().wait_for(longest), std::future_status::ready);
  files.forget();
  files.look(at("/short.webm"));
  EXPECT_TRUE(runUntil(longest, [&] { return files.pending() == 0; }));
  EXPECT_EQ(told, std::vector{at("/short.webm")});
  release();
}

TEST_F(VideoAdPlay, WhatCannotBeHadIsSaidInOneLine) {
  ASSERT_EQ(mkfifo(folder.path("pipe.xml").c_str(), 0600), 0);
  for (const auto& source : {folder.path("none.xml"), folder.path(), at("/gone.xml"),
                             folder.write("empty.xml", ""), folder.path("pipe.xml")}) {
    const auto outcome = test::run({PREVIEW_PROGRAM, "--vast", source}, true);
    EXPECT_EQ(outcome.code, 2) << source;
    EXPECT_EQ(std::count(outcome.output.begin(), outcome.output.end(), '\n'), 1) << outcome.output;
  }
}

}  // namespace
}  // namespace velto::preview
