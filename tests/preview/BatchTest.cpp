// Many creatives: which are played, how, and what the joined report says of them. A script stands in for the program.
#include <gtest/gtest.h>

#include <filesystem>

#include "../support/Folder.h"
#include "preview/Batch.h"
#include "preview/BatchPage.h"

namespace velto::preview {
namespace {

using test::TemporaryFolder;
using test::textOf;

// Ends as the creative's name says.
constexpr char player[] = R"(#!/bin/sh
while [ "$1" != -- ]; do case $1 in --report=*) out=${1#*=};; esac; shift; done
echo '{"event":"failure","text":"it did & stay"}'
case $2 in
  *hang*) exec sleep 1000 ;;
  *crash*) echo 'terribly <sorry>' >&2; kill -SEGV $$ ;;
  *wrong*) echo 'velto-preview: no such step' >&2; exit 2 ;;
  *heavy*) code=1 finding='{"id":"too-heavy","severity":"error","text":"5 MB & more"}' ;;
esac
echo "{\"creative\":\"$(basename "$2")\",\"code\":${code-0},\"findings\":[$finding]}" >"$out/findings.json"
exit ${code-0}
)";

class BatchTest : public testing::Test {
 protected:
  BatchTest() {
    folder_.write("player", player);
    std::filesystem::permissions(folder_.path("player"), std::filesystem::perms::owner_all);
    for (const char* file : {"ads/b/index.html", "ads/b/inner.html", "ads/a crash.html", "ads/fine.html",
                             "ads/fine.steps", "ads/hang.htm", "ads/heavy.html", "ads/text.txt"})
      folder_.write(file, "");
  }

  std::vector<BatchItem> items(const std::string& shard = "1/1") const {
    return batchOf(*parseArguments({"--all", folder_.path("ads"), "--report=x", "--shard", shard}));
  }
  std::vector<BatchResult> play(const std::vector<BatchItem>& items, const std::string& report, int jobs) {
    told_.clear();
    Batch batch({.program = folder_.path("player"),
                 .options = {},
                 .folder = report,
                 .jobs = jobs,
                 .timeLimit = std::chrono::seconds(2)},
                [this](const BatchResult& result) { told_.push_back(result.name); });
    auto results = batch.play(items);
    writeReport(report, results);
    return results;
  }

  const TemporaryFolder folder_;
  std::vector<std::string> told_;
};

TEST_F(BatchTest, PlaysAFolderOrAListInOneOrder) {
  std::vector<std::string> names;
  for (const auto& item : items()) names.push_back(item.name);
  EXPECT_EQ(names, (std::vector<std::string>{"a-crash.html", "b-index.html", "fine.html", "hang.htm",
                                             "heavy.html"}));
  EXPECT_EQ(items()[2].options, std::vector<std::string>{"--steps=" + folder_.path("ads/fine.steps")});
  EXPECT_EQ(items("2/3"), (std::vector<BatchItem>{items()[1], items()[4]}));

  const auto list = folder_.write(
      "list", "# of the week\n\nads/fine.html --size '300x250'\nads-fine.html\nhttp://x/?a=b\nindex.html\n");
  const auto listed = batchOf(*parseArguments({"--all", list, "--report=x"}));
  ASSERT_EQ(listed.size(), 4u);
  EXPECT_EQ(listed[1], (BatchItem{folder_.path("ads/fine.html"),
                                  "ads-fine.html-2",
                                  {"--steps=" + folder_.path("ads/fine.steps"), "--size", "300x250"}}));
  EXPECT_EQ(listed[2].name, "http---x--a-b");
  EXPECT_EQ(listed[3].name, "index.html-2");  // beside the summary

  folder_.write("ads/spot.xml", "<?xml version=\"1.0\"?>\n<vast>");
  folder_.write("ads/feed.xml", "<rss/>");
  EXPECT_EQ(items().back(), (BatchItem{folder_.path("ads/spot.xml"), "spot.xml", {}, true}));
  folder_.write("ads/spot.steps", "");
  EXPECT_EQ(items().back().options, std::vector<std::string>{"--steps=" + folder_.path("ads/spot.steps")});
  folder_.write("ads/spot.html", "");  // whose they are then
  EXPECT_EQ(items().back().options, std::vector<std::string>{});
  folder_.write("ads/spot.xml.steps", "");
  EXPECT_EQ(items().back().options,
            std::vector<std::string>{"--steps=" + folder_.path("ads/spot.xml.steps")});
  const auto spots = folder_.write("spots", "--vast http://x/?vast --size 640x360\n");
  EXPECT_EQ(batchOf(*parseArguments({"--all", spots, "--report=x"})),
            (std::vector<BatchItem>{{"http://x/?vast", "http---x--vast", {"--size", "640x360"}, true}}));
  folder_.write("list", "a 'b\n");
  for (const auto& path : {list, folder_.path("gone"), folder_.path("ads/b/none")})
    EXPECT_THROW(batchOf(*parseArguments({"--all", path, "--report=x"})), UsageError) << path;
}

TEST_F(BatchTest, NoCreativeIsTheEndOfTheOthers) {
  auto all = items();
  all.push_back({"wrong.html", "wrong.html", {}});
  const auto results = play(all, folder_.path("report"), 3);
  ASSERT_EQ(results.size(), 6u);
  EXPECT_EQ(told_, (std::vector<std::string>{"a-crash.html", "b-index.html", "fine.html", "hang.htm",
                                             "heavy.html", "wrong.html"}));
  const std::vector<std::string> ids{"play-crashes", "", "", "play-hangs", "too-heavy", "play-refused"};
  for (size_t i = 0; i < ids.size(); ++i)
    EXPECT_EQ(idsOf(results[i]), ids[i].empty() ? std::vector<std::string>() : std::vector{ids[i]})
        << told_[i];
  EXPECT_EQ(codeOf(results), 1);
  EXPECT_EQ(codeOf({results[5]}), 2);
  EXPECT_EQ(codeOf({results[1], results[2]}), 0);
  EXPECT_EQ(textOf(folder_.path("report/hang.htm/events.jsonl")),
            "{\"event\":\"failure\",\"text\":\"it did & stay\"}\n");

  const auto junit = textOf(folder_.path("report/junit.xml"));
  EXPECT_NE(junit.find("tests=\"6\" failures=\"1\" errors=\"3\""), std::string::npos) << junit;
  EXPECT_NE(junit.find("it did &amp; stay\nerror too-heavy: 5 MB &amp; more"), std::string::npos) << junit;
  EXPECT_NE(textOf(folder_.path("report/a-crash.html/findings.json")).find("terribly <sorry>"),
            std::string::npos);
  EXPECT_NE(textOf(folder_.path("report/index.html")).find("6 creatives, 4 failed"), std::string::npos);
  EXPECT_NE(textOf(folder_.path("report/a-crash.html/report.html")).find("terribly &lt;sorry&gt;"),
            std::string::npos);
  // Where a creative stands there is no room for its report; where a report stands there is.
  EXPECT_THROW(play(all, folder_.path("ads"), 1), UsageError);
  EXPECT_TRUE(std::filesystem::is_regular_file(folder_.path("ads/fine.html")));
  EXPECT_NO_THROW(makeRoom(folder_.path("report"), {"fine.html", "hang.htm"}));
}

// Whatever folder the earlier run was in.
TEST_F(BatchTest, PlaysThatFailMayBeAllowedOrKnown) {
  const Baseline baseline(folder_.write("known.json", R"({"creatives":[
    {"creative":"/elsewhere/a crash.html","name":"a-crash.html","findings":[{"id":"play-crashes"}]},
    {"creative":"/elsewhere/heavy.html","name":"heavy.html","findings":[{"id":"too-heavy"}]}]})"));
  Batch batch({.program = folder_.path("player"),
               .options = {"--allow", "play-refused"},
               .folder = folder_.path("report"),
               .baseline = baseline},
              [](const BatchResult&) {});
  const auto results = batch.play({items()[0], {"wrong.html", "wrong.html", {}}, items()[4]});
  ASSERT_EQ(results.size(), 3u);
  EXPECT_EQ(codeOf({results[0], results[1]}), 0);
  EXPECT_EQ(idsOf(results[0]), std::vector<std::string>{"play-crashes"});
  EXPECT_EQ(textOfMember(findingsOf(results[0])[0], "help"), "docs/findings.md#play-crashes");
  EXPECT_EQ(idsOf(results[1]), std::vector<std::string>{});
  // A play judges itself by what is handed to it.
  EXPECT_EQ(Baseline(folder_.path("report/heavy.html/baseline.json")).of(folder_.path("ads/heavy.html")),
            std::set<std::string>{"too-heavy"});
  EXPECT_EQ(
      batchOf(*parseArguments({"--all", folder_.path("ads"), "--report=x", "--allow=play-hangs"})).size(),
      5u);
}

TEST_F(BatchTest, ShardsJoinedAreTheReportOfAll) {
  auto all = items();
  std::erase_if(all, [](const auto& item) { return item.name == "hang.htm"; });
  play(all, folder_.path("whole"), 2);
  std::vector<std::string> shards;
  for (const size_t first : {1u, 0u}) {  // in whatever order
    shards.push_back(folder_.path("shard" + std::to_string(first)));
    play({all[first], all[first + 2]}, shards.back(), 1);
  }
  EXPECT_EQ(mergeReports(shards, folder_.path("joined")), 1);
  for (const char* file : {"findings.json", "junit.xml", "index.html", "heavy.html/findings.json"})
    EXPECT_EQ(textOf(folder_.path(std::string("joined/") + file)),
              textOf(folder_.path(std::string("whole/") + file)))
        << file;
  folder_.write("foreign/findings.json", R"({"creatives":[{"name":"../x"}]})");
  for (const auto& wrong : {shards[0], folder_.path("foreign"), folder_.path("joined"), folder_.path("none")})
    EXPECT_THROW(mergeReports({shards[0], wrong}, folder_.path("joined")), UsageError) << wrong;
}

}  // namespace
}  // namespace velto::preview
