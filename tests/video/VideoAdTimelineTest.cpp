// The story of a video ad's load: what is written of its way, of its files and of those who were told, and how it ends.
#include "velto/timeline/LoadRecord.h"

#include <map>
#include <set>

#include "VideoAdFixture.h"

namespace velto::test {
namespace {

using Kind = VeltoTimelineKind;
using Why = VeltoAdEndReason;

struct Ends : VeltoAdTimelineObserver {
  std::vector<Why> ends;
  void veltoAdTimelineDidEnd(const VeltoAdTimeline& story) override { ends.push_back(*story.end); }
};

class VideoAdTimelineTest : public VideoAdTest {
 protected:
  VeltoAdTimeline last() { return ad->veltoAdTimeline().back(); }
  // A word an entry, of those that happen once or in an order; without times.
  static std::string told(const VeltoAdTimeline& story, const std::set<Kind>& without = {}) {
    std::string lines;
    for (const auto& entry : story.entries) {
      if (without.contains(entry.kind)) continue;
      auto fields = entry.fields();
      lines += std::string(nameOf(entry.kind));
      for (const auto& [name, value] : fields)
        lines += " " + (value.string() ? *value.string() : shortNumber(value.number().value()));
      lines += "\n";
    }
    return lines;
  }
  static std::string shortNumber(double number) {
    auto text = std::to_string(number);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.ends_with('.')) text.pop_back();
    return text;
  }
};

TEST_F(VideoAdTimelineTest, TellsTheWayFromWrapperToEnd) {
  platform->urlSession().respond("https://ads/",
                                 {.body = "<VAST version=\"4.2\"><Ad><Wrapper><VASTAdTagURI>https://in/"
                                          "</VASTAdTagURI></Wrapper></Ad></VAST>"});
  platform->urlSession().respond("https://in/",
                                 {.body = document({{.files = file("missing.webm") + file("a.webm")}})});
  platform->media().setVideo("https://v/missing.webm", {.loadFails = true});
  ad->setPlacement("before the film");
  ad->load("https://ads/");
  platform->runUntilIdle();
  ASSERT_TRUE(ad->playIn(host));
  platform->advance(1min);
  const auto story = last();
  EXPECT_EQ(story.placement, "before the film");
  EXPECT_EQ(story.end, Why::VideoOver);
  EXPECT_EQ(told(story, {Kind::AddressTold, Kind::Visible}),
            "asked application\n"
            "document-asked 0 1\n"
            "document-answered 1 0 1\n"
            "document-asked 1 2\n"
            "document-answered 1 1 2\n"
            "ready 1 0\n"
            "show-asked application\n"
            "file-tried 1 360 video/webm 640\n"
            "video-failed 1 401\n"
            "file-tried 1 360 video/webm 640\n"
            "file-chosen 1 360 video/webm 640\n"
            "first-picture 1 0\n"
            "video-event 1 loaded\n"
            "video-event 1 impression\n"
            "video-event 1 creativeView\n"
            "video-event 1 start\n"
            "appeared\n"
            "video-event 1 viewable\n"
            "video-event 1 firstQuartile\n"
            "video-event 1 midpoint\n"
            "video-event 1 thirdQuartile\n"
            "video-event 1 complete\n"
            "disappeared\n");
  EXPECT_EQ(story.first(Kind::FirstPicture)->seconds, story.first(Kind::Appeared)->seconds);
  // Each address once, with what its server said; that of the last event after the load's end.
  std::string addresses;
  for (const auto& entry : story.entries)
    if (const auto* one = std::get_if<VeltoVideoTold>(&entry.detail))
      addresses += one->event + std::to_string(one->status) + " ";
  EXPECT_EQ(addresses,
            "loaded200 impression200 start200 viewable200 firstQuartile200 midpoint200 thirdQuartile200 "
            "complete200 ");
  EXPECT_GE(story.entries.back().seconds, story.endSeconds);
  EXPECT_EQ(writeJSON(story.json(), false)->find("https"), std::string::npos) << "no address";
}

TEST_F(VideoAdTimelineTest, TellsOfTheNetworkAndStaysBounded) {
  platform->urlSession().enqueue("https://t/a-loaded", headless::Answer::offline());
  platform->urlSession().enqueue("https://t/a-impression", headless::Answer::silence());
  std::string many;
  for (int i = 0; i < 300; ++i) many += "<Impression>https://t/more</Impression>";
  play({{.more = many}});
  platform->advance(1min);
  const auto story = last();
  std::map<std::string, int> results;
  for (const auto& entry : story.entries)
    if (entry.kind == Kind::AddressTold)
      ++results[*entry.fields().at("event").string() + " " + *entry.fields().at("result").string()];
  EXPECT_EQ(results["loaded waits"], 1);
  EXPECT_EQ(results["impression arrived"], static_cast<int>(PlacementRecord::mostOfVideo) - 1);
  EXPECT_LE(story.entries.size(), 200U);
  EXPECT_GT(story.leftOut, 150U);
}

TEST_F(VideoAdTimelineTest, EachEndHasItsReason) {
  const auto ended = [&] { return last().end; };
  ad->loadDocument("<VAST version=\"4.2\"/>");
  platform->runUntilIdle();
  EXPECT_EQ(ended(), Why::VideoWithoutAd);
  ad->loadDocument("<VAST");
  platform->runUntilIdle();
  EXPECT_EQ(ended(), Why::VideoDocumentFailed);
  ad->load("no address");
  platform->runUntilIdle();
  EXPECT_EQ(ended(), Why::VideoDocumentFailed);
  platform->media().setVideo("https://v/missing.webm", {.loadFails = true});
  play({{.files = file("missing.webm")}});
  EXPECT_EQ(ended(), Why::VideoFileFailed);
  load({{}});
  load({{}});
  EXPECT_EQ(ad->veltoAdTimeline().at(4).end, Why::NeverShown);
  ad->stop();
  EXPECT_EQ(ended(), Why::Removed);
  load({{}});
  host->removeFromSuperview();
  EXPECT_FALSE(ad->playIn(host));
  ad->stop();
  EXPECT_EQ(ended(), Why::WindowNotOnScreen) << "why it was never shown";
  window->view().addSubview(host);
  platform->runUntilIdle();
  play({{}});
  ad->stop();
  platform->runUntilIdle();
  EXPECT_EQ(ended(), Why::Removed);
  play({{.skip = "skipoffset=\"0%\""}});
  EXPECT_TRUE(ad->skip());
  platform->runUntilIdle();
  EXPECT_EQ(ended(), Why::VideoOver);
  const auto observed = std::make_shared<Ends>();
  ad->addTimelineObserver(observed);
  play({{}});
  ad.reset();
  platform->runUntilIdle();
  EXPECT_EQ(observed->ends, std::vector{Why::ControllerGone});
}

}  // namespace
}  // namespace velto::test
