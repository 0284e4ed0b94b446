// What velto-preview is given: arguments, steps, markup.
#include <gtest/gtest.h>

#include <functional>
#include <iterator>
#include <sstream>
#include <vector>

#include "../support/Folder.h"
#include "preview/Arguments.h"
#include "preview/Creative.h"
#include "preview/RecordedAnswer.h"
#include "preview/Steps.h"

namespace velto::preview {
namespace {

Arguments parsed(const std::vector<std::string>& words) {
  return parseArguments(words).value();
}

std::string refusal(const std::function<void()>& work) {
  try {
    work();
  } catch (const UsageError& error) {
    return error.what();
  }
  return "";
}

std::vector<Step> steps(const test::TemporaryFolder& folder, const std::string& text) {
  return readSteps(folder.write("steps", text));
}

TEST(PreviewArguments, AreRefusedWithOneLine) {
  for (const char* line :
       {"", "a b", "--size 3 a", "--size 0x5 a", "--size 3x5x a", "--size", "--position left a",
        "--timeout -1 a", "--timeout nan a", "--else a", "--shard 3/2 --report r a b", "--jobs 1.5 a",
        "--merge", "--merge --all a --report r b", "a b --report r --out o", "--vast", "--vast a b",
        "--vast a --from-answer", "--vast a --position=top"}) {
    std::istringstream words(line);
    const std::vector<std::string> list{std::istream_iterator<std::string>(words), {}};
    EXPECT_NE(refusal([&] { parsed(list); }), "") << line;
  }
}

TEST(PreviewArguments, OfAVideoAdFitItsScreen) {
  const auto usual = parsed({"--vast", "ad.xml", "--device", "phone-small"});
  EXPECT_TRUE(usual.isVideoAd);
  EXPECT_EQ(usual.creative, "ad.xml");
  EXPECT_EQ(usual.size, (CGSize{320, 180}));
  EXPECT_EQ(parsed({"--vast", "ad.xml", "--size", "200x100"}).size, (CGSize{200, 100}));
}

TEST(PreviewSteps, AreJudgedBeforeTheyArePlayed) {
  const test::TemporaryFolder folder;
  const auto read = steps(folder, "# first\n\n  wait 20\r\n\teval  a  + b \n");
  ASSERT_EQ(read.size(), 2U);
  EXPECT_EQ(read[0].line, 3);
  EXPECT_EQ(read[1].rest, "a  + b");
  for (const std::string wrong : {"jump",
                                  "wait",
                                  "wait x",
                                  "wait 1 2",
                                  "wait nan",
                                  "wait -1",
                                  "scroll 1 1 0",
                                  "wait-for",
                                  "wait-for time 3",
                                  "tap 1",
                                  "eval",
                                  "rotate up",
                                  "volume 1.5",
                                  "screenshot ../x",
                                  "screenshot x compare",
                                  "screenshot x compare y z",
                                  "expect",
                                  "expect count ready",
                                  "expect no finding none",
                                  "clock 30s",
                                  "clock +1y",
                                  "clock +1e9h",
                                  "slow 5g",
                                  "set x",
                                  "include /none",
                                  "include steps"}) {
    const auto line = refusal([&] { steps(folder, "hide\n" + wrong + "\n"); });
    EXPECT_NE(line.find(":2: "), std::string::npos) << wrong;
  }
}

TEST(PreviewSteps, OfPagesAreNotForVideoAds) {
  const test::TemporaryFolder folder;
  const auto of = [&](const std::string& text) {
    return refusal([&] { refuseStepsOfPages(steps(folder, text), "steps"); });
  };
  EXPECT_EQ(of("skip\nvolume 0\ntap 1 1\nwait-for event told/start\nexpect open https://a\n"), "");
  EXPECT_EQ(of("skip\neval 1\n"), "steps:2: \"eval\" is for pages, and a video ad is none");
}

TEST(PreviewSteps, AreMadeOfOtherFilesAndVariables) {
  const test::TemporaryFolder folder;
  const auto more = folder.write("more", "eval `${unknown}${X}`\n");
  const auto read =
      steps(folder, "set X a ${X}\nset Y ${X}b\ninclude more\neval ${Y}${X\nscreenshot a compare b 2\n");
  ASSERT_EQ(read.size(), 3U);
  EXPECT_EQ(read[0].rest, "`${unknown}a ${X}`");
  EXPECT_EQ(read[0].file, more);
  EXPECT_EQ(read[1].rest, "a ${X}b${X");
  EXPECT_EQ(read[2].words[2], folder.path("b"));
  EXPECT_EQ(durationOf("+1.5m"), std::chrono::seconds(90));
}

TEST(PreviewAnswer, IsReadOrRefusedWithOneLine) {
  const test::TemporaryFolder folder;
  const auto read = [&](const std::string& text) { return readAnswers(folder.write("answer", text)); };
  const auto answers =
      read(R"([{"headers": {"X-A": 1, "content-length": "9"}, "body": {"items": []}}, {"status": 204}])");
  ASSERT_EQ(answers.size(), 2U);
  EXPECT_EQ(answers[0].headers, (std::vector<std::pair<std::string, std::string>>{{"X-A", "1"}}));
  EXPECT_EQ(answers[0].body, "{\"items\":[]}");
  EXPECT_EQ(answers[1].status, 204);
  for (const char* wrong : {"", "[]", "7", "[7]", "{\"status\": 7}", "{\"status\": 1e300}",
                            "{\"headers\": {\"a\": \"b\\r\\nc: d\"}}"})
    EXPECT_NE(refusal([&] { read(wrong); }), "") << wrong;
}

TEST(PreviewCreative, GetsABaseWhereItDisturbsNothing) {
  const std::string base = "<base href=\"http://a/?b&amp;c\">";
  for (const auto& [before, after] : std::vector<std::pair<std::string, std::string>>{
           {"<!DOCTYPE html><html><HEAD lang=x><title>",
            "<!DOCTYPE html><html><HEAD lang=x>" + base + "<title>"},
           {"<html>\n<body>", "<html>" + base + "\n<body>"},
           {"<!doctype html><header>", "<!doctype html>" + base + "<header>"},
           {"<p>", base + "<p>"},
           {"<head><base href='x'></head>", "<head><base href='x'></head>"}})
    EXPECT_EQ(withBase(before, "http://a/?b&c"), after);
  const test::TemporaryFolder folder;
  const auto file = folder.write("latin-1.html", "caf\xe9");
  EXPECT_EQ(refusal([&] { Creative creative(file); }), file + ": is not UTF-8");
}

}  // namespace
}  // namespace velto::preview
