// When breaks are due, on the headless platform.
#include <gtest/gtest.h>
#include <velto/headless/VeltoHeadless.h>

#include <chrono>
#include <optional>
#include <set>
#include <string>
#include <tuple>

#include "Schedule.h"

namespace {

std::string due(const velto::VMAPDocument& schedule, std::optional<double> duration) {
  std::string all;
  for (const auto& one : player::breaksOf(schedule, duration, {30, 45}))
    all += one.plan->id + (one.isAtEnd() ? "" : std::to_string(static_cast<int>(one.at))) + " ";
  return all;
}

TEST(ScheduleTest, BreaksComeInTheOrderOfTheFilm) {
  const auto schedule = velto::VMAPDocument::read(
      R"(<VMAP version="1.0"><AdBreak timeOffset="end" breakId="end"/><AdBreak timeOffset="50%" breakId="half"/>
<AdBreak timeOffset="00:00:10" breakId="often" repeatAfter="00:00:20"/><AdBreak timeOffset="#2" breakId="second"/>
<AdBreak timeOffset="#3" breakId="none"/><AdBreak timeOffset="100%" breakId="whole"/><AdBreak timeOffset="00:02:00" breakId="late"/><AdBreak timeOffset="00:01:00" breakId="last"/>
<AdBreak timeOffset="start" breakId="start"/></VMAP>)");
  EXPECT_EQ(due(schedule, 60), "start0 often10 half30 often30 second45 often50 whole last end ");
  EXPECT_EQ(due(schedule, std::nullopt), "start0 often10 second45 last60 late120 whole end ") << "a stream";
}

TEST(ScheduleTest, IsFetchedAndItsServersAreTold) {
  const auto platform = velto::headless::Platform::install();
  platform->urlSession().respond("https://s/good", {.body = "<VMAP><AdBreak timeOffset='start'/></VMAP>"});
  platform->urlSession().respond("https://s/bad", {.status = 404, .body = "<VMAP/>"});
  std::multiset<std::string> heard;
  const auto fetch = [&](const std::string& address) {
    return player::fetchSchedule(address, [&](const velto::VMAPDocument& document) {
      heard.insert(document.error ? "none" : std::to_string(document.breaks.size()));
    });
  };
  auto handles = std::make_tuple(fetch("https://s/good"), fetch("https://s/bad"), fetch("no address"));
  fetch("https://s/good").cancel();
  EXPECT_TRUE(heard.empty());
  platform->advance(std::chrono::seconds(1));
  EXPECT_EQ(heard, (std::multiset<std::string>{"1", "none", "none"}));
  player::tell({"https://t/[ERRORCODE]/[MEDIAPLAYHEAD]"}, 61.5, velto::VMAPError::AdDocument);
  platform->runUntilIdle();
  EXPECT_EQ(platform->urlSession().requests().back().url.path(), "/1005/00%3A01%3A01.500");
}

}  // namespace
