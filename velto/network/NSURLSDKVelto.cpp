// Opening URLs, and telling commands from links.
#include "velto/network/NSURLSDKVelto.h"

#include "velto/core/VeltoInspector.h"
#include "velto/platform/Platform.h"
#include "velto/platform/UIApplication.h"
#include "velto/platform/UIDevice.h"

namespace velto::SDKVelto {
namespace {

// Only an inspector wants to know how it ended.
std::function<void(bool)> toldToInspector(const NSURL& url) {
  if (!VeltoInspector::current()) return nullptr;
  return [address = url.absoluteString()](bool opened) {
    inspect("open", [&] { return JSON::Object{{"url", address}, {"opened", opened}}; });
  };
}

}  // namespace

void open(const NSURL& url) {
  auto& platform = Platform::current();
  if (platform.device().isSystemVersionAtLeast(10))
    platform.application().openURL(url, {}, toldToInspector(url));
  else
    platform.application().openURL(url);
}

NSURL URLByResolvingImplicitScheme(const NSURL& url) {
  if (Platform::current().application().canOpenURL(url) || url.scheme()) return url;
  return url.URLByAddingScheme("https").value_or(url);
}

bool isAdMRAIDHandler(const NSURL& url) {
  return url.absoluteString().find(constAdMRAIDHandler) != std::string::npos;
}

}  // namespace velto::SDKVelto
