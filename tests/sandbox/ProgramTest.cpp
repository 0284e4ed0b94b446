// The velto-sandbox program as a process: its exits, its lines, its signals.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "Support.h"

namespace velto::sandbox {
namespace {

class Process {
 public:
  explicit Process(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), SANDBOX_PROGRAM);
    std::vector<char*> words;
    words.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) words.push_back(argument.data());
    words.push_back(nullptr);
    int ends[2];
    if (pipe(ends) != 0) throw std::runtime_error("no pipe");
    id_ = fork();
    if (id_ == 0) {
      dup2(ends[1], STDOUT_FILENO);
      dup2(ends[1], STDERR_FILENO);
      close(ends[0]);
      execv(words[0], words.data());
      _exit(127);
    }
    close(ends[1]);
    output_ = fdopen(ends[0], "r");
  }
  ~Process() {
    if (id_ > 0) kill(id_, SIGKILL), waitpid(id_, nullptr, 0);
    fclose(output_);
  }
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  std::string line() {
    char text[4096] = "";
    return fgets(text, sizeof text, output_) ? text : "";
  }
  void signal(int number) const { kill(id_, number); }
  int exitCode() {
    int status = 0;
    waitpid(id_, &status, 0);
    id_ = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

 private:
  pid_t id_ = 0;
  FILE* output_ = nullptr;
};

TEST(Program, RefusesWrongUseWithOneLineAndExitCode2) {
  const TemporaryFolder folder;
  const std::string bad = folder.write("bad.json", "{\"rules\": 1}");
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{"--bogus"}, "unknown option \"--bogus\" (see --help)"},
      {{"--port"}, "--port: needs a value"},
      {{"--port", "65536"}, "--port: \"65536\" is not a number from 0 to 65535"},
      {{"--tracking", "a b"}, "--tracking: \"a b\" is not a host name"},
      {{"--scenario", bad, "--data", folder.path()},
       bad + ": rules: expected a list with at least one element"},
      {{"--serve", folder.path("none"), "--data", folder.path()}, folder.path("none") + ": no such folder"},
  };
  for (const auto& [arguments, expected] : cases) {
    Process process(arguments);
    EXPECT_EQ(process.line(), "velto-sandbox: " + expected + "\n");
    EXPECT_EQ(process.line(), "");
    EXPECT_EQ(process.exitCode(), 2);
  }
}

TEST(Program, SaysWhereItListensLogsAndEndsOnSignals) {
  const TemporaryFolder folder;
  for (const int number : {SIGINT, SIGTERM}) {
    Process process({"--data", folder.path(), "--log", folder.path("log")});
    const auto line = nlohmann::json::parse(process.line());
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
