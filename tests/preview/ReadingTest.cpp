// What velto-preview is given: arguments, steps, markup.
#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <iterator>
#include <sstream>
#include <vector>

#include "preview/Arguments.h"
#include "preview/Creative.h"
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

std::vector<Step> steps(const std::string& text) {
  const std::string file = ::testing::TempDir() + "steps";
  std::ofstream(file) << text;
  return readSteps(file);
}

TEST(PreviewArguments, AreRefusedWithOneLine) {
  for (const char* line : {"", "a b", "--size 3 a", "--size 0x5 a", "--size 3x5x a", "--size",
                           "--position left a", "--timeout -1 a", "--timeout nan a", "--else a"}) {
    std::istringstream words(line);
    const std::vector<std::string> list{std::istream_iterator<std::string>(words), {}};
    EXPECT_NE(refusal([&] { parsed(list); }), "") << line;
  }
}

TEST(PreviewSteps, AreJudgedBeforeTheyArePlayed) {
  const auto read = steps("# first\n\n  wait 20\r\n\teval  a  + b \n");
  ASSERT_EQ(read.size(), 2U);
  EXPECT_EQ(read[0].line, 3);
  EXPECT_EQ(read[1].rest, "a  + b");
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
