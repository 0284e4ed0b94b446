// What the tests of timelines share: a fixture that scripts servers and networks, and reads what loads left behind.
#pragma once

#include "velto/ads/VeltoAdMediationAdapterProtocol.h"
#include "velto/ads/VeltoAdMediationAdapterRegistry.h"
#include "velto/timeline/InspectedPlacement.h"
#include "velto/timeline/TimelineHub.h"

#include "../ui/UITest.h"

namespace velto::test {

using velto::headless::Answer;
using Why = VeltoAdEndReason;
using Kind = VeltoTimelineKind;

constexpr char adapterName[] = "VeltoAdMediationAdapterAdMob";

// Answers with an ad of that adapter, with what it was given, or never.
struct OneNetwork : VeltoAdMediationAdapterProtocol {
  void adapt(const std::shared_ptr<VeltoMediationItemResponse>&, std::optional<int64_t> size,
             const std::shared_ptr<VeltoTaskResponseHeaders>& headers, uint64_t,
             VeltoAdCompletion completion) override {
    if (adapter) return completion(VeltoAd::adWithMediation(adapter, size, headers), std::nullopt);
    if (ad || error) completion(ad, error);
  }
  std::shared_ptr<VeltoAd> ad;
  std::optional<VeltoErrorAd> error;
  std::shared_ptr<test::FakeAdapter> adapter;
};

class TimelineTest : public UITest {
 protected:
  TimelineTest() { VeltoAdMediationAdapterRegistry::registerAdapter(adapterName, network); }
  ~TimelineTest() override { VeltoAdMediationAdapterRegistry::registerAdapter(adapterName, nullptr); }

  static Answer transport(NSErrorCause cause) { return Answer::failure({"other", 1, "", cause}); }
  static Answer phone(int64_t code) { return Answer::failure({"NSURLErrorDomain", code, ""}); }
  static Answer content(const char* word, std::string body = "") {
    return {.headers = {{"x-content", word}, {"x-width", "320"}, {"x-height", "50"}},
            .body = std::move(body)};
  }
  static Answer walk(const std::string& items) { return mediation(R"({"mediation":[)" + items + "]}"); }
  Answer brought(std::shared_ptr<test::FakeAdapter> adapter, const char* kind = "Banner") {
    network->adapter = std::move(adapter);
    return walk(std::string(R"({"cn":"VeltoAdmob)") + kind + R"(Adapter"})");
  }
  static VeltoAdTimeline last(const auto& ad) { return ad->veltoAdTimeline().back(); }
  static std::string kindsOf(const VeltoAdTimeline& timeline) {
    std::string words;
    for (const auto& entry : timeline.entries)
      words.append(words.empty() ? "" : " ").append(nameOf(entry.kind));
    return words;
  }
  // Why each item of mediation was passed over.
  static std::vector<Why> passedOver(const VeltoAdTimeline& timeline) {
    std::vector<Why> reasons;
    for (const auto& entry : timeline.entries)
      if (entry.kind == Kind::NetworkPassedOver)
        reasons.push_back(*std::get<VeltoNetworkTry>(entry.detail).passedOver);
    return reasons;
  }
  // The error that came with it.
  static void expectError(const auto& told, Why why) {
    ASSERT_EQ(told.has_value(), wordsOf(why).errorCode.has_value());
    if (!told) return;
    EXPECT_EQ(told->reason, why);
    EXPECT_EQ(told->errorCode, wordsOf(why).errorCode);
    EXPECT_NE(told->explanation().find(wordsOf(why).advice), std::string::npos);
  }

  const std::shared_ptr<OneNetwork> network = std::make_shared<OneNetwork>();
};

}  // namespace velto::test
