// What holds for each of the commands as a program.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "../support/Folder.h"
#include "../support/Program.h"

namespace velto::test {
namespace {

std::vector<std::string> programs() {
  std::vector<std::string> found;
  std::istringstream paths(TOOLS);
  for (std::string path; std::getline(paths, path, ',');) found.push_back(path);
  return found;
}

class Tools : public testing::TestWithParam<std::string> {};

TEST_P(Tools, SayWhatTheyAreCalledWithOnOneScreen) {
  const auto help = run({GetParam(), "--help"}, true);
  EXPECT_EQ(help.code, 0);
  const std::string name = std::filesystem::path(GetParam()).filename();
  EXPECT_TRUE(help.output.starts_with("Usage: " + name + " ")) << help.output;
  std::istringstream lines(help.output);
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count) EXPECT_LE(line.size(), 80u) << line;
  EXPECT_LE(count, 24) << help.output;
  EXPECT_EQ(run({GetParam(), "--version"}, true).output, name + " " VELTO_VERSION "\n");

  // What follows the first letters is in the help, too; in all of it, where that is more than a screen.
  const bool hasMore = help.output.find("--help-all") != std::string::npos;
  const auto all = run({GetParam(), hasMore ? "--help-all" : "--help"}, true).output;
  std::string function = "_" + name;
  for (char& c : function)
    if (c == '-') c = '_';
  const auto completed =
      run({"bash", "-c",
           R"(source <("$0" --print-completion=bash) && COMP_WORDS=(x --) COMP_CWORD=1 && "$1" &&
                                 printf '%s\n' "${COMPREPLY[@]}")",
           GetParam(), function},
          true);
  std::istringstream words(completed.output);
  count = 0;
  for (std::string word; words >> word; ++count)
    EXPECT_NE(all.find("\n  " + word + " "), std::string::npos) << word;
  EXPECT_GE(count, 2) << completed.output;
  const auto manual = run({GetParam(), "--print-manual"}).output;
  EXPECT_NE(manual.find("\\fB\\-\\-version\\fR"), std::string::npos) << manual;
}

TEST_P(Tools, RefuseWhatTheyDoNotKnow) {
  for (const char* word : {"--else", "--help=5", "--print-completion=csh"}) {
    const auto refused = run({GetParam(), word}, true);
    EXPECT_EQ(refused.code, 2);
    EXPECT_TRUE(refused.output.starts_with(std::filesystem::path(GetParam()).filename().string() + ": "))
        << refused.output;
    EXPECT_EQ(std::count(refused.output.begin(), refused.output.end(), '\n'), 1) << refused.output;
  }
}

INSTANTIATE_TEST_SUITE_P(All, Tools, testing::ValuesIn(programs()), [](const auto& program) {
  std::string name = std::filesystem::path(program.param).filename();
  std::erase(name, '-');
  return name;
});

#ifdef PREVIEW_PROGRAM
TEST(Preview, TakesEverythingAwayWhenItIsToldToEnd) {
  const TemporaryFolder folder;
  Process process({"env", "-u", "DISPLAY", "-u", "WAYLAND_DISPLAY", "TMPDIR=" + folder.path(),
                   PREVIEW_PROGRAM, PREVIEW_CREATIVE, "--steps", PREVIEW_STEPS});
  ASSERT_TRUE(process.line());
  EXPECT_FALSE(std::filesystem::is_empty(folder.path()));
  for (int i = 0; i < 3; ++i) process.signal(SIGTERM);  // once more while it tidies
  EXPECT_EQ(process.exitCode(), 128 + SIGTERM);
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}
#endif

}  // namespace
}  // namespace velto::test
