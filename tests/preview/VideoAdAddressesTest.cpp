// Of which address of its documents a video ad's request was.
#include <gtest/gtest.h>

#include <set>

#include "preview/vast/AddressBook.h"

namespace velto::preview {
namespace {

class VideoAdAddresses : public testing::Test {
 protected:
  void add(const char* name, const std::string& url) { book_.add({name, "https://t" + url, 1}, 0); }
  void told(const char* event, int status) {
    book_.note({VeltoTimelineKind::AddressTold, 0,
                VeltoVideoTold{1, event, VeltoVideoTold::Result::Arrived, status}});
  }
  std::string nameOf(const std::string& url, int status = 200) {
    const auto* known = book_.take("https://t" + url, status);
    return known ? known->address.name : "";
  }

 private:
  AddressBook book_;
};

TEST_F(VideoAdAddresses, MeanWhatIsWrittenToTheLetterOrInMostLetters) {
  add("error", "/track?e=[ERRORCODE]");
  add("impression", "/track?e=imp");
  add("start", "/track?e=s&at=[ADPLAYHEAD]");
  EXPECT_EQ(nameOf("/track?e=imp"), "impression");
  EXPECT_EQ(nameOf("/track?e=s&at=00%3A00%3A01"), "start");
  EXPECT_EQ(nameOf("/track?e=405"), "error");
  EXPECT_EQ(nameOf("/track"), "");
}

TEST_F(VideoAdAddresses, MeanWrappersUnlessTheTimelineHasToldOfThem) {
  add("error", "/vast?[ERRORCODE]");
  add("wrapper", "/vast?[CACHEBUSTING]");
  EXPECT_EQ(nameOf("/vast?301"), "wrapper");
  told("error", 404);
  EXPECT_EQ(nameOf("/vast?301", 200), "wrapper");
  EXPECT_EQ(nameOf("/vast?301", 404), "error");
  EXPECT_EQ(nameOf("/vast?301", 404), "wrapper");
}

TEST_F(VideoAdAddresses, MeanWhatTheTimelineHasTold) {
  for (const char* name : {"mute", "unmute", "not viewable", "creativeView"}) add(name, "/same");
  told("unmute", 200);
  told("notViewable", 200);
  told("companionView", 200);
  std::multiset<std::string> names;
  for (int i = 0; i < 3; ++i) names.insert(nameOf("/same"));
  EXPECT_EQ(names, (std::multiset<std::string>{"creativeView", "not viewable", "unmute"}));
}

TEST_F(VideoAdAddresses, AreNoneThatOnlyAPersonOrThePlayerGoesTo) {
  add("destination", "/click");
  add("file", "/click");
  EXPECT_EQ(nameOf("/click"), "");
  add("click", "/click");
  EXPECT_EQ(nameOf("/click"), "click");
}

}  // namespace
}  // namespace velto::preview
