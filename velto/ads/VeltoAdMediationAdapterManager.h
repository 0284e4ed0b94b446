// Which adapter fills a mediation item, by the class name that the server gives. Any thread.
#pragma once

#include "velto/ads/VeltoAdMediationAdapterProtocol.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace velto {

class VeltoAdMediationAdapterManager {
 public:
  static std::shared_ptr<VeltoAdMediationAdapterManager> adapterForMediationItem(
      const std::shared_ptr<VeltoMediationItemResponse>& item);

  // Null for a name that nobody answers to: the item is skipped.
  std::shared_ptr<VeltoAdMediationAdapterProtocol> handler() const;
  // 1 for names that contain "banner", else 2 for "interstitial", else 0; in any case of letters.
  uint64_t adType() const;
  std::string description() const;

  std::optional<std::string> cn;
};

}  // namespace velto
