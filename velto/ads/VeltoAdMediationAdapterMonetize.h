// The adapter whose items carry a request: their data goes back to the ad server, whose answer is resolved
// like a first one.
#pragma once

#include "velto/ads/VeltoAdMediationInnerAdapter.h"

namespace velto {

class VeltoAdMediationAdapterMonetize : public VeltoAdMediationInnerAdapter {
 public:
  // Size and headers of the answer before are of no use here.
  static void adapt(const Item& item, std::optional<int64_t> bannerSize, const Headers& headers,
                    uint64_t adType, const VeltoAdCompletion& completionHandler);

  VeltoAdMediationAdapterMonetize() : VeltoAdMediationInnerAdapter("VeltoAdMediationAdapterMonetize") {}

 private:
  void _init(const std::string& data, uint64_t adType, const VeltoAdCompletion& completionHandler);
};

using VeltoAdMediationAdapterMonetizeClass =
    VeltoAdMediationInnerAdapterClass<VeltoAdMediationAdapterMonetize>;

}  // namespace velto
