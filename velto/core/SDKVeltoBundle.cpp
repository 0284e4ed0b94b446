// Where the library's resources and version come from.
#include "velto/core/SDKVeltoBundle.h"

#include "velto/core/VeltoConstants.h"
#include "velto/platform/Platform.h"

namespace velto::SDKVelto {

std::shared_ptr<NSBundle> veltoBundle() {
  return Platform::current().bundleWithIdentifier(constVeltoBundleIdentifier);
}

std::shared_ptr<NSBundle> veltoResourcesBundle() {
  if (auto bundle =
          Platform::current().mainBundle().bundleForResource(constVeltoResourcesBundleName, "bundle"))
    return bundle;
  return veltoBundle();
}

std::optional<std::map<std::string, std::string>> _veltoInfoDictionary() {
  const auto bundle = veltoBundle();
  return bundle ? bundle->infoDictionary() : std::nullopt;
}

std::string veltoVersionSDK() {
  const auto info = _veltoInfoDictionary();
  if (!info) return kVeltoSDKVersion;
  const auto version = info->find(constVeltoVersionStringKey);
  return version == info->end() || version->second.empty() ? kVeltoSDKVersion : version->second;
}

}  // namespace velto::SDKVelto
