// Where a host application begins: register the publisher key, then pass consent. Everything is written to
// the store at once and is in the next request. Any thread; a platform must be installed
// (velto::gtk::install).
#pragma once

#include "velto/platform/NSNotificationCenter.h"

#include <cstdint>
#include <optional>
#include <string>

namespace velto {

class VeltoFramework {
 public:
  // Registers the key. Every registration resets test mode, endpoint and all consent, so call those below
  // after it.
  static void addVeltoKey(const std::string& key);
  // For wrappers and plug-ins, which name themselves; applications leave it out ("native").
  static void addVeltoKey(const std::string& key, const std::optional<std::string>& fromNonNative);
  // Test mode asks the server for test ads.
  static void addVeltoKey(const std::string& key, bool testMode);
  static void addVeltoKey(const std::string& key, const char* fromNonNative) {
    addVeltoKey(key, std::optional<std::string>(fromNonNative));
  }

  // A custom endpoint: ad requests go to this sub-domain of the publisher host. Empty: the ad server.
  static void setEndpoint(const std::optional<std::string>& endpoint);

  static void acceptPersonalInfoContent(bool accepted);
  static void setGDPRConsent(
      const std::optional<std::string>& consent);  // the consent string, sent as it stands
  static void setUsPrivacy(const std::optional<std::string>& privacy);  // the US privacy string, likewise

  static std::string versionSDK();  // "4.0.10"
  static int64_t version();         // 4010

  // The orientations (a mask; 30 is all) that the host's own view controllers should allow, from the
  // notification VeltoNotificationUIInterfaceOrientationMaskLock.
  static uint64_t getUIInterfaceOrientationMaskFrom(const NSNotification& notification);

  static void _initFrameworkWithKey(const std::string& key, const std::optional<std::string>& fromNonNative,
                                    bool testMode);
};

}  // namespace velto
