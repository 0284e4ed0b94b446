// The verification script.
#include "velto/measurement/OMIDVeltoVerificationScriptResource.h"

#include "velto/measurement/OMIDVeltoSDK.h"

namespace velto {

using Resource = OMIDVeltoVerificationScriptResource;

std::shared_ptr<const Resource> Resource::initWithURL(const NSURL& url, const std::string& vendorKey,
                                                      const std::string& parameters) {
  if (!OMIDVeltoSDK::sharedInstance()->isActive() || vendorKey.empty() || parameters.empty()) return nullptr;
  return std::shared_ptr<const Resource>(new Resource(url, vendorKey, parameters));
}

std::shared_ptr<const Resource> Resource::initWithURL(const NSURL& url) {
  if (!OMIDVeltoSDK::sharedInstance()->isActive()) return nullptr;
  return std::shared_ptr<const Resource>(new Resource(url, std::nullopt, std::nullopt));
}

Resource::OMIDVeltoVerificationScriptResource(NSURL url, std::optional<std::string> vendorKey,
                                              std::optional<std::string> parameters)
    : url_(std::move(url)), vendorKey_(std::move(vendorKey)), parameters_(std::move(parameters)) {}

}  // namespace velto
