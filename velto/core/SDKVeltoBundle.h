// The library's own bundle and its resources, on the platform's bundle class. Any thread.
#pragma once

#include "velto/platform/NSBundle.h"

#include <map>
#include <memory>
#include <optional>
#include <string>

namespace velto::SDKVelto {

std::shared_ptr<NSBundle> veltoBundle();  // null when the platform knows none
// Among the application's resources, else the library's bundle.
std::shared_ptr<NSBundle> veltoResourcesBundle();
std::optional<std::map<std::string, std::string>> _veltoInfoDictionary();
std::string veltoVersionSDK();  // such as "4.0.10"

}  // namespace velto::SDKVelto
