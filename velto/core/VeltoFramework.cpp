// The entry: a thin face over the store, the tracker and the measurement engine.
#include "velto/core/VeltoFramework.h"

#include "velto/core/SDKVeltoBundle.h"
#include "velto/core/VeltoDataStore.h"
#include "velto/measurement/OMSDK.h"
#include "velto/network/VeltoTaskManager.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"
#include "velto/platform/ViewSystem.h"
#include "velto/platform/foundation/Text.h"
#include "velto/platform/ui/UIViewController.h"
#include "velto/tracking/VeltoTrackerManager.h"

namespace velto {

void VeltoFramework::addVeltoKey(const std::string& key) {
  _initFrameworkWithKey(key, std::nullopt, false);
}

void VeltoFramework::addVeltoKey(const std::string& key, const std::optional<std::string>& fromNonNative) {
  _initFrameworkWithKey(key, fromNonNative, false);
}

void VeltoFramework::addVeltoKey(const std::string& key, bool testMode) {
  _initFrameworkWithKey(key, std::nullopt, testMode);
}

void VeltoFramework::_initFrameworkWithKey(const std::string& key,
                                           const std::optional<std::string>& fromNonNative, bool testMode) {
  VeltoDataStore::storeVeltoKey(key, fromNonNative, testMode);
  VeltoTrackerManager::start();
  OMSDK::initOMSDK();
  if (!VeltoDataStore::hasShownAds()) return;
  Platform::current().mainQueue().post([] {
    if (auto* platform = Platform::currentOrNull())
      platform->views().expectWebContent(VeltoTaskManager::connectAhead);
  });
}

void VeltoFramework::setEndpoint(const std::optional<std::string>& endpoint) {
  VeltoDataStore::storeVeltoEndpoint(endpoint);
}
void VeltoFramework::acceptPersonalInfoContent(bool accepted) {
  VeltoDataStore::storePersonalInfoContentAccepted(accepted);
}
void VeltoFramework::setGDPRConsent(const std::optional<std::string>& consent) {
  VeltoDataStore::storeGDPRConsent(consent);
}
void VeltoFramework::setUsPrivacy(const std::optional<std::string>& privacy) {
  VeltoDataStore::storeUSPrivacy(privacy);
}

std::string VeltoFramework::versionSDK() {
  return SDKVelto::veltoVersionSDK();
}
int64_t VeltoFramework::version() {
  return leadingInteger(replaceAll(versionSDK(), ".", ""));
}

uint64_t VeltoFramework::getUIInterfaceOrientationMaskFrom(const NSNotification& notification) {
  const auto* mask = std::get_if<int64_t>(&notification.object);
  return mask ? static_cast<uint64_t>(*mask) : UIInterfaceOrientationMaskAll;
}

}  // namespace velto
