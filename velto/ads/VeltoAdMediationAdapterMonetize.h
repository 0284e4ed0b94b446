// The adapter whose items carry a request: their data goes back to the ad server, whose answer is resolved
// like a first one.
#pragma once

#include "velto/ads/VeltoAdMediationAdapter.h"
#include "velto/ads/VeltoAdMediationAdapterProtocol.h"

namespace velto {

class VeltoAdMediationAdapterMonetize : public VeltoAdMediationCoreAdapter {
 public:
  static void adapt(const std::shared_ptr<VeltoMediationItemResponse>& item, uint64_t adType,
                    VeltoAdCompletion completionHandler);

  uint64_t adType() const override { return adType_; }
  std::string description() const override;

 private:
  void _init(const std::string& data, uint64_t adType, VeltoAdCompletion completionHandler);
  uint64_t adType_ = 0;
};

class VeltoAdMediationAdapterMonetizeClass : public VeltoAdMediationAdapterProtocol {
 public:
  void adapt(const std::shared_ptr<VeltoMediationItemResponse>& item, std::optional<int64_t> /*bannerSize*/,
             const std::shared_ptr<VeltoTaskResponseHeaders>& /*headers*/, uint64_t adType,
             VeltoAdCompletion completionHandler) override {
    VeltoAdMediationAdapterMonetize::adapt(item, adType, std::move(completionHandler));
  }
};

}  // namespace velto
