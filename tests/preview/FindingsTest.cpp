// Judging stories that were written down: what takes a minute, what no page can do by itself, and limits to the
// byte; and what is written about them. The other rules have creatives (findings.sh).
#include <glib.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "../support/Folder.h"
#include "preview/Arguments.h"
#include "preview/Findings.h"
#include "preview/ReportFiles.h"

namespace velto::preview {
namespace {

Story story(const std::string& lines) {
  Story made;
  std::istringstream in(lines);
  for (std::string line; std::getline(in, line);) {
    const auto entry = readJSON(line);
    EXPECT_TRUE(entry && entry->object()) << line;
    if (entry && entry->object()) made.add(*entry->object());
  }
  return made;
}

std::set<std::string> idsIn(const Story& told, const Tolerance& tolerance = {}) {
  std::set<std::string> ids;
  for (const auto& finding : judge(told, tolerance)) ids.insert(finding.rule->id);
  ids.erase("no-load-finished");  // of each that tells of something else
  return ids;
}

// Memory each ten seconds, MiB.
std::string growth(const std::vector<int>& memory) {
  std::string lines;
  for (size_t i = 0; i < memory.size(); ++i)
    lines += R"({"event":"weight","t":)" + std::to_string(i * 10'000) + R"(,"memory":)" +
             std::to_string(memory[i] << 20) + "}\n";
  return lines;
}

std::string sight(int percent) {
  return R"({"event":"measurement","type":"geometryChange","data":{"adView":{"percentageInView":)" +
         std::to_string(percent) + "}}}\n";
}

const std::string elsewhere = R"({"event":"creative","base":"https://ads.example/a/"})"
                              "\n";

// So many requests of that size, from the first millisecond on.
std::string requests(int count, int bytes) {
  std::string lines;
  for (int i = 1; i <= count; ++i)
    lines += R"({"event":"resource","start":)" + std::to_string(i) + R"(,"bytes":)" + std::to_string(bytes) +
             "}\n";
  return lines;
}

std::string lines(int count, const std::string& line) {
  std::string all;
  for (int i = 0; i < count; ++i) all += line + "\n";
  return all;
}

std::string page(const std::string& members) {
  return R"({"event":"page",)" + members + "}\n";
}

std::string image(int width, int height, int shown) {
  return page(R"("images":[{"width":)" + std::to_string(width) + R"(,"height":)" + std::to_string(height) +
              R"(,"shownWidth":)" + std::to_string(shown) + R"(,"shownHeight":)" + std::to_string(shown) +
              "}]");
}

std::string lost(const char* element, const char* url) {
  return std::string(R"({"event":"resource-error","element":")") + element + R"(","url":")" + url + "\"}\n";
}

std::string sentOn(const std::string& from, const std::string& to) {
  return R"({"event":"resource","redirectedFrom":[")" + from + R"(","https://ads.example/between"],"url":")" +
         to + "\"}";
}

// Of the library's own watch.
std::string limit(const char* name, const char* event = "library") {
  return std::string(R"({"event":")") + event + R"(","limit":")" + name + R"(","figure":15.2,"most":15})";
}

const std::string loaded = R"({"event":"load-finished","t":100})"
                           "\n";

struct Pair {
  std::string id;
  std::string broken, close;
};

std::vector<Pair> pairs() {
  return {
      {"too-heavy", requests(2, 2'000'001), requests(2, 2'000'000)},
      {"too-heavy", R"({"event":"weight","bytes":4000001})", R"({"event":"weight","bytes":4000000})"},
      {"heavy-before-load", requests(1, 200'001) + loaded,
       requests(1, 200'000) + loaded + R"({"event":"resource","start":101,"bytes":90000})"},
      {"many-requests", requests(11, 1) + page(R"("painted":11)"),
       requests(11, 1) + page(R"("painted":10.9)")},
      {"many-requests", page(R"("painted":1,"requestsBeforePaint":11)"),
       page(R"("painted":1,"requestsBeforePaint":10)")},
      {"too-busy", limit("processor-peak"), limit("network")},
      {"too-busy", limit("processor"), limit("processor", "console")},
      {"busy-unseen", limit("unseen"), limit("network")},
      {"memory-growth", growth({20, 22, 24, 26, 28, 30, 31}), growth({20, 22, 24, 26, 28, 29, 30})},
      {"memory-growth", growth({9, 9, 20, 22, 24, 26, 28, 30, 32}), growth({20, 40, 40, 40, 40, 40, 40})},
      {"memory-growth", limit("memory"), growth({20, 30, 40, 50, 60, 70})},  // which is not a minute yet
      {"endless-animation", page(R"("animations":[{"seconds":31}])"),
       page(R"("animations":[{"seconds":30}])")},
      {"large-image", image(90001, 1, 100), image(90000, 1, 100)},
      {"large-image", image(10001, 1, 10), image(10000, 1, 10)},
      {"plain-http", elsewhere + R"({"event":"resource","url":"http://ads.example/a.js"})",
       R"({"event":"resource","url":"http://[::1]:80/a.js"})"},
      {"plain-http", sentOn("http://ads.example/a", "https://ads.example/a"),
       sentOn("https://ads.example/a", "https://ads.example/b")},
      {"third-party", elsewhere + sentOn("https://cdn.example/a", "https://ads.example/a"),
       elsewhere + sentOn("https://ads.example/a", "https://ads.example/b")},
      {"third-party", elsewhere + R"({"event":"resource","url":"https://cdn.example/a.js"})",
       elsewhere + R"({"event":"resource","url":"https://me@ads.example:8443/b.js"})"},
      {"request-failed", R"({"event":"resource","status":400})", R"({"event":"resource","status":399})"},
      {"request-failed", R"({"event":"resource","error":"not finished","duration":5000})",
       R"({"event":"resource","error":"not finished","duration":4999})"},
      {"request-failed", lost("img", "a.png") + R"({"event":"resource","url":"a.png","status":200})",
       lost("img", "a.png") + R"({"event":"content-policy","url":"a.png"})"},
      {"request-failed", R"({"event":"resource","url":"http://a/xmraid.js","status":404})",
       R"({"event":"resource","url":"http://a/mraid.js?2","status":404})"},
      {"request-failed", lost("script", "weird://a.js"), lost("source", "weird://a.mp4") + lost("img", "")},
      {"crash", R"({"event":"crashed","reason":"memory"})", R"({"event":"library","name":"ended"})"},
      {"noisy-console", lines(101, R"({"event":"console"})"), lines(100, R"({"event":"console"})")},
      {"listeners-pile-up", page(R"("listeners":{"error":11})"),
       page(R"("listeners":{"error":10,"ready":10})")},
      {"faint-close", R"({"event":"paint","closeContrast":2.9})", R"({"event":"paint","closeContrast":3})"},
      {"never-in-view", sight(0) + sight(0), sight(0) + sight(1)},
      {"nothing-painted", lines(2, R"({"event":"paint","colours":1})"),
       R"({"event":"paint","colours":1})" + ("\n" + lines(1, R"({"event":"paint","colours":2})"))},
  };
}

TEST(Findings, AreWhatABrokenStoryTellsAndACloseOneDoesNot) {
  for (const auto& [id, broken, close] : pairs()) {
    EXPECT_TRUE(idsIn(story(broken)).contains(id)) << broken;
    EXPECT_FALSE(idsIn(story(close)).contains(id)) << close;
  }
}

// A creative's first lines name what it is an example of, and what it comes close to.
TEST(Findings, HaveEachAnExampleOneThatComesCloseAndAPartOfTheGuide) {
  std::set<std::string> broken, close;
  for (const auto& pair : pairs()) broken.insert(pair.id), close.insert(pair.id);
  for (const auto& file : std::filesystem::directory_iterator(PREVIEW_FINDINGS)) {
    std::ifstream in(file.path());
    std::set<std::string> found;
    std::string mark, kind, word;
    while (in >> mark >> kind && mark == "<!--" && in >> word) {
      if (kind == "near") {
        word.pop_back();  // the colon
        EXPECT_FALSE(found.contains(word)) << file.path();
        close.insert(word);
      } else {
        for (; word != "-->" && in; in >> word) found.insert(word);
      }
      std::getline(in, mark);
    }
    broken.merge(found);
  }
  for (const auto* rule : allRules()) {
    // Of plays (BatchTest), and of video ads (VideoAdFindingsTest).
    if (!rule->find || std::string_view(rule->id).starts_with("vast-")) continue;
    EXPECT_TRUE(broken.contains(rule->id)) << rule->id;
    EXPECT_TRUE(close.contains(rule->id)) << rule->id;
  }
  std::ostringstream guide;
  guide << std::ifstream(PREVIEW_GUIDE).rdbuf();
  EXPECT_EQ(guide.str(), findingsGuide()) << "velto-preview --explain > docs/findings.md";
}

TEST(Findings, FailARunUnlessTheyAreAllowedOrKnown) {
  const auto told = story(R"({"event":"dialog","type":"alert"})"
                          "\n"
                          R"({"event":"vibration"})");
  const auto failing = [&](const Tolerance& tolerance) {
    std::string ids;
    for (const auto& finding : judge(told, tolerance))
      if (tolerance.fails(finding)) ids += std::string(finding.rule->id) + " ";
    return ids;
  };
  EXPECT_EQ(failing({}), "");
  EXPECT_EQ(failing({.allowed = {}, .known = {}, .failsFrom = Severity::Error}), "dialog no-load-finished ");
  EXPECT_EQ(failing({{"dialog"}, {"no-load-finished"}, Severity::Warning}), "vibration ");
  const test::TemporaryFolder folder;
  const auto file = folder.write("baseline.json", R"({"creatives":[
    {"creative":"/ci/1/ads/a/index.html","name":"a-index.html","findings":[{"id":"dialog"}]},
    {"creative":"/ci/1/ads/b/index.html","name":"b-index.html","findings":[{"id":"crash"}]}]})");
  const Baseline baseline(file);
  const std::set<std::string> crash{"crash"}, none;
  EXPECT_EQ(baseline.of("/ci/2/ads/b/index.html", "b-index.html"), crash);
  EXPECT_EQ(baseline.of("./b/index.html", "x"), crash);
  EXPECT_EQ(baseline.of("/ci/2/ads/b/index.html"), crash);
  EXPECT_EQ(baseline.of("/ci/2/ads/c/index.html", "c-index.html"), none);  // of many, another
  EXPECT_EQ(baseline.of("other.html"), none);
  for (const char* wrong : {"[]", "{}"})
    EXPECT_THROW(Baseline(folder.write("baseline.json", wrong)), UsageError);
  EXPECT_THROW(checkId("dialogue"), UsageError);
}

TEST(Report, HoldsWhateverACreativeSays) {
  const std::string evil = "</title>]]><script>alert('&\\u0001\\\"')</script>";
  const auto told = story(
      R"({"event":"console","level":"warn","text":")" + evil + "\"}\n" + R"({"event":"dialog","text":")" +
      evil + "\"}\n" + R"({"event":"failure","line":3,"text":")" + evil + "\"}\n" +
      R"({"event":"resource","url":"http://a/?)" + evil + R"(","start":1,"duration":2,"t":3})");
  const Tolerance tolerance{.allowed = {}, .known = {}, .failsFrom = Severity::Error};
  const auto findings = judge(told, tolerance);
  std::vector<JSON::Object> requests;
  for (const auto* request : told.of("resource")) requests.push_back(*request);
  const ReportMatter matter{
      "<script>\x01\xff.html", "390x844", 1, 1.7e9, told, findings, tolerance, requests, ""};
  const auto page = htmlOf(matter);
  EXPECT_EQ(page.find("<script"), std::string::npos);
  EXPECT_EQ(page.find("]]>"), std::string::npos);

  const auto junit = junitOf(matter);
  const GMarkupParser nothing{};
  GMarkupParseContext* parser = g_markup_parse_context_new(&nothing, GMarkupParseFlags{}, nullptr, nullptr);
  EXPECT_TRUE(
      g_markup_parse_context_parse(parser, junit.data(), static_cast<gssize>(junit.size()), nullptr) &&
      g_markup_parse_context_end_parse(parser, nullptr))
      << junit;
  g_markup_parse_context_free(parser);
  EXPECT_NE(junit.find("failures=\"4\""), std::string::npos) << junit;  // the step, dialog, http, not loaded

  const auto har = harOf(matter);
  const auto& entry = *listIn(objectIn(har, "log"), "entries")[0].object();
  EXPECT_EQ(textIn(entry, "startedDateTime"), "2023-11-14T22:13:20.001Z");
  EXPECT_EQ(textIn(entry, "pageref"), textIn(*listIn(objectIn(har, "log"), "pages")[0].object(), "id"));
}

}  // namespace
}  // namespace velto::preview
