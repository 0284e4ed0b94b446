// Mediation: reading instructions, the walk along the items, the adapters.
#include "velto/ads/VeltoAdMediationAdapterManager.h"
#include "velto/ads/VeltoAdMediationAdapterRegistry.h"
#include "velto/ads/VeltoAdMediationCoreAdapter.h"
#include "velto/ads/VeltoAdMediationResolver.h"
#include "velto/network/JSONSDKVelto.h"

#include <regex>

#include "FetchTest.h"

namespace velto {
namespace {

using headless::Answer;

std::string passback(const std::string& markup, const std::string& more = "") {
  return R"({"cn":"VeltoPassbackBannerAdapter","e":{"data":")" + base64Encode(markup) + "\"" + more + "}}";
}
std::string monetize(const std::string& data) {
  return R"({"cn":"VeltoMonetizeBannerAdapter","e":{"data":")" + data + "\"}}";
}
std::string list(const std::vector<std::string>& items) {
  return "{\"mediation\":[" + join(items, ",") + "]}";
}

class MediationTest : public test::FetchTest {
 protected:
  // Resolves a first-level answer with that body.
  Outcome resolve(const std::string& body) { return fetch(mediation(body)); }
};

TEST_F(MediationTest, RecordsReadWhatHasTheRightKind) {
  const auto json = JSONSDKVelto::JSONDictionary(
      R"({"conn_id":"c","timeout":"7","mediation":[{"cn":"X","t":"T","n":5,"e":{"adunit":"u","timeout":2500,"data":"aGk\r\n*"}},
          {"e":"text"},17,{"cn":1,"cn":"last"}]})");
  const auto record = VeltoMediationResponse::mediationFor(*json->object());
  EXPECT_EQ(record->connId(), "c");
  EXPECT_EQ(record->timeout(), 7);
  ASSERT_EQ(record->mediations()->size(), 4U);
  const auto& first = *record->mediations()->at(0);
  EXPECT_EQ(first.t(), "T");
  EXPECT_EQ(first.n(), std::nullopt);
  EXPECT_EQ(first.e()->adUnit(), "u");
  EXPECT_EQ(first.e()->timeout(), 2.5);
  EXPECT_EQ(first.e()->base64DecodedString(), std::nullopt) << "three characters are no base64";
  EXPECT_EQ(record->mediations()->at(1)->e(), nullptr);
  EXPECT_EQ(record->mediations()->at(2)->cn(), std::nullopt);
  EXPECT_EQ(record->mediations()->at(3)->cn(), "last");
  record->mediationItems->resize(1);
  EXPECT_EQ(std::regex_replace(record->description(), std::regex(": 0x[0-9a-f]+|\t"), ""),
            "<VeltoMediationResponse>\nConnectionId: c\nTimeout: 7\nMediations: (\n    "
            "<VeltoMediationItemResponse>\nCn: X\n"
            "E: <VeltoMediationItemEResponse>\nAdUnit: u\nTimeout: 2.5\nData: aGk\r\n*\nBase64DecodedString: "
            "(null)\nT: T\nN: (null)\n)");
}

TEST_F(MediationTest, AdapterNamesAndTypes) {
  const auto record = [](std::optional<std::string> cn) {
    const auto item = std::make_shared<VeltoMediationItemResponse>();
    item->cnValue = std::move(cn);
    return VeltoAdMediationAdapterManager::adapterForMediationItem(item);
  };
  const std::map<std::string, std::pair<int, const char*>> table{
      {"VeltoPassbackBannerAdapter", {1, "VeltoAdMediationAdapterPassback"}},
      {"VeltoPassbackInterstitialAdapter", {2, "VeltoAdMediationAdapterPassback"}},
      {"VeltoMonetizeBannerAdapter", {1, "VeltoAdMediationAdapterMonetize"}},
      {"VeltoMonetizeInterstitialAdapter", {2, "VeltoAdMediationAdapterMonetize"}},
      {"veltoadmobbanneradapter", {1, "(null)"}},
      {"VeltoAdmobBannerAdapter", {1, "(null)"}},
      {"InterstitialBANNER", {1, "(null)"}},
      {"Other", {0, "(null)"}}};
  for (const auto& [cn, expected] : table)
    EXPECT_TRUE(record(cn)->description().ends_with("\n\tCn: " + cn +
                                                    "\n\tAdType: " + std::to_string(expected.first) +
                                                    "\n\tHandler: " + expected.second))
        << record(cn)->description();
  EXPECT_EQ(record(std::nullopt)->adType(), 0U);
  EXPECT_TRUE(record(std::nullopt)->description().starts_with("<VeltoAdMediationAdapterManager: 0x"));
  EXPECT_EQ(record(std::nullopt)->handler(), nullptr);
}

TEST_F(MediationTest, TheFirstAdWinsAndFailuresPassTheTurn) {
  const auto result = resolve(list({R"({"cn":"Unknown"})", "{}", R"({"cn":"VeltoAdmobBannerAdapter"})",
                                    R"({"cn":"VeltoPassbackBannerAdapter"})", passback("velto://noFillAd"),
                                    passback("<p>won</p>", ",\"timeout\":15000"), passback("late")}));
  EXPECT_EQ(result.codes, std::vector<int64_t>{-1});
  EXPECT_EQ(result.ad->html, "<p>won</p>");
  EXPECT_EQ(result.ad->timer, 15);
  EXPECT_EQ(result.ad->site, "") << "another network's";
  EXPECT_EQ(result.ad->size, (CGSize{320, 50}));
  const auto rich = resolve(list({passback("mraid.js", ",\"timeout\":15000")}));
  EXPECT_EQ(rich.ad->sourceType, VeltoAdSourceMRAID);
  EXPECT_EQ(rich.ad->timer, std::nullopt);
}

TEST_F(MediationTest, EndsWithoutAnAd) {
  using Codes = std::vector<int64_t>;
  for (const auto& item : {std::string(R"({"cn":"VeltoPassbackBannerAdapter","e":{"data":"%%%x"}})"),
                           passback("\xff"), std::string(R"({"cn":"VeltoMonetizeBannerAdapter"})")})
    EXPECT_EQ(resolve(list({item})).codes, Codes{0}) << item;
  EXPECT_EQ(resolve("no json").codes, Codes{1});
  EXPECT_EQ(resolve("[]").codes, Codes{1});
  EXPECT_EQ(resolve("{\"mediation\":[]}").codes, (Codes{1, 2})) << "an empty list is told twice";
  EXPECT_EQ(resolve("{}").codes, (Codes{1, 0})) << "and a missing one likewise";
  EXPECT_EQ(resolve("{\"mediation\":{}}").codes, (Codes{1, 0}));
}

TEST_F(MediationTest, MonetizeSendsItsDataBackAndTheAnswerIsResolvedLikeAFirstOne) {
  platform->urlSession().enqueue("puressp", status(500));
  platform->urlSession().enqueue("puressp", mediation(list({passback("<p>nested</p>")})));
  const auto result = resolve(list({monetize("QQ=="), monetize("Qg==")}));
  EXPECT_EQ(result.ad->html, "<p>nested</p>");
  const auto sent = platform->urlSession().requests("puressp");
  ASSERT_EQ(sent.size(), 2U);
  EXPECT_EQ(sent[0].httpMethod + " " + *sent[0].httpBody, "POST QQ==") << "as it stands, not decoded";
  EXPECT_EQ(result.ad->bannerSize, std::nullopt);
  EXPECT_FALSE(result.ad->canBeCached());

  // An empty list answers twice; were the walk to go on twice, ten items would make a thousand requests.
  platform->urlSession().respond("puressp", mediation("{\"mediation\":[]}"));
  EXPECT_EQ(resolve(list(std::vector<std::string>(10, monetize("QQ==")))).codes, std::vector<int64_t>{0});
  EXPECT_EQ(platform->urlSession().requests("puressp").size(), 12U);
}

// An adapter of a host application: answers later, on the main queue.
struct LinkedClass : VeltoAdMediationAdapterProtocol {
  uint64_t adType = 0;
  std::optional<VeltoErrorAd> error;
  VeltoAdCompletion* waits = nullptr;
  void adapt(const std::shared_ptr<VeltoMediationItemResponse>&, std::optional<int64_t>,
             const std::shared_ptr<VeltoTaskResponseHeaders>& headers, uint64_t type,
             VeltoAdCompletion completion) override {
    adType = type;
    if (waits) return void(*waits = completion);
    Platform::current().mainQueue().post([headers, completion, told = error] {
      const auto plain = std::make_shared<VeltoAdMediationCoreAdapter>();
      completion(VeltoAd::adWithMediation(plain, std::nullopt, headers), told);
    });
  }
};

TEST_F(MediationTest, ALinkedAdapterIsFoundByItsClassName) {
  const auto linked = std::make_shared<LinkedClass>();
  VeltoAdMediationAdapterRegistry::registerAdapter("VeltoAdMediationAdapterAdMob", linked);
  for (const auto& [cn, type] :
       {std::pair("VeltoAdmobInterstitialAdapter", 2U), {"VeltoAdmobBannerAdapter", 1U}}) {
    const auto result = resolve(list({R"({"cn":")" + std::string(cn) + "\"}"}));
    EXPECT_EQ(result.ad->sourceType, VeltoAdSourceMediation);
    EXPECT_EQ(linked->adType, type);
    EXPECT_NE(result.ad->description().find("\n\tAdapter: <VeltoAdMediationCoreAdapter: 0x"),
              std::string::npos);
  }
  linked->error = VeltoErrorAd::veltoErrorAdWithCode(1);
  EXPECT_EQ(resolve(list({R"({"cn":"VeltoAdmobBannerAdapter"})"})).codes, std::vector<int64_t>{0});
  VeltoAdCompletion late;
  linked->waits = &late;
  resolve(list({R"({"cn":"VeltoAdmobBannerAdapter"})", monetize("x")}));
  headless::Platform::uninstall();
  late(nullptr, linked->error);  // the next item has no one to ask
  VeltoAdMediationAdapterRegistry::registerAdapter("VeltoAdMediationAdapterAdMob", nullptr);
}

TEST_F(MediationTest, TenThousandItemsInARowAndTenThousandNested) {
  std::vector<std::string> items(10'000, passback("velto://noFillAd"));
  items.push_back(passback("end"));
  EXPECT_EQ(resolve(list(items)).ad->html, "end");

  int answers = 0;
  platform->urlSession().respond([](const NSURLRequest& r) { return r.url.path() == "/dev/puressp.php"; },
                                 [&](const NSURLRequest&) {
                                   return ++answers == 10'000 ? status(204)
                                                              : mediation(list({monetize("x")}));
                                 });
  EXPECT_EQ(resolve(list({monetize("x")})).codes, std::vector<int64_t>{0})
      << "the last no-fill comes up through all levels";
  EXPECT_EQ(answers, 10'000);
}

}  // namespace
}  // namespace velto
