// The life of pending events: stored, sent, acknowledged or kept for the next launch.
#include "velto/core/VeltoDataStore.h"

#include <thread>

#include "TrackTest.h"

namespace velto {
namespace {

using namespace std::chrono_literals;
using headless::Answer;
using test::decoded;

using TrackerTest = test::TrackTest;

TEST_F(TrackerTest, AnInstallationIsTrackedOnceAndGoneWhenAcknowledged) {
  answerTracks(acknowledged());
  VeltoTrackerManager::trackInstall();
  VeltoTrackerManager::trackClickForBannerId("b", std::nullopt, "o");
  VeltoTrackerManager::trackClickForBannerId("b", "p", std::nullopt);
  EXPECT_EQ(sent(), 0U) << "an event lacks a part that says what happened";
  registerKey("first");
  ASSERT_EQ(stored().size(), 1U);
  EXPECT_EQ(stored().begin()->second, "install");
  EXPECT_TRUE(decoded(stored().begin()->first).ends_with(":first"));
  EXPECT_TRUE(
      platform->urlSession().requests("trk_install.php").at(0).allHTTPHeaderFields.value("user-agent"));
  platform->runUntilIdle();
  EXPECT_TRUE(stored().empty());

  registerKey("second");
  relaunch();
  registerKey("third");
  platform->advance(1h);
  EXPECT_EQ(sent(), 0U) << "on the new platform";
}

TEST_F(TrackerTest, OnlyAPlainOneWithStatus200Acknowledges) {
  auto redirect = status(302);
  redirect.headers = {{"Location", "/elsewhere"}};
  const std::vector<Answer> refusals{{.body = "1\n"},
                                     {.body = ""},
                                     {.body = std::string("1\0", 2)},
                                     {.status = 204, .body = "1"},
                                     {.body = "1", .isHTTP = false},
                                     {.body = std::string(1 << 20, '1')},
                                     Answer::withoutData(),
                                     Answer::offline(),
                                     redirect};
  const auto track = [this](const Answer& answer) {
    platform->urlSession().enqueue(answer);
    click();
    platform->runUntilIdle();
    return stored();
  };
  for (size_t i = 0; i < refusals.size(); ++i) EXPECT_EQ(track(refusals[i]).size(), i + 1);
  const auto kept = stored();
  EXPECT_EQ(track(acknowledged()), kept);
}

TEST_F(TrackerTest, WhatFailedIsSentAgainOnceInEachLaterLaunchOneATick) {
  answerTracks(status(500));
  click("one");
  platform->mainQueue().setSecondsSince1970(1e9);  // a clock that jumps back loses nothing
  click("two");
  platform->advance(1min);
  EXPECT_EQ(sent(), 2U) << "not again in this launch";

  relaunch();
  platform->mainQueue().setSecondsSince1970(0);
  platform->advance(9s);
  EXPECT_EQ(sent(), 1U);
  platform->advance(1s);
  const auto tracks = platform->urlSession().requests("trk_");
  EXPECT_NE(tracks.at(0).url.absoluteString(), tracks.at(1).url.absoluteString());
  platform->advance(1h);
  EXPECT_EQ(sent(), 2U);
  EXPECT_EQ(stored().size(), 2U);

  relaunch();
  answerTracks(acknowledged());
  platform->urlSession().pending().at(0)->answer(acknowledged());
  platform->advance(10s);
  EXPECT_EQ(sent(), 2U);
  EXPECT_TRUE(stored().empty());
}

TEST_F(TrackerTest, TheBackgroundIsQuietAndTheForegroundSendsOneAtOnce) {
  for (const auto* name : {"a", "b", "c"}) click(name);
  relaunch();
  platform->application().enterBackground();
  platform->advance(1h);
  EXPECT_EQ(sent(), 1U);
  platform->application().enterForeground();
  EXPECT_EQ(sent(), 2U);
  platform->application().enterForeground();  // again: one timer all the same
  EXPECT_EQ(sent(), 3U);
  VeltoTrackerManager::shared()->storeTrackIdentifier("",
                                                      VeltoTrackTypeClick);  // in front of all that was sent
  platform->advance(10s);
  EXPECT_EQ(sent(), 4U);
  click("d");
  relaunch();
  platform->application().enterForeground();
  platform->advance(10s);
  EXPECT_EQ(sent(), 3U);
}

TEST_F(TrackerTest, GarbageInTheStoreDoesNoHarm) {
  for (const DefaultsValue& garbage : {DefaultsValue("text"), DefaultsValue(7.0)}) {
    platform->defaults()->setObject(storeKey, garbage);
    relaunch();
    EXPECT_EQ(sent(), 0U);
    click();
    EXPECT_EQ(stored().size(), 1U) << "the event replaces what cannot be one";
  }
  platform->defaults()->setObject(
      storeKey, DefaultsDictionary{{"", "click"}, {"a", "view"}, {"b", "install"}, {"c", ""}});
  relaunch();
  platform->advance(1min);
  EXPECT_EQ(sent(), 2U) << "unknown types hold nobody up";
  EXPECT_EQ(stored().size(), 4U);
}

TEST_F(TrackerTest, AStoreThatFailsForATimeHoldsEverythingInTheEnd) {
  answerTracks(Answer::offline());
  VeltoTrackerManager::start();
  platform->defaults()->failWrites(true);
  click("unsaved");
  platform->runUntilIdle();
  EXPECT_TRUE(stored().empty());
  EXPECT_EQ(sent(), 1U) << "it is sent all the same";
  platform->defaults()->failWrites(false);
  platform->advance(10s);
  EXPECT_EQ(stored().size(), 1U) << "without another change";
  click("saved");
  EXPECT_EQ(stored().size(), 2U);

  relaunch();
  platform->defaults()->failWrites(true);
  platform->urlSession().pending().at(0)->answer(acknowledged());
  platform->runUntilIdle();
  EXPECT_EQ(stored().size(), 2U);
  platform->defaults()->failWrites(false);
  click("third");
  EXPECT_EQ(stored().size(), 2U) << "the acknowledged one is gone";
}

TEST_F(TrackerTest, RegistrationFromAnotherThreadIsSafeAtOnceAndSentFromTheMainOne) {
  for (const bool isPolled : {false, true}) {  // before its turn has come
    platform = headless::Platform::install();
    std::thread([this] { registerKey(); }).join();
    EXPECT_EQ(stored().size(), 1U);
    EXPECT_EQ(sent(), 0U);
    if (isPolled) VeltoTrackerManager::start();
    EXPECT_EQ(sent(), isPolled ? 1U : 0U);
    platform->advance(1min);
    EXPECT_EQ(sent(), 1U);
  }
}

TEST_F(TrackerTest, AnAnswerAfterTheEndIsDropped) {
  click();
  const auto task = platform->urlSession().pending().at(0);
  headless::Platform::uninstall();
  task->answer(acknowledged());
  platform->runUntilIdle();
  EXPECT_EQ(stored().size(), 1U);
}

TEST_F(TrackerTest, ALongQueueIsWrittenByTheEntry) {
  DefaultsDictionary many;
  for (int i = 0; i < 10'000; ++i) many["identifier " + std::to_string(i)] = "click";
  platform->defaults()->setObject(storeKey, many);
  relaunch();
  VeltoDataStore::getUserAgent();
  const auto writes = platform->defaults()->writes();
  click();
  platform->urlSession().pending().back()->answer(acknowledged());
  platform->runUntilIdle();
  EXPECT_EQ(platform->defaults()->writes() - writes, 2U) << "one for what comes and one for what goes";
  EXPECT_EQ(stored(), many);
}

}  // namespace
}  // namespace velto
