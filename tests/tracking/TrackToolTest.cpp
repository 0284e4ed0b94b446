// velto-track on a store that the Linux platform wrote.
#include "velto/gtk/VeltoGtk.h"
#include "velto/platform/NSUserDefaults.h"
#include "velto/platform/Platform.h"

#include <gtest/gtest.h>

#include "../support/Program.h"
#include "sandbox/TrackIdentifier.h"

namespace velto {
namespace {

test::Outcome track(std::vector<std::string> words) {
  words.insert(words.begin(), TRACK_PROGRAM);
  return test::run(std::move(words), true);
}

TEST(TrackTool, TellsWhatWaitsWhileTheApplicationRunsAndAfterwards) {
  const auto identifier = [](const std::string& time, const std::string& arguments) {
    const auto text = "3:" + time + ":3:ios:4.0.10:n|ios|1|p|m|en_US|en||5|" + time + ":" + arguments;
    return sandbox::wrapTrackText("abc", sandbox::wrapTrackText("def", text));
  };
  const test::TemporaryFolder folder;
  gtk::install({.applicationIdentifier = "org.example.track", .dataFolder = folder.path()});
  Platform::current().standardUserDefaults().setObject(
      "kVeltoTrackIdentifierKey", DefaultsDictionary{{identifier("1700000100", "b:p:o\n"), "click"},
                                                     {identifier("1700000000", "key"), "install"},
                                                     {"?", "click"}});
  for (const bool running : {true, false}) {
    if (!running) gtk::uninstall();
    const auto file = folder.path("defaults.sqlite3");
    const auto before = test::textOf(file);
    const auto list = track({"list", "--store", folder.path()});
    EXPECT_EQ(list.code, 0);
    EXPECT_TRUE(
        list.output.starts_with("click  cannot be read: track identifier, outer wrapping: ") &&
        list.output.ends_with("\ninstall  2023-11-14T22:13:20Z  key\nclick  2023-11-14T22:15:00Z  b:p:o?\n"))
        << list.output;
    EXPECT_EQ(track({"count", "--store", file}).output, "click 2\ninstall 1\ntotal 3\n");
    const auto exported = track({"--store", folder.path(), "export"}).output;
    const auto click =
        R"({"type":"click","time":"1700000100","os":"ios","version":"4.0.10","device":["n","ios",)";
    EXPECT_NE(exported.find(click), std::string::npos) << exported;
    EXPECT_TRUE(running || test::textOf(file) == before) << "it only reads";
  }
  const auto broken = folder.write("broken", "this is no database, however long one reads in it");
  for (const auto& [words, expected] : std::vector<std::pair<std::vector<std::string>, std::string>>{
           {{}, "needs a command"},
           {{"erase", "--store", "x"}, "unknown argument \"erase\""},
           {{"list", "--store", "/nowhere/x"}, "/nowhere/x: no such store"},
           {{"list", "--store", broken}, broken + ": "}}) {
    const auto outcome = track(words);
    EXPECT_EQ(outcome.code, 2);
    EXPECT_TRUE(outcome.output.starts_with("velto-track: " + expected)) << outcome.output;
    EXPECT_EQ(outcome.output.find('\n'), outcome.output.size() - 1) << "one line";
  }
}

}  // namespace
}  // namespace velto
