// A registered key, and what comes of asking the ad manager for a banner.
#pragma once

#include "velto/ads/VeltoAdManager.h"

#include "../support/HeadlessTest.h"

namespace velto::test {

class FetchTest : public HeadlessTest {
 protected:
  FetchTest() { registerKey(); }

  struct Outcome {
    std::shared_ptr<VeltoAd> ad;
    std::vector<int64_t> codes = {};  // of every call, -1 for an ad
    int64_t code() const { return codes.size() == 1 ? codes[0] : -2; }
  };
  Outcome fetch(VeltoBannerSize size = VeltoBannerSize320x50) {
    Outcome outcome;
    VeltoAdManager::fetchFor(VeltoAdTypeBanner, size, std::nullopt, [&](const auto& ad, const auto& error) {
      outcome.ad = ad;
      outcome.codes.push_back(error ? error->errorCode : -1);
      EXPECT_NE(ad == nullptr, !error);
      EXPECT_TRUE(platform->mainQueue().isCurrent());
    });
    EXPECT_TRUE(outcome.codes.empty()) << "never inside the call";
    platform->runUntilIdle();
    return outcome;
  }
  Outcome fetch(headless::Answer answer) {
    platform->urlSession().enqueue("/sdk/", std::move(answer));
    return fetch();
  }
};

}  // namespace velto::test
