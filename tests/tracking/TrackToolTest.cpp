// velto-track on a store that the Linux platform wrote.
#include "velto/gtk/VeltoGtk.h"
#include "velto/platform/NSUserDefaults.h"
#include "velto/platform/Platform.h"

#include <gtest/gtest.h>

#include <map>

#include "../support/Program.h"
#include "sandbox/TrackIdentifier.h"

namespace velto {
namespace {

test::Outcome track(std::vector<std::string> words) {
  words.insert(words.begin(), TRACK_PROGRAM);
  return test::run(std::move(words), true);
}

class TrackToolTest : public testing::Test {
 protected:
  TrackToolTest() { gtk::install({.applicationIdentifier = "org.example.track", .dataFolder = folder}); }
  ~TrackToolTest() override { gtk::uninstall(); }
  static std::string identifier(const std::string& time, const std::string& arguments) {
    const auto text = "3:" + time + ":3:ios:4.0.10:n|ios|1|p|m|en_US|en||5|" + time + ":" + arguments;
    return sandbox::wrapTrackText("abc", sandbox::wrapTrackText("def", text));
  }
  std::map<std::string, std::filesystem::file_time_type> files() {
    std::map<std::string, std::filesystem::file_time_type> found;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
      found[entry.path().filename()] = entry.last_write_time();
    return found;
  }

  const test::TemporaryFolder made;
  const std::filesystem::path folder = made.path();
};

TEST_F(TrackToolTest, TellsWhatWaitsWhileTheApplicationRunsAndAfterwards) {
  auto& store = Platform::current().standardUserDefaults();
  store.setObject("kVeltoTrackIdentifierKey",
                  DefaultsDictionary{{identifier("1700000100", "b:p:o\n"), "click"},
                                     {identifier("1700000000", "key"), "install"},
                                     {"?", "click"}});
  for (const bool running : {true, false}) {
    if (!running) gtk::uninstall();
    const auto before = files();
    const auto list = track({"list", "--store", folder});
    EXPECT_EQ(list.code, 0) << list.output;
    EXPECT_TRUE(list.output.starts_with("click  cannot be read: track identifier, outer wrapping: "))
        << list.output;
    EXPECT_TRUE(
        list.output.ends_with("\ninstall  2023-11-14T22:13:20Z  key\nclick  2023-11-14T22:15:00Z  b:p:o?\n"))
        << list.output;
    EXPECT_EQ(track({"count", "--store", folder / "defaults.sqlite3"}).output,
              "click 2\ninstall 1\ntotal 3\n");
    const auto exported = track({"--store", folder, "export"}).output;
    EXPECT_NE(
        exported.find(
            R"({"type":"click","time":"1700000100","os":"ios","version":"4.0.10","device":["n","ios",)"),
        std::string::npos)
        << exported;
    if (!running) {
      EXPECT_EQ(files(), before) << "it only reads";
    }
  }
}

TEST_F(TrackToolTest, BadArgumentsAndStoresAreOneLine) {
  const auto broken =
      made.write("broken", "this is no database, however long one reads in it, and it never will be");
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
      {{}, "needs a command"},
      {{"erase", "--store", "x"}, "unknown argument \"erase\""},
      {{"list", "--store", "/nowhere/x"}, "/nowhere/x: no such store"},
      {{"list", "--store", broken}, broken + ": "}};
  for (const auto& [words, expected] : cases) {
    const auto outcome = track(words);
    EXPECT_EQ(outcome.code, 2);
    EXPECT_TRUE(outcome.output.starts_with("velto-track: " + expected)) << outcome.output;
    EXPECT_EQ(std::count(outcome.output.begin(), outcome.output.end(), '\n'), 1);
  }
}

}  // namespace
}  // namespace velto
