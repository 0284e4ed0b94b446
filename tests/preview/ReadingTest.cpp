// What velto-preview is given: arguments, steps, markup.
#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <vector>

#include "preview/Arguments.h"
#include "preview/Creative.h"
#include "preview/Steps.h"

namespace velto::preview {
namespace {

Arguments parsed(std::vector<std::string> words) {
  words.insert(words.begin(), "velto-preview");
  std::vector<char*> pointers;
  for (auto& word : words) pointers.push_back(word.data());
  return parseArguments(static_cast<int>(pointers.size()), pointers.data());
}

std::string refusal(const std::function<void()>& work) {
  try {
    work();
  } catch (const UsageError& error) {
    return error.what();
  }
  return "";
}

std::vector<Step> steps(const std::string& text) {
  const std::string file = ::testing::TempDir() + "steps";
  std::ofstream(file) << text;
  return readSteps(file);
}

TEST(PreviewArguments, AreTakenOrRefusedWithOneLine) {
  const auto a =
      parsed({"--interstitial", "--size", "300x250.5", "--position", "top", "--timeout", "2.5", "ad.html"});
  EXPECT_TRUE(a.interstitial && a.atTop);
  EXPECT_EQ(a.size, (CGSize{300, 250.5}));
  EXPECT_EQ(a.timeout.count(), 2500);
  EXPECT_EQ(a.creative, "ad.html");
  for (const auto& words : std::vector<std::vector<std::string>>{{},
                                                                 {"a", "b"},
                                                                 {"--size", "3", "a"},
                                                                 {"--size", "0x5", "a"},
                                                                 {"--size", "3x5x", "a"},
                                                                 {"--size"},
                                                                 {"--position", "left", "a"},
                                                                 {"--timeout", "-1", "a"},
                                                                 {"--timeout", "nan", "a"},
                                                                 {"--else", "a"}})
    EXPECT_NE(refusal([&] { parsed(words); }), "") << words.size();
}

TEST(PreviewSteps, AreJudgedBeforeTheyArePlayed) {
  const auto read =
      steps("# first\n\n  wait 20\r\nwait-for event ready 500\n\teval  a  + b \nexpect frame 0 1.5 2 -3\n");
  ASSERT_EQ(read.size(), 4U);
  EXPECT_EQ(read[0].verb, "wait");
  EXPECT_EQ(read[0].line, 3);
  EXPECT_EQ(read[1].verb, "wait-for event");
  EXPECT_EQ(read[1].words, (std::vector<std::string>{"ready", "500"}));
  EXPECT_EQ(read[2].rest, "a  + b");
  EXPECT_EQ(numberOf(read[3].words[3]), -3);
  for (const std::string wrong :
       {"jump", "wait", "wait x", "wait 1 2", "wait-for", "wait-for time 3", "tap 1", "eval", "rotate up",
        "volume 1.5", "screenshot ../x", "expect", "expect count ready"}) {
    const auto line = refusal([&] { steps("hide\n" + wrong + "\n"); });
    EXPECT_NE(line.find(":2: "), std::string::npos) << wrong;
  }
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
}

}  // namespace
}  // namespace velto::preview
