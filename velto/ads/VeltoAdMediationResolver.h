// Walks mediation instructions: each item goes to the adapter that its class name selects, strictly one after
// another; the first ad wins. Runs on the thread on which the adapter before answered.
//
// Chains of any length, and answers that mediate again to any depth, use no more stack than one: a step that
// follows an answer within the same call waits until that call has returned to the first of them.
#pragma once

#include "velto/ads/VeltoAdResolver.h"
#include "velto/ads/VeltoMediationResponse.h"

#include <functional>
#include <memory>
#include <optional>

namespace velto {

class VeltoAdMediationResolver {
 public:
  // Calls the completion twice for instructions without items: the list's absence is one fault, its end
  // another.
  static void resolveAd(const VeltoTaskResponsePointer& response, std::optional<int64_t> bannerSize,
                        const VeltoAdCompletion& completionHandler);
};

class VeltoAdMediationItemResolver {
 public:
  using Item = std::shared_ptr<VeltoMediationItemResponse>;
  using Mediation = std::shared_ptr<VeltoMediationResponse>;
  using Headers = std::shared_ptr<VeltoTaskResponseHeaders>;

  static void resolveMediationItem(const Item& item, const Mediation& mediation,
                                   std::optional<int64_t> bannerSize, const Headers& headers,
                                   VeltoAdCompletion completionHandler);
  static void _handleNextMediationItemFrom(const Item& item, const Mediation& mediation,
                                           std::optional<int64_t> bannerSize, const Headers& headers,
                                           VeltoAdCompletion completionHandler);
  // Nothing when a further item is being tried.
  static std::optional<VeltoErrorAd> _tryHandleNextMediationItemFrom(
      const Item& item, const Mediation& mediation, std::optional<int64_t> bannerSize, const Headers& headers,
      const VeltoAdCompletion& completionHandler);
};

}  // namespace velto
