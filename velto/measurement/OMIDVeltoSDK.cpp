// The one engine of a platform.
#include "velto/measurement/OMIDVeltoSDK.h"

#include "velto/core/SDKVeltoBundle.h"
#include "velto/platform/AVAudioSession.h"
#include "velto/platform/Platform.h"
#include "velto/platform/UIApplication.h"
#include "velto/platform/ui/ViewChanges.h"

namespace velto {

std::shared_ptr<OMIDVeltoSDK> OMIDVeltoSDK::sharedInstance() {
  return Platform::shared<OMIDVeltoSDK>();
}

std::string OMIDVeltoSDK::versionString() {
  return SDKVelto::veltoVersionSDK();
}

bool OMIDVeltoSDK::activate() {
  if (active_.exchange(true)) return true;
  auto& center = Platform::current().notificationCenter();
  const auto observe = [&](const char* name, bool inBackground) {
    return center.addObserver(name, [this, inBackground](const NSNotification&) {
      inBackground_ = inBackground;
      ViewChanges::note();
    });
  };
  foreground_ = observe(UIApplicationWillEnterForegroundNotification, false);
  background_ = observe(UIApplicationDidEnterBackgroundNotification, true);
  const auto look = [](const NSNotification&) { ViewChanges::note(); };
  locked_ = center.addObserver(UIApplicationProtectedDataWillBecomeUnavailable, look);
  unlocked_ = center.addObserver(UIApplicationProtectedDataDidBecomeAvailable, look);
  return true;
}

bool OMIDVeltoSDK::isDeviceLocked() {
  return !Platform::current().application().isProtectedDataAvailable();
}

double OMIDVeltoSDK::deviceVolume() const {
  return AVAudioSession::sharedInstance().outputVolume();
}

}  // namespace velto
