// velto-info tells all that would be sent, and what it depends on.
#include "velto/gtk/VeltoGtk.h"
#include "velto/gtk/store/AdvertisingFile.h"
#include "velto/platform/foundation/JSON.h"
#include "velto/velto.h"

#include "BusMock.h"

namespace velto {
namespace {

const test::EnvironmentFolder folder{"XDG_DATA_HOME", "XDG_CONFIG_HOME", "TMPDIR"};

struct Facts {
  std::map<std::string, JSON::Object> byName;  // "ad/dmo"
  const JSON& value(const std::string& name) { return byName.at(name)["value"]; }
};

test::Outcome run(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), INFO_PROGRAM);
  return test::run(std::move(arguments));
}

Facts facts(std::vector<std::string> arguments) {
  Facts facts;
  arguments.emplace_back("--json");
  const auto parsed = readJSON(run(arguments).output);
  for (const auto& fact : *parsed.value().array()) {
    auto object = *fact.object();
    EXPECT_FALSE(object["source"].string()->empty()) << *object["name"].string() << " is not described";
    facts.byName[*object["request"].string() + "/" + *object["name"].string()] = object;
  }
  EXPECT_GT(facts.byName.size(), 80u);
  return facts;
}

TEST(InfoTest, TellsEveryValueWithItsSourceAndGate) {
  unsetenv("DISPLAY");
  const test::PrivateBus bus;
  auto without = facts({});
  for (const char* name :
       {"ad/aid", "ad/geo", "ad/son", "ad/k", "video/aid", "video/lat", "track/carrier", "page/location"})
    EXPECT_TRUE(without.value(name).isNull()) << name;
  for (const char* name : {"ad/aid", "ad/geo", "video/lat", "page/calendar", "page/storePicture"})
    EXPECT_FALSE(without.byName.at(name)["gate"].isNull()) << name;
  EXPECT_TRUE(without.byName.at("ad/dmo")["gate"].isNull());
  EXPECT_EQ(without.value("ad/aidl"), JSON("1"));

  const auto identifier = gtk::AdvertisingFile().allow().identifier.value();
  gtk::install({.applicationIdentifier = "org.example.info"});
  VeltoFramework::addVeltoKey("key-of-the-application");
  gtk::uninstall();
  auto with = facts({"--application", "org.example.info"});
  EXPECT_EQ(with.value("ad/aid"), JSON(identifier));
  EXPECT_EQ(with.value("ad/k"), JSON("key-of-the-application"));

  EXPECT_NE(run({"--application", "org.example.info"}).output.find("key-of-the-application"),
            std::string::npos);
  EXPECT_EQ(run({"--application", "org.example.unknown"}).code, 2);
  EXPECT_FALSE(std::filesystem::exists(folder.path("org.example.unknown"))) << "looking makes nothing";
}

}  // namespace
}  // namespace velto
