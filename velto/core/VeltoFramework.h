// Where a host application begins: install a platform (velto::gtk::install), register the publisher key, then
// pass consent. Everything is written to the store at once and is in the next request. Any thread.
//
// Before a platform is installed there is nothing to write to or read from: every operation here but
// getUIInterfaceOrientationMaskFrom then throws std::logic_error, and has done nothing. Later a store that
// fails is not reported. Where a text may be absent, a null pointer is as good as std::nullopt.
#pragma once

#include "velto/Export.h"
#include "velto/platform/NSNotificationCenter.h"

#include <cstdint>
#include <optional>
#include <string>

namespace velto {

class VELTO_EXPORT VeltoFramework {
 public:
  // Registers the key. Every registration resets test mode, endpoint and all consent, so call those below
  // after it.
  static void addVeltoKey(const std::string& key);
  // For wrappers and plug-ins, which name themselves; applications leave it out ("native").
  static void addVeltoKey(const std::string& key, const std::optional<std::string>& fromNonNative);
  // Test mode asks the server for test ads.
  static void addVeltoKey(const std::string& key, bool testMode);
  static void addVeltoKey(const std::string& key, const char* fromNonNative) {
    addVeltoKey(key, textOf(fromNonNative));
  }

  // A custom endpoint: ad requests go to this sub-domain of the publisher host. Empty: the ad server.
  static void setEndpoint(const std::optional<std::string>& endpoint);
  static void setEndpoint(const char* endpoint) { setEndpoint(textOf(endpoint)); }

  static void acceptPersonalInfoContent(bool accepted);
  // The consent string and the US privacy string, sent as they stand; absent: not sent.
  static void setGDPRConsent(const std::optional<std::string>& consent);
  static void setGDPRConsent(const char* consent) { setGDPRConsent(textOf(consent)); }
  static void setUsPrivacy(const std::optional<std::string>& privacy);
  static void setUsPrivacy(const char* privacy) { setUsPrivacy(textOf(privacy)); }

  static std::string versionSDK();  // "4.0.10"
  static int64_t version();         // 4010

  // The orientations (a mask; 30 is all) that the host's own view controllers should allow, from the
  // notification VeltoNotificationUIInterfaceOrientationMaskLock.
  static uint64_t getUIInterfaceOrientationMaskFrom(const NSNotification& notification);

  static void _initFrameworkWithKey(const std::string& key, const std::optional<std::string>& fromNonNative,
                                    bool testMode);

 private:
  static std::optional<std::string> textOf(const char* text) {
    return text ? std::optional<std::string>(text) : std::nullopt;
  }
};

}  // namespace velto
