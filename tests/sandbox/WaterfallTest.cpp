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
    const std::string address = "127.0.0.1:" + std::to_string(server.port());
    gtk::install({.applicationIdentifier = "org.example.waterfall",
                  .dataFolder = folder.path("store"),
                  .caFile = server.caFile(),
                  .hostMap = {{"*.velto.example", address}}});
  }
  ~WaterfallTest() override { gtk::uninstall(); }

  struct Outcome {
    std::string what;  // of each answer: what its page says, or its error's code
    size_t items = 0;  // requests that the server got for items
  };
  // Ends when that many answers have come and all that was asked for before was answered.
  Outcome load(const std::string& key, size_t answers) {
    server.clearRequests();
    VeltoFramework::addVeltoKey(key);
    std::vector<std::string> heard;
    VeltoAdManager::fetchFor(
        VeltoAdTypeBanner, VeltoBannerSize320x50, std::nullopt,
        [&](const std::shared_ptr<VeltoAd>& ad, const std::optional<VeltoErrorAd>& error) {
          heard.push_back(error ? std::to_string(error->errorCode) : wordOf(*ad));
        });
    EXPECT_TRUE(test::runUntil([&] { return heard.size() >= answers; })) << key;
    Outcome outcome;
    for (const auto& word : heard) outcome.what += word + " ";
    for (const auto& request : server.requests()) {
      EXPECT_EQ(request.problems, std::vector<std::string>{}) << request.toJsonLine();
      outcome.items += request.kind == sandbox::Kind::Mediation;
    }
    return outcome;
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
  struct Row {
    const char* key;
    std::string what;
    size_t items;
    size_t answers = 1;
  };
  // An answer that is cut on a connection used before is asked for once more, as RFC 9112 has it.
  for (const auto& [key, what, items, answers] : {Row{"unknown", "Passback ", 0},
                                                  {"failing", "Passback ", 4},
                                                  {"nofill", "0 ", 1},
                                                  {"slow", "Monetize ", 2},
                                                  {"passback", "Passback ", 0},
                                                  {"monetize", "Monetize ", 1},
                                                  {"empty", "1 2 ", 0, 2},
                                                  {"chain", "Passback ", 49},
                                                  {"itself", "Monetize ", 50}}) {
    const auto outcome = load(key, answers);
    EXPECT_EQ(outcome.what, what) << key;
    EXPECT_EQ(outcome.items, items) << key;
  }
}

}  // namespace
}  // namespace velto
