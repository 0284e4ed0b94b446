// The advertising identifier: private by default, the user's to decide, shared by all processes.
#include "velto/gtk/VeltoGtk.h"
#include "velto/gtk/store/AdvertisingFile.h"
#include "velto/network/VeltoAdvertisingIdentifier.h"
#include "velto/network/VeltoTaskRequest.h"

#include <fcntl.h>
#include <glib.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <set>
#include <thread>

#include "../support/Program.h"

namespace velto {
namespace {

using Decision = gtk::AdvertisingFile::Decision;

// GLib reads the user's configuration folder from the environment once, so all cases share one.
const test::EnvironmentFolder configFolder{"XDG_CONFIG_HOME"};

class AdvertisingTest : public testing::Test {
 protected:
  AdvertisingTest() {
    std::filesystem::remove_all(configFolder.path("velto"));
    gtk::install({.applicationIdentifier = "org.example.adid", .dataFolder = configFolder.path("data")});
  }
  ~AdvertisingTest() override { gtk::uninstall(); }

  static std::string adid(const std::string& command) {
    const auto outcome = test::run({ADID_PROGRAM, command});
    return std::to_string(outcome.code) + " " + outcome.output;
  }
  static void expectLimited(const char* why) {
    EXPECT_TRUE(VeltoAdvertisingIdentifier::isTrackingLimited()) << why;
    EXPECT_FALSE(VeltoAdvertisingIdentifier::advertisingIdentifier()) << why;
    const auto parameters = VeltoTaskRequest::_postParametersForSettings({});
    EXPECT_FALSE(parameters.contains("aid")) << why;
    EXPECT_EQ(parameters.at("aidl"), JSON("1")) << why;
  }

  gtk::AdvertisingFile file;
};

TEST_F(AdvertisingTest, NobodyIsTrackedUnlessTheUserSaidSo) {
  EXPECT_EQ(file.path(), configFolder.path("velto/advertising"));
  expectLimited("nobody was asked");
  EXPECT_EQ(adid("show"), "0 undecided\n");
  EXPECT_EQ(adid("reset"), "1 undecided\n");
  EXPECT_FALSE(std::filesystem::exists(file.path())) << "asking decides nothing";

  const auto shown = adid("allow");
  const auto identifier = VeltoAdvertisingIdentifier::advertisingIdentifier().value();
  EXPECT_EQ(shown, "0 allowed " + identifier + "\n");
  EXPECT_TRUE(g_uuid_string_is_valid(identifier.c_str()));
  EXPECT_FALSE(VeltoAdvertisingIdentifier::isTrackingLimited());
  EXPECT_EQ(VeltoTaskRequest::_postParametersForSettings({})["aid"], JSON(identifier));
  EXPECT_EQ(VeltoTaskRequest::_postParametersForSettings({})["aidl"], JSON(""));
  gtk::setTrackingAllowed(true);
  EXPECT_EQ(VeltoAdvertisingIdentifier::advertisingIdentifier(), identifier) << "kept";
  EXPECT_NE(adid("reset"), shown);
  EXPECT_NE(VeltoAdvertisingIdentifier::advertisingIdentifier(), identifier);

  gtk::setTrackingAllowed(false);
  expectLimited("denied");
  EXPECT_EQ(adid("show"), "0 denied\n");
  EXPECT_EQ(adid("reset"), "1 denied\n");
  gtk::setTrackingAllowed(true);
  EXPECT_NE(VeltoAdvertisingIdentifier::advertisingIdentifier(), identifier) << "forgotten";
  EXPECT_EQ(adid("forget"), "2 ");
}

TEST_F(AdvertisingTest, TheFileIsPrivateAndADamagedOneAllowsNothing) {
  umask(0);
  file.allow();
  struct stat facts = {};
  ASSERT_EQ(stat(file.path().c_str(), &facts), 0);
  EXPECT_EQ(facts.st_mode & 0777, 0600u);
  std::filesystem::permissions(file.path(), std::filesystem::perms::all);
  file.reset();
  stat(file.path().c_str(), &facts);
  EXPECT_EQ(facts.st_mode & 0777, 0600u) << "of old files, too";

  for (const char* text :
       {"", "garbage", "[Advertising]\nDecision=allowed\n",
        "[Advertising]\nDecision=allowed\nIdentifier=me\n",
        "[Advertising]\nDecision=allowed\nIdentifier=00000000-0000-0000-0000-000000000000\n",
        "[Advertising]\nIdentifier=6d92078a-8246-4ba4-ae5b-76104861e7dc\n"}) {
    std::ofstream(file.path(), std::ios::trunc) << text;
    expectLimited(text);
  }
  std::filesystem::remove(file.path());
  mkfifo(file.path().c_str(), 0600);
  expectLimited("a pipe");
  EXPECT_EQ(file.allow().decision, Decision::Allowed) << "replaced";

  std::filesystem::remove_all(file.path().parent_path());
  std::ofstream(file.path().parent_path()) << "in the way";
  EXPECT_THROW(gtk::setTrackingAllowed(true), std::runtime_error);
  expectLimited("the folder cannot be made");
}

TEST_F(AdvertisingTest, WritersAtOnceAgreeOnOneIdentifier) {
  std::vector<std::thread> writers;
  std::vector<std::string> made(8);
  for (size_t i = 0; i < made.size(); ++i)
    writers.emplace_back(
        [&, i] { made[i] = i % 2 ? adid("allow") : "0 allowed " + *file.allow().identifier + "\n"; });
  for (auto& writer : writers) writer.join();
  EXPECT_EQ(std::set(made.begin(), made.end()).size(), 1u);

  // A reader never meets half a file.
  std::atomic<bool> done{false};
  std::thread resetting([&] {
    for (int i = 0; i < 50; ++i) file.reset();
    done = true;
  });
  do {
    EXPECT_EQ(file.read().decision, Decision::Allowed);
  } while (!done);
  resetting.join();
}

}  // namespace
}  // namespace velto
