// The JSON body of an ad request: one flat object about the library, the device, the application, the place,
// the user's settings and the privacy state.
#include "velto/core/VeltoDataStore.h"
#include "velto/core/VeltoFramework.h"
#include "velto/core/VeltoUtilities.h"
#include "velto/network/VeltoAdvertisingIdentifier.h"
#include "velto/network/VeltoDevice.h"
#include "velto/network/VeltoTaskRequest.h"
#include "velto/platform/NSBundle.h"
#include "velto/platform/Platform.h"
#include "velto/platform/UIDevice.h"
#include "velto/platform/foundation/Text.h"

#include <array>
#include <cmath>
#include <mutex>
#include <stdexcept>

namespace velto {
namespace {

constexpr float mraidVersion = 3.0F;
constexpr float omsdkVersion = 1.0F;
constexpr std::array genderWords{"male", "female", "Other"};
constexpr std::array maritalWords{"Single", "Living Common", "Married", "Divorced", "Widowed"};

// A value that the server must have; without it there is no request.
void setRequired(JSON::Object& parameters, const char* key, const std::optional<std::string>& value) {
  if (!value) throw std::invalid_argument(std::string("no value for ") + key);
  parameters[key] = *value;
}

template <class T>
void setIfKnown(JSON::Object& parameters, std::initializer_list<const char*> keys,
                const std::optional<T>& value) {
  if (!value) return;
  for (const auto* key : keys) parameters[key] = *value;
}

// "+1.0000" for UTC+1, "-0.0000" for UTC, "--5.0000" for UTC-5: whole hours and never minutes, a minus for
// zero and a second one for the west. The server parses what it has always received.
std::string timeZoneWord(int secondsFromGMT) {
  const int hours = secondsFromGMT / 3600;
  const int minutes = std::abs(hours - hours);
  const char* sign = secondsFromGMT > 3599 ? "+" : "-";
  const std::string minuteDigits = (minutes < 10 ? "0" : "") + std::to_string(minutes);
  return sign + fixedDecimals(hours, 2) + minuteDigits;
}

}  // namespace

// Written anew only when something in it has changed, which between two refreshes is seldom.
std::optional<std::string> VeltoTaskRequest::httpBodyFor(const std::optional<VeltoSettings>& settings) {
  static std::mutex mutex;
  static JSON lastParameters;
  static std::optional<std::string> lastText;
  JSON parameters(_postParametersForSettings(settings));
  std::lock_guard lock(mutex);
  if (!lastText || !(parameters == lastParameters)) {
    lastText = writeJSON(parameters, true);
    lastParameters = std::move(parameters);
  }
  return lastText;
}

JSON::Object VeltoTaskRequest::_postParametersForSettings(const std::optional<VeltoSettings>& settings) {
  JSON::Object parameters;
  parameters[constParamSDKType] = VeltoDataStore::getVeltoFromNonNative();
  parameters[constParamSDKVersion] = VeltoFramework::versionSDK();
  parameters[constParamMRAID] = mraidVersion;
  parameters[constParamOMSDK] = omsdkVersion;
  parameters[constParamGoogleAdapter] = VeltoUtilities::isGoogleAdMobAvailable() ? 1 : 0;
  _fillTracconstParameters(parameters);
  _fillDeviceDataParameters(parameters);
  _fillAppDataParameters(parameters);
  _fillGeoDataParameters(parameters);
  _fillVeltoSettingsDataParameters(parameters, settings);
  _fillPrivacyDataParameters(parameters);
  return parameters;
}

void VeltoTaskRequest::_fillTracconstParameters(JSON::Object& parameters) {
  setIfKnown(parameters, {constParamIDFA}, VeltoAdvertisingIdentifier::advertisingIdentifier());
  parameters[constParamVeltoID] = VeltoAdvertisingIdentifier::veltoIdentifier();
  parameters[constParamTrackLimited] = VeltoAdvertisingIdentifier::isTrackingLimited() ? "1" : "";
}

void VeltoTaskRequest::_fillDeviceDataParameters(JSON::Object& parameters) {
  parameters[constParamDeviceManufacturerName] = VeltoDevice::manufacturerName();
  parameters[constParamDeviceModel] = VeltoDevice::model();
  parameters[constParamDeviceName] = VeltoDevice::modelProductName();
  parameters[constParamDeviceOS] = VeltoDevice::os();
  parameters[constParamDeviceOSVersion] = VeltoDevice::systemVersion();
  parameters[constParamDeviceScreenWidth] = VeltoDevice::screenSize().width;
  parameters[constParamDeviceScreenHeight] = VeltoDevice::screenSize().height;
  parameters[constParamDeviceScreenDensity] = VeltoDevice::screenScale();
  parameters[constParamDeviceUserAgent] = VeltoDataStore::getUserAgent();
  setRequired(parameters, constParamDeviceLanguage, VeltoDevice::language());
  parameters[constParamDeviceConnection] = VeltoDevice::connection();
  setIfKnown(parameters, {constParamDeviceConnectionType}, VeltoDevice::connectionType());
  setIfKnown(parameters, {constParamDeviceSimOperatoreCode, constParamDeviceNetworkOperatorCode},
             VeltoDevice::mobileNetworkCode());
  setIfKnown(parameters, {constParamDeviceSimOperatoreName, constParamDeviceNetworkOperatorName},
             VeltoDevice::simOperatorName());
  setIfKnown(parameters, {constParamDeviceNetworkOperatorCountry, constParamDeviceSimOperatorCountry},
             VeltoDevice::mobileCountryCode());
}

void VeltoTaskRequest::_fillAppDataParameters(JSON::Object& parameters) {
  const auto& bundle = Platform::current().mainBundle();
  const auto languages = bundle.preferredLocalizations();
  const auto info = bundle.infoDictionary();
  const auto name = info ? info->find(constAppName) : decltype(info->find(constAppName)){};
  setRequired(parameters, constParamAppLanguage,
              languages.empty() ? std::nullopt : std::optional(languages.front()));
  setRequired(parameters, constParamAppBundleID, bundle.bundleIdentifier());
  setRequired(parameters, constParamAppName,
              info && name != info->end() ? std::optional(name->second) : std::nullopt);
}

void VeltoTaskRequest::_fillGeoDataParameters(JSON::Object& parameters) {
  parameters[constParamGeoTimezone] = timeZoneWord(Platform::current().localTimeZone().secondsFromGMT());
  if (!VeltoDevice::isLocationServiceEnabled()) return;
  const auto latitude = VeltoDevice::locationLatitude();
  const auto longitude = VeltoDevice::locationLongitude();
  const auto accuracy = VeltoDevice::locationAccuracy();
  const auto timestamp = VeltoDevice::locationTimestampInMilliseconds();
  if (!latitude || !longitude || !accuracy || !timestamp) return;
  parameters[constParamGeoCoordinate] = fixedDecimals(*latitude, 6) + "," + fixedDecimals(*longitude, 6);
  if (*accuracy >= 0) parameters[constParamGeoAccuracy] = *accuracy;
  parameters[constParamGeoLastUpdated] = *timestamp;
}

void VeltoTaskRequest::_fillVeltoSettingsDataParameters(JSON::Object& parameters,
                                                        const std::optional<VeltoSettings>& settings) {
  if (!settings) return;
  setIfKnown(parameters, {constParamMediator}, settings->getMediation());
  if (const auto& keywords = settings->getKeywords()) parameters[constParamKeywords] = join(*keywords, ",");
  if (settings->getYearOfBirth() >= 1) parameters[constParamUserYearOfBirth] = settings->getYearOfBirth();
  if (settings->getAge() >= 1) parameters[constParamUserAge] = settings->getAge();
  if (settings->getGender() >= 0)
    parameters[constParamUserGender] = genderWords.at(static_cast<size_t>(settings->getGender()));
  if (settings->getMarital() >= 0)
    parameters[constParamUserMarital] = maritalWords.at(static_cast<size_t>(settings->getMarital()));
}

void VeltoTaskRequest::_fillPrivacyDataParameters(JSON::Object& parameters) {
  const bool accepted = VeltoDataStore::isPersonalInfoContentAccepted();
  parameters[constParamGDPR] = accepted;
  setIfKnown(parameters, {constParamGDPRConsent}, VeltoDataStore::getGDPRConsent());
  parameters[constParamGDPRDC] = accepted;
  setIfKnown(parameters, {constParamPrivacy}, VeltoDataStore::getUsPrivacy());
}

}  // namespace velto
