// Turns a classified response into an ad or an error. Runs on the thread that delivers the response, and
// calls the completion on it, or not at all where that is said.
#pragma once

#include "velto/ads/VeltoAd.h"
#include "velto/network/VeltoTaskResponse.h"

#include <memory>
#include <optional>
#include <string>

namespace velto {

using VeltoTaskResponsePointer = std::shared_ptr<VeltoTaskResponse>;

namespace VeltoAdManagerAdResolver {

// An answer to an ad request. A response without data ends without a call.
void handleTaskResponse(const VeltoTaskResponsePointer& response, std::optional<int64_t> bannerSize,
                        const VeltoAdCompletion& completionHandler);
// The second creative of a two-part expand: no size is asked of it.
void handleTaskResponseForSecondMRAIDContent(const VeltoTaskResponsePointer& response,
                                             const VeltoAdCompletion& completionHandler);

bool _handleableTaskResponse(const VeltoTaskResponse& response, const VeltoAdCompletion& completionHandler);
std::optional<std::string> _htmlFrom(const VeltoTaskResponse& response,
                                     const VeltoAdCompletion& completionHandler);

}  // namespace VeltoAdManagerAdResolver

class VeltoAdResolverManager {
 public:
  // A response of any type but markup and mediation ends without a call. The ad reads its timer from the
  // headers again, so `timer` is not used.
  static void resolveAdFromTaskResponse(const VeltoTaskResponsePointer& response,
                                        std::optional<int64_t> bannerSize, std::string html,
                                        std::optional<double> timer,
                                        const VeltoAdCompletion& completionHandler);
};

}  // namespace velto
