// Configuration in the defaults store.
#include "velto/core/VeltoDataStore.h"

#include "velto/core/PrivacyValues.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"
#include "velto/platform/UIDevice.h"
#include "velto/platform/foundation/Text.h"
#include "velto/platform/ui/WKWebView.h"
#include "velto/tracking/VeltoTrackerManager.h"

#include <exception>
#include <mutex>

namespace velto {
namespace {

constexpr char keyClientId[] = "kVeltoClientIdKey";
constexpr char keyUserAgent[] = "kVeltoUserAgentKey";
constexpr char keyTestMode[] = "constVeltoTestMode";
constexpr char keyPlatform[] = "constVeltoPlatform";
constexpr char keyEndpoint[] = "constVeltoEndpoint";
constexpr char keyGDPROptin[] = "kVeltoGDPROptin";
constexpr char keyGDPRConsent[] = "kVeltoGDPRConsent";
constexpr char keyCCPAConsent[] = "kVeltoCCPAConsent";
constexpr char nativePlatform[] = "native";
constexpr char fallbackUserAgentEnd[] =
    " like Mac OS X) AppleWebKit/605.1.15 (KHTML, like Gecko) Mobile/15E148";

NSUserDefaults& defaults() {
  return Platform::current().standardUserDefaults();
}

// Nothing for a value of another kind.
template <class T>
std::optional<T> as(std::optional<DefaultsValue> value) {
  T* held = value ? std::get_if<T>(&*value) : nullptr;
  return held ? std::optional(std::move(*held)) : std::nullopt;
}

template <class T>
std::optional<T> valueForKey(const std::string& key) {
  return as<T>(defaults().objectForKey(key));
}

// The store's exceptions end here: a failed write is only told by the result. That there is no store at all
// is the caller's fault, and not kept quiet.
template <class Change>
bool changed(const Change& change) {
  auto& store = defaults();
  try {
    change(store);
    store.synchronize();
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

std::optional<DefaultsValue> asValue(const std::optional<std::string>& text) {
  return text ? std::optional<DefaultsValue>(*text) : std::nullopt;
}

DefaultsValue asValue(bool flag) {
  return flag ? 1.0 : 0.0;
}

std::string fallbackUserAgent() {
  auto& device = Platform::current().device();
  const std::string version = replaceAll(device.systemVersion(), ".", "_");
  const std::string word = device.userInterfaceIdiom() == UIUserInterfaceIdiom::Pad ? "iPad" : "iPhone";
  return "Mozilla/5.0 (" + word + "; CPU " + word + " OS " + version + fallbackUserAgentEnd;
}

}  // namespace

std::optional<std::string> VeltoDataStore::getStringForKey(const std::string& key) {
  return valueForKey<std::string>(key);
}

bool VeltoDataStore::getBoolForKey(const std::string& key) {
  return valueForKey<double>(key).value_or(0) != 0;
}

std::optional<DefaultsDictionary> VeltoDataStore::getDictionaryForKey(const std::string& key) {
  return valueForKey<DefaultsDictionary>(key);
}

bool VeltoDataStore::storeValue(const std::optional<DefaultsValue>& value, const std::string& forKey) {
  if (!value) return resetValueForKey(forKey);
  return changed([&](NSUserDefaults& store) { store.setObject(forKey, *value); });
}

bool VeltoDataStore::resetValueForKey(const std::string& key) {
  return changed([&](NSUserDefaults& store) { store.removeObjectForKey(key); });
}

bool VeltoDataStore::storeEntry(const std::string& entry, const std::optional<std::string>& value,
                                const std::string& forKey) {
  return changed([&](NSUserDefaults& store) { store.setEntry(forKey, entry, value); });
}

std::optional<std::string> VeltoDataStore::getVeltoKey() {
  return getStringForKey(keyClientId);
}
std::string VeltoDataStore::getVeltoFromNonNative() {
  return _getVeltoFromNonNative().value_or(nativePlatform);
}
std::optional<std::string> VeltoDataStore::_getVeltoFromNonNative() {
  return getStringForKey(keyPlatform);
}
std::optional<std::string> VeltoDataStore::getVeltoEndpoint() {
  return getStringForKey(keyEndpoint);
}
bool VeltoDataStore::isPersonalInfoContentAccepted() {
  return as<double>(PrivacyValues::value(keyGDPROptin)).value_or(0) != 0;
}
std::optional<std::string> VeltoDataStore::getGDPRConsent() {
  return as<std::string>(PrivacyValues::value(keyGDPRConsent));
}
std::optional<std::string> VeltoDataStore::getUsPrivacy() {
  return as<std::string>(PrivacyValues::value(keyCCPAConsent));
}
bool VeltoDataStore::isTestMode() {
  return getBoolForKey(keyTestMode);
}

std::string VeltoDataStore::getUserAgent() {
  if (auto stored = getStringForKey(keyUserAgent)) return *stored;
  auto fallback = fallbackUserAgent();
  _updateUserAgent(fallback);
  return fallback;
}

bool VeltoDataStore::hasShownAds() {
  const auto stored = getStringForKey(keyUserAgent);
  return stored && !stored->ends_with(fallbackUserAgentEnd);  // whatever system it was made for
}

void VeltoDataStore::storeVeltoKey(const std::optional<std::string>& key,
                                   const std::optional<std::string>& fromNonNative, bool testMode) {
  const bool firstOfInstallation = [&] {
    static std::mutex oneAtATime;  // of several threads only one is the first
    std::lock_guard lock(oneAtATime);
    _initDefaultValuesFromNonNative(fromNonNative, testMode);
    const bool first = !getVeltoKey();
    storeValue(asValue(key), keyClientId);
    return first;
  }();
  if (firstOfInstallation) VeltoTrackerManager::trackInstall();
}

// Consent given before a registration is meant for the key before it, so it does not outlive it.
void VeltoDataStore::_initDefaultValuesFromNonNative(const std::optional<std::string>& fromNonNative,
                                                     bool testMode) {
  storeVeltoFromNonNative(fromNonNative);
  storeTestMode(testMode);
  storeVeltoEndpoint("");
  storePersonalInfoContentAccepted(false);
  storeGDPRConsent("");
  storeUSPrivacy("");
}

void VeltoDataStore::storeVeltoFromNonNative(const std::optional<std::string>& platform) {
  storeValue(platform.value_or(nativePlatform), keyPlatform);
}
void VeltoDataStore::storeVeltoEndpoint(const std::optional<std::string>& endpoint) {
  storeValue(asValue(endpoint), keyEndpoint);
}
void VeltoDataStore::storePersonalInfoContentAccepted(bool accepted) {
  PrivacyValues::store(keyGDPROptin, asValue(accepted));
}
void VeltoDataStore::storeGDPRConsent(const std::optional<std::string>& consent) {
  PrivacyValues::store(keyGDPRConsent, asValue(consent));
}
void VeltoDataStore::storeUSPrivacy(const std::optional<std::string>& privacy) {
  PrivacyValues::store(keyCCPAConsent, asValue(privacy));
}
void VeltoDataStore::storeTestMode(bool testMode) {
  storeValue(asValue(testMode), keyTestMode);
}
bool VeltoDataStore::_updateUserAgent(const std::optional<std::string>& userAgent) {
  return storeValue(asValue(userAgent), keyUserAgent);
}

void VeltoDataStore::updateUserAgentFromWKWebView(const std::shared_ptr<WKWebView>& webView) {
  Platform::current().mainQueue().post([weak = std::weak_ptr(webView)] {
    const auto view = weak.lock();
    if (!view) return;
    view->evaluateJavaScript("navigator.userAgent",
                             [](std::optional<JSON> result, std::optional<NSError> error) {
                               const auto* text = result && !error ? result->string() : nullptr;
                               if (text && Platform::currentOrNull()) _updateUserAgent(*text);
                             });
  });
}

}  // namespace velto
