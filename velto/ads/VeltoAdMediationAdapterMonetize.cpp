// Monetize: one more exchange with the ad server.
#include "velto/ads/VeltoAdMediationAdapterMonetize.h"

#include "velto/network/VeltoTaskManager.h"
#include "velto/platform/foundation/Description.h"

namespace velto {

void VeltoAdMediationAdapterMonetize::adapt(const std::shared_ptr<VeltoMediationItemResponse>& item,
                                            uint64_t adType, VeltoAdCompletion completionHandler) {
  const auto data = item && item->e() ? item->e()->data() : std::nullopt;
  if (data)
    return std::make_shared<VeltoAdMediationAdapterMonetize>()->_init(*data, adType,
                                                                      std::move(completionHandler));
  if (completionHandler) completionHandler(nullptr, VeltoErrorAd::veltoErrorAdWithCode(VeltoErrorDeveloper));
}

void VeltoAdMediationAdapterMonetize::_init(const std::string& data, uint64_t adType,
                                            VeltoAdCompletion completionHandler) {
  adType_ = adType;
  VeltoTaskManager::executeTaskForMediationItemData(
      data, [completion = std::move(completionHandler)](const VeltoTaskResponsePointer& response) {
        VeltoAdManagerAdResolver::handleTaskResponse(response, std::nullopt, completion);
      });
}

std::string VeltoAdMediationAdapterMonetize::description() const {
  return Description("VeltoAdMediationAdapterMonetize", this).field("AdType", adType_).text();
}

}  // namespace velto
