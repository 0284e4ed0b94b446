// An adapter class: what turns a mediation item into an ad of its network. What it makes is a
// VeltoAdMediationCoreAdapter.
#pragma once

#include "velto/Export.h"
#include "velto/ads/VeltoAd.h"
#include "velto/ads/VeltoMediationResponse.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace velto {

// Stands for the class itself, not for one adapter: each adapt() makes a new one.
class VELTO_EXPORT VeltoAdMediationAdapterProtocol {
 public:
  virtual ~VeltoAdMediationAdapterProtocol() = default;

  // Answers once, with an ad or an error: at once, or later on any thread. Called on the thread on which the
  // answer before it came, usually not the main one. The ad type is 1 for a banner, 2 for an interstitial, 0
  // unknown.
  virtual void adapt(const std::shared_ptr<VeltoMediationItemResponse>& item,
                     std::optional<int64_t> bannerSize,
                     const std::shared_ptr<VeltoTaskResponseHeaders>& headers, uint64_t adType,
                     VeltoAdCompletion completionHandler) = 0;
};

}  // namespace velto
