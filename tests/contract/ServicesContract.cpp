// Main queue, clock, store, notifications, bundles, device, application.
#include "velto/platform/Clock.h"
#include "velto/platform/NSBundle.h"
#include "velto/platform/NSTimer.h"
#include "velto/platform/NSUserDefaults.h"
#include "velto/platform/Network.h"
#include "velto/platform/UIApplication.h"
#include "velto/platform/UIDevice.h"

#include <algorithm>
#include <cmath>
#include <thread>

#include "PlatformUnderTest.h"

namespace velto {
namespace {

using namespace std::chrono_literals;

class QueueContract : public Contract {};

TEST_F(QueueContract, TasksRunLaterInOrderOfDueTimeThenOfTheCalls) {
  std::string order;
  const auto note = [&order](char c) { return [&order, c] { order += c; }; };
  queue().postAfter(40ms, note('e'));
  queue().postAfter(20ms, note('c'));
  queue().postAfter(20ms, note('d'));
  queue().post([&] {
    order += 'a';
    queue().post(note('b'));
  });
  EXPECT_EQ(order, "") << "never inside the call";
  EXPECT_TRUE(runUntil([&] { return order.size() == 5; }));
  EXPECT_EQ(order, "abcde");
}

TEST_F(QueueContract, OtherThreadsHopToTheMainThread) {
  std::vector<int> seen;
  bool mainInside = true;
  std::thread([&] {
    EXPECT_FALSE(queue().isCurrent());
    for (int i = 0; i < 100; ++i)
      queue().post([&, i] {
        mainInside = mainInside && queue().isCurrent();
        seen.push_back(i);
      });
  }).join();
  EXPECT_TRUE(runUntil([&] { return seen.size() == 100; }));
  EXPECT_TRUE(mainInside && queue().isCurrent());
  EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end()));
}

TEST_F(QueueContract, RepeatingTasksFollowTheClockUntilTheirHandleGoes) {
  const auto& clock = platform().clock();
  EXPECT_GE(clock.secondsSince1970(), 1'704'067'200);  // 2024
  const double start = clock.monotonicSeconds();
  int selfEnding = 0, dropped = 0;
  Handle ends = queue().every(15ms, [&] {
    if (++selfEnding == 3) ends.cancel();
  });
  Handle goes = queue().every(15ms, [&] { ++dropped; });
  const auto absurd = NSTimer::scheduledTimerWithTimeInterval(1e300, [] { ADD_FAILURE() << "came"; });
  queue().postAfter(std::chrono::nanoseconds::max(), [] { ADD_FAILURE() << "came"; });
  EXPECT_TRUE(runUntil([&] { return selfEnding == 3; }));
  EXPECT_GE(clock.monotonicSeconds() - start, 0.0449);
  goes = {};
  const int before = dropped;
  EXPECT_GT(before, 0);
  runFor(60ms);
  EXPECT_EQ(selfEnding, 3);
  EXPECT_EQ(dropped, before);
}

TEST_F(QueueContract, BackgroundWorkRunsOffTheMainThreadAndEndsWithThePlatform) {
  auto done = std::make_shared<int>(0);
  for (int i = 0; i < 20; ++i)
    platform().performInBackground([done] {
      EXPECT_FALSE(queue().isCurrent());
      queue().post([done] { ++*done; });
    });
  EXPECT_EQ(*done, 0);
  EXPECT_TRUE(runUntil([&] { return *done == 20; }));
  for (int i = 0; i < 20; ++i) platform().performInBackground([done] {});
  subject().uninstall();
  EXPECT_EQ(done.use_count(), 1) << "done or destroyed undone";
  subject().install();
}

class StoreContract : public Contract {
 protected:
  static NSUserDefaults& store() { return platform().standardUserDefaults(); }
};

TEST_F(StoreContract, HoldsValuesOfEachKindAcrossARelaunch) {
  const DefaultsDictionary some{{"a", "1"}, {"", "2"}};
  const std::map<std::string, DefaultsValue> values{
      {"empty", ""}, {"text", "π \"'; --"}, {"number", 0.1}, {"none", DefaultsDictionary{}}, {"some", some}};
  for (const auto& [key, value] : values) {
    EXPECT_FALSE(store().objectForKey(key));
    store().setObject(key, 7.0);  // of another kind first
    store().setObject(key, value);
  }
  store().setObject("gone", some);
  for (const char* key : {"gone", "never there"}) store().removeObjectForKey(key);
  store().synchronize();
  for (int launch = 1; launch <= 2; ++launch) {
    for (const auto& [key, value] : values) EXPECT_EQ(store().objectForKey(key), value) << key;
    EXPECT_FALSE(store().objectForKey("gone"));
    subject().relaunch();
  }
  store().setEntry("gone", "right", "new");
  EXPECT_EQ(store().objectForKey("gone"), DefaultsValue(DefaultsDictionary{{"right", "new"}}))
      << "old entries are gone";
}

TEST_F(StoreContract, EntriesChangeLikeTheWholeDictionary) {
  const auto holds = [](const DefaultsValue& value) { return store().objectForKey("d") == value; };
  store().setEntry("d", "a", "1");
  store().setEntry("d", "b", "2");
  store().setEntry("d", "a", "3");
  store().setEntry("da", "b", "of another");
  EXPECT_TRUE(holds(DefaultsDictionary{{"a", "3"}, {"b", "2"}}));
  store().setObject("d", DefaultsDictionary{{"c", "4"}});
  store().setEntry("d", "c", std::nullopt);
  store().setEntry("d", "unknown", std::nullopt);
  EXPECT_TRUE(holds(DefaultsDictionary{})) << "an empty one is still there";
  store().setObject("d", "text");
  store().setEntry("d", "a", "1");
  EXPECT_TRUE(holds(DefaultsDictionary{{"a", "1"}}));
}

TEST_F(StoreContract, ServesThreadsAtOnce) {
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([t] {
      for (int i = 0; i < 50; ++i) store().setEntry("all", std::to_string(t) + "/" + std::to_string(i), "x");
    });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(std::get<DefaultsDictionary>(store().objectForKey("all").value()).size(), 200u);
}

class ServicesContract : public Contract {};

TEST_F(ServicesContract, NotificationsReachObserversInOrderUntilTheyLeave) {
  auto& center = platform().notificationCenter();
  std::string order;
  Handle second;
  const auto first = center.addObserver("n", [&](const NSNotification& n) {
    order += "1" + std::to_string(std::get<int64_t>(n.object));
    second.cancel();
  });
  second = center.addObserver("n", [&](const NSNotification&) { order += "2"; });
  const auto third = center.addObserver("n", [&](const NSNotification&) { order += "3"; });
  const auto other = center.addObserver("m", [&](const NSNotification&) { order += "!"; });
  center.postNotification({"n", int64_t{7}});
  EXPECT_EQ(order, "173");
}

TEST_F(ServicesContract, BundlesAndDeviceArePlausible) {
  auto& bundle = platform().mainBundle();
  EXPECT_TRUE(bundle.infoDictionary().value().contains("CFBundleName"));
  EXPECT_FALSE(bundle.bundleForResource("nothing", "bundle") || bundle.contentsOfResource("nothing", "js"));
  EXPECT_FALSE(platform().bundleWithIdentifier("com.example.unknown"));
  const auto own = platform().bundleWithIdentifier("com.velto.VeltoFramework");
  ASSERT_TRUE(own);
  EXPECT_EQ(own->infoDictionary().value()["CFBundleShortVersionString"], "4.0.10");

  auto& device = platform().device();
  EXPECT_FALSE(device.systemName().empty() || device.systemVersion().empty());
  EXPECT_TRUE(platform().application().isProtectedDataAvailable());
  EXPECT_GE(device.bootTime(), 0);
  EXPECT_LE(static_cast<double>(device.bootTime()), platform().clock().secondsSince1970());
  const auto addresses = platform().network().interfaceAddresses().value();
  for (const auto& address : addresses)
    EXPECT_TRUE(address.family != AddressFamily::IPv6 || address.text.find(':') != std::string::npos);
  EXPECT_GT(platform().mainScreen().bounds().size.width, 0);
  EXPECT_EQ(platform().currentLocale().preferredLanguages().at(0).find_first_of("_.@"), std::string::npos);
  EXPECT_LE(std::abs(platform().localTimeZone().secondsFromGMT()), 14 * 3600);
}

TEST_F(ServicesContract, NobodyOpensUnknownSchemesOrFiles) {
  auto& application = platform().application();
  for (const char* text : {"velto-unknown-scheme://x", "file:///etc/passwd", "no/scheme"}) {
    const auto url = *NSURL::URLWithString(text);
    EXPECT_FALSE(application.canOpenURL(url)) << text;
    int calls = 0;
    application.openURL(url, {}, [&](bool opened) {
      EXPECT_FALSE(opened) << text;
      EXPECT_TRUE(queue().isCurrent());
      ++calls;
    });
    EXPECT_EQ(calls, 0);
    EXPECT_TRUE(runUntil([&] { return calls > 0; }));
    runFor(20ms);
    EXPECT_EQ(calls, 1);
  }
}

}  // namespace
}  // namespace velto
