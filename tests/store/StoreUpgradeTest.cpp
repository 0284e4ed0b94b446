// Stores that other versions wrote, those that several use at once, and those that are broken.
#include "velto/gtk/store/AdvertisingFile.h"
#include "velto/gtk/store/Database.h"
#include "velto/gtk/store/DefaultsStore.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <fstream>

#include "../support/Folder.h"

namespace velto {
namespace {

using gtk::DefaultsStore;

// A copy, as a store is written to by being read.
std::string copyOf(const std::string& name, const test::TemporaryFolder& folder) {
  const auto to = folder.path("defaults.sqlite3");
  for (const char* companion : {"", "-wal"}) {
    const auto from = std::string(WRITTEN_STORES) + "/" + name + companion;
    if (std::filesystem::exists(from)) std::filesystem::copy_file(from, to + companion);
  }
  return to;
}

TEST(StoreUpgrade, WhatEachReleasedVersionWroteIsRead) {
  for (const char* name : {"written-by-4.0.10/closed.sqlite3", "written-by-4.0.10/killed.sqlite3"}) {
    const test::TemporaryFolder folder;
    const auto path = copyOf(name, folder);
    for (int run = 0; run < 2; ++run) {
      DefaultsStore store(path);
      EXPECT_EQ(store.objectForKey("kVeltoClientIdKey"), DefaultsValue("key-of-4.0.10")) << name;
      EXPECT_EQ(store.objectForKey("constVeltoTestMode"), DefaultsValue(0.0));
      EXPECT_EQ(store.objectForKey("constVeltoEndpoint"), DefaultsValue(""));
      EXPECT_EQ(store.objectForKey("kVeltoGDPRConsent"), DefaultsValue("π consent"));
      EXPECT_EQ(store.objectForKey("kVeltoTrackIdentifierKey"),
                DefaultsValue(DefaultsDictionary{{"first\r\ntrack", "install"}, {"second", "click"}}));
      EXPECT_FALSE(store.objectForKey("removed"));
      store.setObject("kVeltoGDPROptin", 0.0);
    }
  }
}

// As a later version may: columns, tables, kinds of values, a number of its own.
constexpr char laterLayout[] =
    "BEGIN IMMEDIATE;"
    "ALTER TABLE value ADD COLUMN written INTEGER NOT NULL DEFAULT 7;"
    "ALTER TABLE entry ADD COLUMN written INTEGER NOT NULL DEFAULT 7;"
    "CREATE TABLE more(key TEXT);"
    "INSERT INTO value(key, kind, content) VALUES ('list', 9, 'x');"
    "UPDATE value SET written = 8;"
    "PRAGMA user_version = 2;"
    "COMMIT;";

TEST(StoreUpgrade, TwoVersionsUseOneStoreAtOnceAndTheLaterKeepsWhatIsItsOwn) {
  const test::TemporaryFolder folder;
  const auto path = copyOf("written-by-4.0.10/closed.sqlite3", folder);
  DefaultsStore running(path);
  running.setObject("text", "before");
  gtk::Database later(path, 2 /* SQLITE_OPEN_READWRITE */);
  later.execute(laterLayout);
  DefaultsStore second(path);  // and one more process of this version
  for (auto* store : {&running, &second}) {
    const std::string text = store == &running ? "a" : "b";
    EXPECT_FALSE(store->objectForKey("list")) << "of a kind that is not known";
    store->setObject("text", text);
    store->setEntry("kVeltoTrackIdentifierKey", text, "click");
    store->setEntry("new", text, "entry");
    EXPECT_EQ(running.objectForKey("text"), DefaultsValue(text));
    EXPECT_EQ(second.objectForKey("text"), DefaultsValue(text));
  }
  EXPECT_EQ(std::get<DefaultsDictionary>(running.objectForKey("kVeltoTrackIdentifierKey").value()).size(),
            4U);
  int64_t kept = 0, version = 0;
  gtk::Statement(later, "SELECT written FROM value WHERE key = 'text'").forEachRow([&](const auto& row) {
    kept = row.integer(0);
  });
  gtk::Statement(later, "PRAGMA user_version").forEachRow([&](const auto& row) { version = row.integer(0); });
  EXPECT_EQ(kept, 8) << "a value that is changed keeps what this version does not know of it";
  EXPECT_EQ(version, 2);
}

// --- what is broken

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

size_t damagedIn(const test::TemporaryFolder& folder) {
  size_t count = 0;
  for (const auto& file : std::filesystem::directory_iterator(folder.path()))
    count += file.path().string().find(".damaged-") != std::string::npos ? 1 : 0;
  return count;
}

TEST(StoreDamage, AFileThatEndsAnywhereIsReadRightOrBegunAnewAndItsRestIsKept) {
  const test::TemporaryFolder whole;
  const auto bytes = contentOf(copyOf("written-by-4.0.10/closed.sqlite3", whole));
  constexpr size_t step = 512, page = 4096;
  for (size_t size = 0; size <= bytes.size(); size += step) {
    const test::TemporaryFolder folder;
    const auto path = folder.write("defaults.sqlite3", bytes.substr(0, size));
    {
      DefaultsStore store(path);
      const auto key = store.objectForKey("kVeltoClientIdKey");
      EXPECT_TRUE(!key || key == DefaultsValue("key-of-4.0.10")) << size;
      store.setObject("new", "value");
    }
    EXPECT_EQ(DefaultsStore(path).objectForKey("new"), DefaultsValue("value")) << size;
    // A page that is there in part may read as an empty one.
    const bool isSeen = size > 0 && size < bytes.size() - page;
    EXPECT_TRUE(damagedIn(folder) == 1 || !isSeen) << size;
  }
}

TEST(StoreDamage, WhatARunningApplicationKnowsOutlivesItsFile) {
  const test::TemporaryFolder folder;
  const auto path = copyOf("written-by-4.0.10/closed.sqlite3", folder);
  {
    DefaultsStore before(path);
    for (int i = 0; i < 400; ++i) before.setEntry("large", std::to_string(i), std::string(300, 'x'));
  }
  {
    DefaultsStore store(path);
    const auto tracks = store.objectForKey("kVeltoTrackIdentifierKey");
    constexpr size_t page = 4096, read = 12 * page;  // by now, at most
    std::fstream(path, std::ios::binary | std::ios::in | std::ios::out)
        .seekp(read)
        .write(std::string(std::filesystem::file_size(path) - read, '?').data(), page * 4);
    EXPECT_FALSE(store.objectForKey("large"));
    EXPECT_EQ(store.objectForKey("kVeltoTrackIdentifierKey"), tracks);
  }
  EXPECT_EQ(std::get<DefaultsDictionary>(DefaultsStore(path).objectForKey("kVeltoTrackIdentifierKey").value())
                .size(),
            2U);
  EXPECT_EQ(damagedIn(folder), 1U);
}

// The user's decision, in a file that is replaced as a whole.
TEST(StoreDamage, ADecisionIsWrittenWholeOrNotAtAll) {
  const test::TemporaryFolder folder;
  const gtk::AdvertisingFile file(folder.path("velto/advertising"));
  const auto identifier = file.allow().identifier;
  std::signal(SIGXFSZ, SIG_IGN);  // a file that would grow beyond the limit is an error then
  rlimit before = {};
  getrlimit(RLIMIT_FSIZE, &before);
  const auto size = std::filesystem::file_size(file.path());
  for (rlim_t most = 0; most < size; ++most) {
    const rlimit limit{most, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_THROW(file.reset(), std::runtime_error) << most;
    setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(file.read().identifier, identifier) << most;
  }
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path("velto")), {}), 1)
      << "nothing is left beside";
}

}  // namespace
}  // namespace velto
