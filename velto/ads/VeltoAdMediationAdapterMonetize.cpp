// Monetize: one more exchange with the ad server.
#include "velto/ads/VeltoAdMediationAdapterMonetize.h"

#include "velto/ads/VeltoAdResolver.h"
#include "velto/network/VeltoTaskManager.h"

namespace velto {

void VeltoAdMediationAdapterMonetize::adapt(const Item& item, std::optional<int64_t> /*bannerSize*/,
                                            const Headers& /*headers*/, uint64_t adType,
                                            const VeltoAdCompletion& completionHandler) {
  const auto data = item && item->e() ? item->e()->data() : std::nullopt;
  if (!data) return fail(completionHandler, VeltoAdEndReason::ItemWithoutData);
  std::make_shared<VeltoAdMediationAdapterMonetize>()->_init(*data, adType, completionHandler);
}

void VeltoAdMediationAdapterMonetize::_init(const std::string& data, uint64_t adType,
                                            const VeltoAdCompletion& completionHandler) {
  adType_ = adType;
  VeltoTaskManager::executeTaskForMediationItemData(
      data, [completionHandler](const VeltoTaskResponsePointer& response) {
        VeltoAdManagerAdResolver::handleTaskResponse(response, std::nullopt, completionHandler);
      });
}

}  // namespace velto
