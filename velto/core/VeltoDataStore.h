// The only door to persisted configuration, in the host application's defaults store. Written through at
// once, read back on each use, so a value set is in the next request. Any thread, but for
// updateUserAgentFromWKWebView.
#pragma once

#include "velto/platform/NSUserDefaults.h"

#include <memory>
#include <optional>
#include <string>

namespace velto {

class WKWebView;

class VeltoDataStore {
 public:
  static std::optional<std::string> getStringForKey(const std::string& key);
  static bool getBoolForKey(const std::string& key);  // false when absent
  static std::optional<DefaultsDictionary> getDictionaryForKey(const std::string& key);
  // False when the store failed. No value removes the key.
  static bool storeValue(const std::optional<DefaultsValue>& value, const std::string& forKey);
  static bool resetValueForKey(const std::string& key);
  // Changes one entry of a dictionary (made if absent): the same as changing and storing the whole, at a cost
  // that does not grow with it. Nothing removes the entry. False when the store failed.
  static bool storeEntry(const std::string& entry, const std::optional<std::string>& value,
                         const std::string& forKey);

  static std::optional<std::string> getVeltoKey();
  static std::string getVeltoFromNonNative();  // "native" unless a wrapper named itself
  static std::optional<std::string> _getVeltoFromNonNative();
  static std::optional<std::string> getVeltoEndpoint();
  static bool isPersonalInfoContentAccepted();
  static std::optional<std::string> getGDPRConsent();
  static std::optional<std::string> getUsPrivacy();
  static bool isTestMode();
  // The stored one; else one made from the device, which is then stored.
  static std::string getUserAgent();
  // Whether an ad was on the screen in this run or an earlier one: its engine has said what it calls itself.
  static bool hasShownAds();

  // Registers a key. Resets test mode, endpoint and all consent first; the first key of an installation is
  // tracked.
  static void storeVeltoKey(const std::optional<std::string>& key,
                            const std::optional<std::string>& fromNonNative, bool testMode);
  // Nothing becomes "native".
  static void storeVeltoFromNonNative(const std::optional<std::string>& platform);
  static void storeVeltoEndpoint(const std::optional<std::string>& endpoint);
  static void storePersonalInfoContentAccepted(bool accepted);
  static void storeGDPRConsent(const std::optional<std::string>& consent);
  static void storeUSPrivacy(const std::optional<std::string>& privacy);
  static void storeTestMode(bool testMode);
  static bool _updateUserAgent(const std::optional<std::string>& userAgent);
  static void _initDefaultValuesFromNonNative(const std::optional<std::string>& fromNonNative, bool testMode);

  // Asks a live web view what its engine calls itself, later on the main queue, and stores the answer.
  static void updateUserAgentFromWKWebView(const std::shared_ptr<WKWebView>& webView);
};

}  // namespace velto
