// The adapter whose items carry the markup itself, in base64.
#pragma once

#include "velto/ads/VeltoAdMediationAdapter.h"
#include "velto/ads/VeltoAdMediationAdapterProtocol.h"

namespace velto {

class VeltoAdMediationAdapterPassback : public VeltoAdMediationCoreAdapter {
 public:
  using Headers = std::shared_ptr<VeltoTaskResponseHeaders>;

  static void adapt(const std::shared_ptr<VeltoMediationItemResponse>& item,
                    std::optional<int64_t> bannerSize, const Headers& headers, uint64_t adType,
                    const VeltoAdCompletion& completionHandler);

  uint64_t adType() const override { return adType_; }
  std::string description() const override;

 private:
  void _init(std::string html, std::optional<double> timer, std::optional<int64_t> bannerSize,
             const Headers& headers, uint64_t adType, const VeltoAdCompletion& completionHandler);
  uint64_t adType_ = 0;
};

class VeltoAdMediationAdapterPassbackClass : public VeltoAdMediationAdapterProtocol {
 public:
  void adapt(const std::shared_ptr<VeltoMediationItemResponse>& item, std::optional<int64_t> bannerSize,
             const std::shared_ptr<VeltoTaskResponseHeaders>& headers, uint64_t adType,
             VeltoAdCompletion completionHandler) override {
    VeltoAdMediationAdapterPassback::adapt(item, bannerSize, headers, adType, completionHandler);
  }
};

}  // namespace velto
