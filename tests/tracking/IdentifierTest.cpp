// The identifiers of events: what they carry, and how they are wrapped.
#include "velto/platform/foundation/Text.h"
#include "velto/tracking/VeltoTrackText.h"

#include <map>

#include "TrackTest.h"

namespace velto {
namespace {

using test::decoded;

class IdentifierTest : public test::TrackTest {
 protected:
  static std::string clickText() {
    return decoded(VeltoTrackerManager::clickIdentifierForBannerId("b1", "p1", "o1"));
  }
};

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

  const std::string longName(100 << 10, 'n');
  platform->device().facts.name = longName;
  EXPECT_NE(clickText().find(":" + longName + "|ios|"), std::string::npos);
}

TEST_F(IdentifierTest, WhatIsNoUTF8LeavesOnlyThePrefixAndIsTrackedAllTheSame) {
  platform->device().facts.name = "Phone \xff";
  registerKey();
  ASSERT_EQ(stored().size(), 1U);
  EXPECT_EQ(stored().begin()->first.size(), 3U);
  EXPECT_EQ(sent(), 1U);
}

// The right sides were made with Python's base64 module.
TEST_F(IdentifierTest, WrapsInLinesOfSixtyFour) {
  std::string bytes;
  for (char c = '0'; bytes.size() < 70; ++c) bytes += c;
  bytes.append(27, 'z');
  const std::string line = "MDEyMzQ1Njc4OTo7PD0+P0BBQkNERUZHSElKS0xNTk9QUVJTVFVWV1hZWltcXV5f";
  const std::map<size_t, std::string> vectors{
      {0, ""},
      {1, "MA=="},
      {2, "MDE="},
      {3, "MDEy"},
      {47, line.substr(0, 60) + "XV4="},
      {48, line},
      {49, line + "\r\nYA=="},
      {96, line + "\r\nYGFiY2RlZmdoaWprbG1ub3BxcnN0dXp6enp6enp6enp6enp6enp6enp6enp6enp6"},
      {97, line + "\r\nYGFiY2RlZmdoaWprbG1ub3BxcnN0dXp6enp6enp6enp6enp6enp6enp6enp6enp6\r\neg=="},
  };
  for (const auto& [size, expected] : vectors) {
    const auto wrapped = VeltoTrackText::wrapped(bytes.substr(0, size));
    EXPECT_EQ(wrapped.substr(3), expected);
    EXPECT_EQ(test::unwrapped(wrapped), bytes.substr(0, size)) << "the reader of these tests agrees";
  }
}

// A remainder of random bytes would favour the first eight characters by a quarter; chance alone moves none
// by a fifth in more lifetimes than there will be runs of this test.
TEST_F(IdentifierTest, RandomCharactersAreEquallyLikely) {
  const std::string alphabet = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
  constexpr size_t each = 2000;
  std::map<char, size_t> counts;
  for (const char c : randomText(alphabet, each * alphabet.size())) ++counts[c];
  ASSERT_EQ(counts.size(), alphabet.size());
  for (const char c : alphabet) EXPECT_NEAR(static_cast<double>(counts[c]), each, each / 5.0) << c;
}

}  // namespace
}  // namespace velto
