// The start of a session, as the service script reads it.
#include "velto/measurement/SessionStart.h"

#include "velto/measurement/OMIDVeltoSDK.h"
#include "velto/network/VeltoDevice.h"
#include "velto/platform/NSBundle.h"
#include "velto/platform/Platform.h"
#include "velto/platform/UIDevice.h"

namespace velto {
namespace {

JSON::Object contextOf(const OMIDVeltoAdSessionContext& context) {
  const std::string version = OMIDVeltoSDK::versionString();
  const UIDevice& device = Platform::current().device();
  JSON::Object app{{"libraryVersion", version}};
  if (auto identifier = Platform::current().mainBundle().bundleIdentifier())
    app["appId"] = std::move(*identifier);
  JSON::Object result{{"apiVersion", "1.0"},
                      {"environment", "app"},
                      {"adSessionType", context.isNative ? "native" : "html"},
                      {"sessionOwner", "native"},
                      {"supports", JSON::Array{"clid", "vlid"}},
                      {"omidNativeInfo", JSON::Object{{"partnerName", context.partner->name()},
                                                      {"partnerVersion", context.partner->versionString()}}},
                      {"omidJsInfo", JSON::Object{{"omidImplementer", "velto"}, {"serviceVersion", version}}},
                      {"app", std::move(app)},
                      {"deviceInfo", JSON::Object{{"deviceType", VeltoDevice::model()},
                                                  {"os", device.systemName()},
                                                  {"osVersion", device.systemVersion()}}},
                      {"deviceCategory", device.isCarried() ? "mobile" : "desktop"}};
  if (context.customReferenceIdentifier && !context.customReferenceIdentifier->empty())
    result["customReferenceData"] = *context.customReferenceIdentifier;
  return result;
}

JSON::Array resourcesOf(const OMIDVeltoAdSessionContext& context, bool isolated,
                        const std::vector<std::string>& lossWords) {
  JSON::Array result;
  for (const auto& resource : context.resources) {
    JSON::Object entry{{"resourceUrl", resource->URL().absoluteString()},
                       {"accessMode", isolated ? "limited" : "full"}};
    if (resource->vendorKey()) entry["vendorKey"] = *resource->vendorKey();
    if (resource->parameters()) entry["verificationParameters"] = *resource->parameters();
    if (result.size() < lossWords.size()) entry["loss"] = lossWords[result.size()];
    result.emplace_back(std::move(entry));
  }
  return result;
}

}  // namespace

JSON::Object sessionStart(const std::string& identifier, const OMIDVeltoAdSessionConfiguration& configuration,
                          const OMIDVeltoAdSessionContext& context, const Viewability& seen,
                          const std::vector<std::string>& lossWords) {
  JSON::Object result{{"adSessionId", identifier},
                      {"context", contextOf(context)},
                      {"creativeType", OMIDVeltoName(configuration.creativeType)},
                      {"impressionType", OMIDVeltoName(configuration.impressionType)},
                      {"impressionOwner", OMIDVeltoName(configuration.impressionOwner)},
                      {"mediaEventsOwner", OMIDVeltoName(configuration.mediaEventsOwner)},
                      {"deviceVolume", OMIDVeltoSDK::sharedInstance()->deviceVolume()},
                      {"geometry", seen.json()}};
  if (configuration.isolateVerificationScripts) result["isolated"] = true;
  if (OMIDVeltoSDK::sharedInstance()->tracer()) result["trace"] = true;
  if (context.contentUrl) result["contentUrl"] = *context.contentUrl;
  if (!context.resources.empty())
    result["resources"] = resourcesOf(context, configuration.isolateVerificationScripts, lossWords);
  return result;
}

}  // namespace velto
