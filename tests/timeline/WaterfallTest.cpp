// The chart of a load: where its time went, and why it has no ad.
#include "velto/timeline/Waterfall.h"

#include <gtest/gtest.h>

#include <cmath>

namespace velto {
namespace {

using Kind = VeltoTimelineKind;
using Why = VeltoAdEndReason;
using Entry = VeltoTimelineEntry;

constexpr double began = 1000;  // seconds; entries below are in milliseconds from there

Entry at(double ms, Kind kind, Entry::Detail detail = {}) {
  return {kind, began + ms / 1000, std::move(detail)};
}
std::vector<Entry> answered(VeltoAnswer answer) {
  return {at(0, Kind::Asked, VeltoAskedBy::Refresh), at(2, Kind::RequestBuilt, VeltoBytes{600}),
          at(3, Kind::Sent, VeltoConnection::Reused), at(60, Kind::FirstByte),
          at(64, Kind::Answered, answer)};
}
VeltoAdTimeline load(std::vector<Entry> entries, const std::vector<Entry>& more,
                     std::optional<Why> end = std::nullopt, double endMs = 0) {
  entries.insert(entries.end(), more.begin(), more.end());
  return {7, "home", std::move(entries), 0, end, began + endMs / 1000};
}

// A line a row: its name, "!" when it has failed and "…" while it goes on, its bars in milliseconds, its note.
std::string drawn(const Waterfall& chart) {
  std::string text;
  for (const auto& row : chart.rows) {
    text += row.name + (row.outcome == WaterfallRow::Outcome::Failed     ? "!"
                        : row.outcome == WaterfallRow::Outcome::UnderWay ? "…"
                                                                         : "");
    for (const auto& bar : row.bars) {
      text += " " + std::to_string(std::lround(bar.from * 1000)) + "-" +
              std::to_string(std::lround(bar.to * 1000));
      if (bar.percent < 100) text += "(" + std::to_string(bar.percent) + ")";
    }
    text += ": " + row.note + "\n";
  }
  return text;
}

TEST(WaterfallTest, EachWayOfALoadIsDrawnWithItsReasons) {
  const VeltoAnswer page{200, VeltoAnswerClass::Markup}, instructions{200, VeltoAnswerClass::Mediation};
  const std::string request = "request 0-3: asked by refresh, 600 bytes\n",
                    over = "over an open connection, status ";
  const std::vector<Entry> failedTwice{
      at(65, Kind::NetworkTried, VeltoNetworkTry{"A", {}}),
      at(66, Kind::Sent, VeltoConnection::Made),
      at(180, Kind::FirstByte),
      at(185, Kind::Answered, VeltoAnswer{204, {}}),
      at(185, Kind::NetworkPassedOver, VeltoNetworkTry{"A", Why::StatusNoFill}),
      at(185, Kind::NetworkTried, VeltoNetworkTry{"B", {}}),
      at(190, Kind::NetworkPassedOver, VeltoNetworkTry{"B", Why::AdapterUnknown})};
  const std::string passedOver = "answer 3-60 60-64: " + over + "200, mediation\n" +
                                 "A! 65-66 66-180 180-185: The server had no ad (status 204).\nB! 185-190: "
                                 "No adapter is registered for the network.\n";
  auto filled = failedTwice;
  for (auto& entry : std::vector<Entry>{
           at(190, Kind::NetworkTried, VeltoNetworkTry{"C", {}}),
           at(200, Kind::Resolved, VeltoAdKind::RichMedia), at(201, Kind::WebProcess, VeltoWebProcess::Warm),
           at(205, Kind::MarkupGiven), at(300, Kind::PageLoaded), at(310, Kind::Visible, VeltoShare{40}),
           at(310, Kind::PaintedFirst), at(320, Kind::LoadFinished), at(900, Kind::Visible, VeltoShare{0}),
           at(1900, Kind::Visible, VeltoShare{100})})
    filled.push_back(std::move(entry));
  const std::vector<std::pair<VeltoAdTimeline, std::string>> loads{
      {load(answered(instructions), filled), request + passedOver + "C 190-200: brought an ad: rich-media\n" +
                                                 "page 205-300 300-320: warm web process\nseen… 310-900(40) "
                                                 "1900-2000: painted first after 310 ms\n"},
      {load(answered(instructions), failedTwice, Why::NobodyFilled, 191), request + passedOver},
      {load(answered({204, {}}), {}, Why::StatusNoFill, 65),
       request + "answer! 3-60 60-64: " + over + "204, unknown. The server had no ad (status 204).\n"},
      {load({at(0, Kind::Asked, VeltoAskedBy::Inspector)}, {}), "request… 0-2000: asked by inspector\n"},
      {load(answered(page), {at(66, Kind::MarkupGiven)}, Why::PageProcessCrashed, 90),
       request + "answer 3-60 60-64: " + over +
           "200, markup\npage! 66-90: The web process of the ad crashed.\n"},
      {load(answered(page),
            {at(66, Kind::MarkupGiven), at(90, Kind::LoadFinished),
             at(20000, Kind::Heavy, VeltoAdExcess{VeltoAdLimit::Network, 5.1e6, 4e6}),
             at(30000, Kind::Weighed, VeltoAdWeight{29.9, 1.25, {}, 5'300'000, 240'000, {}})},
            Why::PageTooHeavy, 30000),
       request + "answer 3-60 60-64: " + over +
           "200, markup\npage 66-90: \nweight!: network 5.1 MB of 4.0 MB, 1.2 s of processor, 5.3 MB loaded, "
           "240 kB of memory\n"},
      // Of the long wait for its turn a quarter of the rest is drawn.
      {load(answered(page), {at(100, Kind::Ready), at(1100, Kind::ShowAsked, VeltoAskedBy::Application),
                             at(1100, Kind::MarkupGiven), at(1200, Kind::PageLoaded)}),
       request + "answer 3-60 60-64: " + over +
           "200, markup\nready 100-350: shown by application\npage… 350-450 450-1250: \n"}};
  for (const auto& [told, expected] : loads) EXPECT_EQ(drawn(waterfallOf(told, began + 2)), expected);

  const auto chart = waterfallOf(loads.front().first, began + 2);
  EXPECT_NEAR(chart.filled.value_or(0), 0.32, 1e-9);
  EXPECT_NEAR(chart.length, 0.32 * 1.15, 1e-9) << "of the way to the ad";
  EXPECT_FALSE(chart.isUnderWay) << "nothing moves while it is looked at";
  EXPECT_NEAR(waterfallOf(loads[5].first, began + 40).length, 0.09 * 1.15, 1e-9) << "and not of its life";
  EXPECT_EQ(sightOf(loads.front().first).size(), 3U);
  EXPECT_EQ(headlineOf(loads.front().first), "filled in 320 ms");
  EXPECT_EQ(headlineOf(loads[2].first), "The server had no ad (status 204).");
  EXPECT_EQ(headlineOf(loads[3].first), "on its way");
  EXPECT_TRUE(waterfallOf(loads[3].first, began + 2).isUnderWay);
  EXPECT_EQ(waterfallOf(loads[2].first, began + 2).failed, began + 0.065 - began);
  EXPECT_NEAR(waterfallOf(loads.back().first, began + 2).leftOut, 0.75, 1e-9);
  EXPECT_EQ(waterfallOf({}, 0).rows.size(), 0U);
  for (const auto& [seconds, text] : std::vector<std::pair<double, std::string>>{
           {0.0031, "3.1 ms"}, {0.412, "412 ms"}, {1.25, "1.2 s"}, {119.7, "2 min 0 s"}})
    EXPECT_EQ(durationText(seconds), text);
}

TEST(WaterfallTest, AVideoAdHasRowsForDocumentsAndFiles) {
  const auto document = [](int depth, std::optional<int> code = {}, int request = 1) {
    return VeltoVideoDocument{depth, {}, code, request};
  };
  const auto chart = waterfallOf(
      load({at(0, Kind::Asked, VeltoAskedBy::Application), at(1, Kind::DocumentAsked, document(0)),
            at(20, Kind::DocumentAnswered, document(0)), at(20, Kind::DocumentAsked, document(1)),
            at(60, Kind::DocumentAnswered, document(1, 301)),
            at(60, Kind::VideoFailed, VeltoVideoFailure{0, 301}), at(60, Kind::DocumentAsked, document(1)),
            at(90, Kind::DocumentAnswered, document(1)), at(95, Kind::Ready, VeltoVideoPod{1, 0}),
            at(100, Kind::ShowAsked, VeltoAskedBy::Application),
            at(101, Kind::FileTried, VeltoVideoFile{1, "video/mp4", 0, 0, {}}),
            at(150, Kind::VideoFailed, VeltoVideoFailure{1, 401}),
            at(150, Kind::FileTried, VeltoVideoFile{1, "video/webm", 0, 0, {}}),
            at(220, Kind::FileChosen, VeltoVideoFile{1, "video/webm", 0, 0, {}}),
            at(230, Kind::Visible, VeltoShare{100}), at(240, Kind::VideoFailed, VeltoVideoFailure{1, 410})},
           {}, Why::VideoOver, 5000),
      began + 9);
  EXPECT_EQ(
      drawn(chart),
      "request 0-1: asked by application\ndocument 1-20: \nwrapper 1! 20-60: code 301\nwrapper 1 60-90: \n"
      "ready 95-100: shown by application\nfile of ad 1! 101-150: video/mp4, code 401\n"
      "file of ad 1 150-220: video/webm\nseen 230-5000: \n");
  EXPECT_NEAR(chart.filled.value_or(0), 0.095, 1e-9);

  // Those of a pod are under way at once.
  const auto pod =
      load({at(0, Kind::Asked, VeltoAskedBy::Application), at(1, Kind::DocumentAsked, document(1, {}, 2)),
            at(2, Kind::DocumentAsked, document(1, {}, 3)), at(3, Kind::DocumentAsked, document(1, {}, 4)),
            at(20, Kind::DocumentAnswered, document(1, {}, 3)),
            at(20, Kind::VideoFailed, VeltoVideoFailure{0, 303}),
            at(40, Kind::DocumentAnswered, document(1, 301, 2)),
            at(50, Kind::FileTried, VeltoVideoFile{1, "video/mp4", 0, 0, {}}),
            at(60, Kind::FileTried, VeltoVideoFile{2, "video/webm", 0, 0, {}}),
            at(70, Kind::VideoFailed, VeltoVideoFailure{1, 409}),
            at(80, Kind::FileChosen, VeltoVideoFile{2, "video/webm", 0, 0, {}})},
           {});
  const auto going = waterfallOf(pod, began + 0.1);
  EXPECT_TRUE(going.isUnderWay);
  EXPECT_EQ(drawn(going),
            "request 0-1: asked by application\nwrapper 1! 1-40: code 301\nwrapper 1 2-20: \n"
            "wrapper 1… 3-100: \nfile of ad 1! 50-70: video/mp4, code 409\n"
            "file of ad 2 60-80: video/webm\n");
}

}  // namespace
}  // namespace velto
