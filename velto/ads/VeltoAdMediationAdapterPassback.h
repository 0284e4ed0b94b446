// The adapter whose items carry the markup itself, in base64.
#pragma once

#include "velto/ads/VeltoAdMediationInnerAdapter.h"

namespace velto {

class VeltoAdMediationAdapterPassback : public VeltoAdMediationInnerAdapter {
 public:
  static void adapt(const Item& item, std::optional<int64_t> bannerSize, const Headers& headers,
                    uint64_t adType, const VeltoAdCompletion& completionHandler);

  VeltoAdMediationAdapterPassback() : VeltoAdMediationInnerAdapter("VeltoAdMediationAdapterPassback") {}

 private:
  void _init(std::string html, std::optional<double> timer, std::optional<int64_t> bannerSize,
             const Headers& headers, uint64_t adType, const VeltoAdCompletion& completionHandler);
};

using VeltoAdMediationAdapterPassbackClass =
    VeltoAdMediationInnerAdapterClass<VeltoAdMediationAdapterPassback>;

}  // namespace velto
