// The identifiers of events: what they carry, and how they are wrapped.
#include "velto/tracking/VeltoTrackText.h"

#include "TrackTest.h"

namespace velto {
namespace {

using test::decoded;
using IdentifierTest = test::TrackTest;

std::string clickText() {
  return decoded(VeltoTrackerManager::clickIdentifierForBannerId("b1", "p1", "o1"));
}

TEST_F(IdentifierTest, CarriesTimeDeviceAndArguments) {
  const std::string device = "Phone|ios|16.4|iPhone|iPhone12,1|en_US|en-US||1704000000|1704067200";
  EXPECT_EQ(clickText(), "3:1704067200:3:ios:4.0.10:" + device + ":b1:p1:o1");
  EXPECT_EQ(decoded(VeltoTrackerManager::installIdentifierForVeltoKey("a:|b")),
            "3:1704067200:3:ios:4.0.10:" + device + ":a:|b");
  EXPECT_NE(VeltoTrackerManager::installIdentifierForVeltoKey("k"),
            VeltoTrackerManager::installIdentifierForVeltoKey("k"));
}

TEST_F(IdentifierTest, OddDevicesKeepTheFieldsApart) {
  platform->device().facts = {.name = "A|B:C \xf0\x9f\x93\xb1",
                              .model = "::|",
                              .systemVersion = "",
                              .machine = std::nullopt,
                              .bootTime = 0};
  platform->currentLocale().identifier = "de_DE@a:b|c";
  platform->currentLocale().languages.clear();
  platform->telephony().carrier = CTCarrier{"Net|:1", std::nullopt, std::nullopt};
  platform->mainQueue().setSecondsSince1970(-1.5e9);
  EXPECT_EQ(
      clickText(),
      "3:-1500000000:3:ios:4.0.10:A BC \xf0\x9f\x93\xb1|ios|| ||de_DE@ab c||Net 1|0|-1500000000:b1:p1:o1");
}

TEST_F(IdentifierTest, WhatIsNoUTF8LeavesOnlyThePrefixAndIsTrackedAllTheSame) {
  platform->device().facts.name = "Phone \xff";
  registerKey();
  ASSERT_EQ(stored().size(), 1U);
  EXPECT_EQ(stored().begin()->first.size(), 3U);
  EXPECT_EQ(sent(), 1U);
}

TEST_F(IdentifierTest, WrapsInLinesOfSixtyFour) {
  const std::string line(48, 'U'), wrapped(64, 'V');
  EXPECT_EQ(VeltoTrackText::wrapped("").size(), 3U);
  EXPECT_EQ(VeltoTrackText::wrapped(line + line).substr(3), wrapped + "\r\n" + wrapped);
  EXPECT_EQ(VeltoTrackText::wrapped(line + "0").substr(3), wrapped + "\r\nMA==");
}

}  // namespace
}  // namespace velto
