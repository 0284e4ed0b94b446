// The waterfalls of examples/scenarios as the library walks along them, over real HTTPS: the sandbox answers,
// the Linux platform's transport asks.
#include "velto/ads/VeltoAdManager.h"
#include "velto/gtk/VeltoGtk.h"
#include "velto/velto.h"

#include <gtest/gtest.h>

#include "../support/MainLoop.h"
#include "Support.h"

namespace velto {
namespace {

class WaterfallTest : public testing::Test {
 protected:
  WaterfallTest() {
    server.start();
    gtk::install({.applicationIdentifier = "org.example.waterfall",
                  .dataFolder = folder.path("store"),
                  .caFile = server.caFile(),
                  .hostMap = {{"*.velto.example", "127.0.0.1:" + std::to_string(server.port())}}});
  }
  ~WaterfallTest() override { gtk::uninstall(); }

  // What each answer's page says, or its error's code, and how many requests the server got for items. Ends when
  // that many answers have come and all that was asked for before was answered.
  std::string load(const std::string& key, size_t answers) {
    server.clearRequests();
    VeltoFramework::addVeltoKey(key);
    size_t heard = 0;
    std::string outcome;
    VeltoAdManager::fetchFor(
        VeltoAdTypeBanner, VeltoBannerSize320x50, std::nullopt,
        [&](const std::shared_ptr<VeltoAd>& ad, const std::optional<VeltoErrorAd>& error) {
          ++heard;
          outcome += (error ? std::to_string(error->errorCode) : wordOf(*ad)) + " ";
        });
    EXPECT_TRUE(test::runUntil([&] { return heard >= answers; })) << key;
    for (const auto& request : server.requests())
      EXPECT_EQ(request.problems, std::vector<std::string>{}) << request.toJsonLine();
    return outcome + std::to_string(server.requests(sandbox::Kind::Mediation).size());
  }
  static std::string wordOf(const VeltoAd& ad) {
    for (const char* word : {"Passback", "Monetize"})
      if (ad.html.value_or("").find(word) != std::string::npos) return word;
    return "?";
  }

  static sandbox::Options options(const sandbox::TemporaryFolder& folder) {
    sandbox::Options made;
    made.dataFolder = folder.path("sandbox");
    made.scenarioFiles = {SANDBOX_EXAMPLES "/waterfalls.json"};
    return made;
  }

  sandbox::TemporaryFolder folder;
  sandbox::Server server{options(folder)};
};

TEST_F(WaterfallTest, EachEndsAsItsItemsSay) {
  // An answer that is cut on a connection used before is asked for once more, as RFC 9112 has it.
  const std::pair<const char*, const char*> rows[] = {
      {"unknown", "Passback 0"}, {"failing", "Passback 4"},  {"nofill", "0 1"},
      {"slow", "Monetize 2"},    {"passback", "Passback 0"}, {"monetize", "Monetize 1"},
      {"empty", "1 2 0"},        {"chain", "Passback 49"},   {"itself", "Monetize 50"}};
  for (const auto& [key, outcome] : rows)
    EXPECT_EQ(load(key, key == std::string("empty") ? 2 : 1), outcome) << key;
}

}  // namespace
}  // namespace velto
