// Opening URLs, and telling commands from links.
#include "velto/network/NSURLSDKVelto.h"

#include "velto/platform/Platform.h"
#include "velto/platform/UIApplication.h"
#include "velto/platform/UIDevice.h"

namespace velto::SDKVelto {

void open(const NSURL& url) {
  auto& platform = Platform::current();
  if (platform.device().isSystemVersionAtLeast(10))
    platform.application().openURL(url, {}, nullptr);
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
