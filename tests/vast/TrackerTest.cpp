// What servers of an ad are told, and how its addresses are filled in.
#include "velto/vast/VASTSender.h"
#include "velto/vast/VASTTracker.h"

#include <cmath>
#include <regex>

#include "../support/HeadlessTest.h"

namespace velto {
namespace {

constexpr const char* allEvents[] = {"loaded",
                                     "creativeView",
                                     "start",
                                     "firstQuartile",
                                     "midpoint",
                                     "thirdQuartile",
                                     "complete",
                                     "mute",
                                     "unmute",
                                     "pause",
                                     "resume",
                                     "rewind",
                                     "skip",
                                     "closeLinear",
                                     "close",
                                     "fullscreen",
                                     "exitFullscreen",
                                     "playerExpand",
                                     "playerCollapse",
                                     "acceptInvitation",
                                     "acceptInvitationLinear",
                                     "otherAdInteraction",
                                     "minimize"};

class VASTTrackerTest : public test::HeadlessTest {
 protected:
  VASTTrackerTest() { platform->urlSession().respond("", {}); }

  static VASTAd ad() {
    VASTAd made;
    made.impressions = {"https://t/impression"};
    made.errors = {"https://t/error[ERRORCODE]"};
    made.viewableImpression = {{"https://t/viewable"}, {"https://t/notViewable"}, {"https://t/undetermined"}};
    auto& linear = made.linear.emplace();
    linear.duration = 8;
    for (const auto* event : allEvents)
      linear.trackings.push_back({event, std::string("https://t/") + event, std::nullopt});
    for (const auto& [name, offset] :
         {std::pair("p0", VASTOffset{0, false}), {"p3", {3, false}}, {"p50", {50, true}}, {"p9", {9, false}}})
      linear.trackings.push_back({"progress", std::string("https://t/") + name, offset});
    linear.clickThrough = "https://shop/?p=[CLICKPOS]";
    linear.clickTrackings = {"http://t/click[CLICKPOS]", "https://t/click"};
    return made;
  }
  // What was sent since the last time, one path after another.
  std::string told() {
    platform->runUntilIdle();
    std::string all;
    for (const auto& request : platform->urlSession().requests()) all += request.url.path() + " ";
    const auto since = all.substr(seen_);
    seen_ = all.size();
    return std::regex_replace(since, std::regex("/"), "");
  }
  void forget() {
    platform->urlSession().forgetAnswered();
    seen_ = 0;
  }

 private:
  size_t seen_ = 0;
};

TEST_F(VASTTrackerTest, AnAdThatIsSeenToItsEnd) {
  VASTTracker tracker(ad());
  std::string heard;
  tracker.observe([&](auto event) { heard += std::string(event) + " "; });
  tracker.playhead(7);  // before the start, and so are these
  tracker.setPaused(true);
  tracker.completed();
  EXPECT_EQ(told(), "");
  tracker.loaded();
  EXPECT_EQ(told(), "loaded ");
  tracker.started();
  tracker.started();
  EXPECT_EQ(told(), "impression creativeView start p0 ");
  tracker.playhead(1.9);
  EXPECT_EQ(told(), "");
  tracker.playhead(1.9995);
  EXPECT_EQ(told(), "firstQuartile ");
  tracker.playhead(6.5);
  EXPECT_EQ(told(), "p3 midpoint p50 thirdQuartile ") << "what was passed, in its order";
  tracker.playhead(0);
  tracker.playhead(6.5);
  tracker.playhead(std::nan(""));
  EXPECT_EQ(told(), "") << "once";
  tracker.completed();
  tracker.completed();
  tracker.failed(VASTError::Linear);
  tracker.playhead(9);
  EXPECT_EQ(told(), "complete ");
  EXPECT_EQ(heard,
            "loaded impression creativeView start progress firstQuartile progress midpoint progress "
            "thirdQuartile complete ");
}

TEST_F(VASTTrackerTest, WhoCameToTheEndHasBeenEverywhere) {
  VASTTracker tracker(ad());
  tracker.started();
  told();
  tracker.completed();
  EXPECT_EQ(told(), "firstQuartile p3 midpoint p50 thirdQuartile complete ");
}

TEST_F(VASTTrackerTest, WhatHappensAgainIsToldAgain) {
  VASTTracker tracker(ad());
  tracker.setMuted(true);
  tracker.started(4);
  told();
  for (const bool on : {true, true, false}) tracker.setPaused(on);
  tracker.setPaused(true);
  for (const bool on : {true, false}) tracker.setMuted(on);
  for (const bool on : {true, false}) tracker.setFullscreen(on);
  tracker.rewound();
  tracker.rewound();
  EXPECT_EQ(told(),
            "pause resume pause unmute fullscreen playerExpand exitFullscreen playerCollapse rewind rewind ");
  tracker.acceptedInvitation();
  tracker.otherInteraction();
  tracker.minimized();
  EXPECT_EQ(told(), "acceptInvitation acceptInvitationLinear otherAdInteraction minimize ");
  tracker.playhead(1);
  EXPECT_EQ(told(), "firstQuartile ") << "of the length that the player knows";
  tracker.viewability(VASTViewability::Undetermined);
  tracker.viewability(VASTViewability::Viewable);
  EXPECT_EQ(told(), "undetermined ");
  EXPECT_EQ(tracker.clicked(VASTClickPosition{10.4, 20}), "https://shop/?p=10%2C20");
  EXPECT_EQ(told(), "click click10%2C20 ") << "https first";
  tracker.failed(VASTError::InteractiveNotRun);
  tracker.failed(VASTError::FileNotShown);
  tracker.failed(VASTError::Linear);
  tracker.skipped();
  EXPECT_EQ(told(), "error409 error405 ");
}

TEST_F(VASTTrackerTest, Skipping) {
  auto skippable = ad();
  skippable.linear->skipOffset = VASTOffset{50, true};
  VASTTracker tracker(skippable);
  EXPECT_FALSE(tracker.maySkip());
  tracker.started();
  tracker.playhead(3.9);
  EXPECT_FALSE(tracker.maySkip());
  tracker.playhead(4);
  EXPECT_TRUE(tracker.maySkip());
  told();
  tracker.skipped();
  tracker.completed();
  tracker.closed();
  EXPECT_EQ(told(), "skip closeLinear ");
  VASTTracker other(ad());
  other.started();
  EXPECT_FALSE(other.maySkip());
  told();
  other.closed();
  EXPECT_EQ(told(), "close closeLinear ");
}

TEST_F(VASTTrackerTest, IconsCompanionsAndVerifications) {
  auto rich = ad();
  rich.linear->icons.resize(1);
  rich.linear->icons[0].viewTrackings = {"https://t/iconView"};
  rich.linear->icons[0].clickTrackings = {"https://t/iconClick"};
  rich.companions.resize(1);
  rich.companions[0].trackings = {{"creativeView", "https://t/companionView", std::nullopt}};
  rich.companions[0].clickThrough = "https://shop";
  VASTVerification verification;
  verification.notExecuted = {"https://t/not[REASON]"};
  VASTTracker tracker(rich);
  for (const size_t at : {0, 0, 1}) {
    tracker.iconShown(at);
    tracker.companionShown(at);
  }
  EXPECT_FALSE(tracker.iconClicked(0));
  EXPECT_EQ(tracker.companionClicked(0), "https://shop");
  EXPECT_FALSE(tracker.companionClicked(1));
  tracker.notVerified(verification, VASTNotVerified::NotSupported);
  EXPECT_EQ(told(), "iconView companionView iconClick not2 ");
}

TEST_F(VASTTrackerTest, Macros) {
  VASTMacros macros;
  macros.set(VASTMacro::OMIDPartner, "Partner/7.1")
      .refuse(VASTMacro::IFA)
      .set(VASTError::Linear)
      .setTime(VASTMacro::MediaPlayhead, 61.5);
  EXPECT_EQ(macros.expanded(
                "https://t/[OMIDPARTNER]/[IFA]/[ERRORCODE]/%5BERRORCODE%5D/[DEVICEIP]/[CONTENTPLAYHEAD]"),
            "https://t/Partner%2F7.1/-2/400/400/-1/00%3A01%3A01.500");
  EXPECT_EQ(macros.expanded("https://t/[OWN][errorcode][ERRORCODE[VASTVERSIONS]%5BOWN%5D["),
            "https://t/[OWN][errorcode][ERRORCODE-1%5BOWN%5D[")
      << "what the standard does not know stays";
  std::istringstream names(
      "ADCATEGORIES ADCOUNT ADPLAYHEAD ADSERVINGID ADTYPE APIFRAMEWORKS APPBUNDLE ASSETURI "
      "BLOCKEDADCATEGORIES BREAKMAXADLENGTH BREAKMAXADS BREAKMAXDURATION BREAKMINADLENGTH "
      "BREAKMINDURATION BREAKPOSITION CACHEBUSTING CLICKPOS CLICKTYPE CLIENTUA CONTENTID "
      "CONTENTPLAYHEAD CONTENTURI DEVICEIP DEVICEUA DOMAIN ERRORCODE EXTENSIONS GDPRCONSENT IFA IFATYPE "
      "INVENTORYSTATE LATLONG LIMITADTRACKING MEDIAMIME MEDIAPLAYHEAD OMIDPARTNER PAGEURL PLACEMENTTYPE "
      "PLAYERCAPABILITIES PLAYERSIZE PLAYERSTATE PODSEQUENCE REASON REGULATIONS SERVERSIDE SERVERUA "
      "TIMESTAMP TRANSACTIONID UNIVERSALADID VASTVERSIONS VERIFICATIONVENDORS");
  int count = 0;
  for (std::string name; names >> name; ++count)
    EXPECT_EQ(VASTMacros().set(static_cast<VASTMacro>(count), "x").expanded("[" + name + "]"), "x") << name;
  EXPECT_EQ(count, static_cast<int>(VASTMacro::VerificationVendors) + 1);
  EXPECT_EQ(macros.expanded("[TIMESTAMP]"), "2024-01-01T00%3A00%3A00.000Z");
  EXPECT_TRUE(
      std::regex_match(macros.expanded("[CACHEBUSTING] [CACHEBUSTING]"), std::regex("([0-9]{8}) \\1")));
  EXPECT_NE(macros.expanded("[CACHEBUSTING]"), macros.expanded("[CACHEBUSTING]"));

  auto known = ad();
  known.adServingId = "serving 1";
  known.sequence = 2;
  known.categories = {{"l", "7"}, {"", "8"}};
  known.linear->universalAdIds = {{"ad-id.org", "X"}};
  known.verifications.resize(1);
  known.verifications[0].vendor = "v.example-omid";
  known.impressions = {
      "https://t/[ADSERVINGID]/[PODSEQUENCE]/[ADCATEGORIES]/[UNIVERSALADID]/[VERIFICATIONVENDORS]/[ASSETURI]/"
      "[ADPLAYHEAD]/"
      "[PLAYERSTATE]/[ADCOUNT]/[BREAKPOSITION]"};
  VASTTracker tracker(known, VASTMacros().set(VASTMacro::BreakPosition, "1"));
  VASTMediaFile file;
  file.url = "https://f/1.mp4";
  tracker.chose(file);
  tracker.setMuted(true);
  tracker.impression();
  EXPECT_EQ(platform->urlSession().requests("serving").at(0).url.absoluteString(),
            "https://t/serving%201/2/%5Bl%5D7%2C8/ad-id.org%20X/v.example-omid/https%3A%2F%2Ff%2F1.mp4/"
            "00%3A00%3A00.000/muted/-1/1");
}

TEST_F(VASTTrackerTest, WhatTheNetworkKeptIsSentWhenItIsBack) {
  platform->urlSession().clearRules();
  platform->urlSession().respond("", headless::Answer::offline());
  const VASTMacros macros;
  {
    VASTTracker tracker(ad());
    tracker.impression();
  }
  told();
  EXPECT_EQ(VASTSender::shared()->waiting(), 2U) << "also when the player has gone";
  platform->advance(std::chrono::minutes(60));
  const auto tries = platform->urlSession().requests().size();
  EXPECT_LT(tries, 30U) << "less and less often";
  for (int i = 0; i < 2000; ++i) VASTSender::shared()->send({"https://t/late"}, macros);
  platform->runUntilIdle();
  EXPECT_EQ(VASTSender::shared()->waiting(), VASTSender::mostWaiting);

  forget();
  platform->urlSession().clearRules();
  platform->urlSession().respond("", {});
  platform->advance(std::chrono::minutes(6));
  EXPECT_EQ(VASTSender::shared()->waiting(), 0U);
  EXPECT_EQ(platform->urlSession().requests().size(), VASTSender::mostWaiting);
  platform->advance(std::chrono::minutes(60));
  EXPECT_EQ(platform->urlSession().requests().size(), VASTSender::mostWaiting);

  // A server that is gone holds up nobody, and is given up.
  forget();
  platform->urlSession().clearRules();
  platform->urlSession().respond("gone",
                                 headless::Answer::failure({"NSURLErrorDomain", -1003, "no such host"}));
  platform->urlSession().respond("", {});
  for (int i = 0; i < 4; ++i) {
    VASTSender::shared()->send({"https://gone/", "https://t/a"}, macros);
    platform->advance(std::chrono::minutes(6));
  }
  for (int i = 0; i < 4; ++i) {
    VASTSender::shared()->send({"https://t/a"}, macros);
    platform->advance(std::chrono::minutes(11));
  }
  EXPECT_EQ(platform->urlSession().requests("t/a").size(), 8U);
  EXPECT_EQ(VASTSender::shared()->waiting(), 0U);
  VASTSender::shared()->send({"https://gone/"}, macros);
  platform->advance(std::chrono::hours(12));
  EXPECT_EQ(VASTSender::shared()->waiting(), 0U) << "also where nothing else is sent";

  // What a server may have counted is not sent again.
  forget();
  platform->urlSession().clearRules();
  platform->urlSession().enqueue({.status = 500});
  platform->urlSession().enqueue(headless::Answer::silence());
  VASTSender::shared()->send({"https://t/a", "https://t/b", "no address", ""}, macros);
  platform->advance(std::chrono::minutes(10));
  EXPECT_EQ(told(), "a b ");
}

}  // namespace
}  // namespace velto
