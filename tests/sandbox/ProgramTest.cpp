// The velto-sandbox program as a process: its exits, its lines, its signals.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "../support/Program.h"
#include "Support.h"

namespace velto::sandbox {
namespace {

test::Process program(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), SANDBOX_PROGRAM);
  return test::Process(std::move(arguments), true);
}

TEST(Program, RefusesWrongUseWithOneLineAndExitCode2) {
  const TemporaryFolder folder;
  const std::string bad = folder.write("bad.json", "{\"rules\": 1}");
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{"--bogus"}, "unknown option \"--bogus\" (see --help)"},
      {{"--scenario", bad, "--data", folder.path()},
       bad + ": rules: expected a list with at least one element"},
      {{"--serve", folder.path("none"), "--data", folder.path()}, folder.path("none") + ": no such folder"},
  };
  for (const auto& [arguments, expected] : cases) {
    auto process = program(arguments);
    EXPECT_EQ(process.line(), "velto-sandbox: " + expected);
    EXPECT_EQ(process.line(), std::nullopt);
    EXPECT_EQ(process.exitCode(), 2);
  }
}

TEST(Program, SaysWhereItListensLogsAndEndsOnSignals) {
  const TemporaryFolder folder;
  for (const int number : {SIGINT, SIGTERM}) {
    auto process = program({"--data", folder.path(), "--log", folder.path("log")});
    const auto line = nlohmann::json::parse(process.line().value());
    EXPECT_EQ(line["event"], "listening");
    EXPECT_GT(line["port"], 0);
    EXPECT_EQ(line["ca"], folder.path("ca.pem"));
    process.signal(number);
    EXPECT_EQ(process.exitCode(), 0);
  }
  EXPECT_TRUE(std::filesystem::exists(folder.path("log")));
}

}  // namespace
}  // namespace velto::sandbox
