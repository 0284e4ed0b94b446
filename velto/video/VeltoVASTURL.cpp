// The query of a video ad request.
#include "velto/video/VeltoVASTURL.h"

#include "velto/core/VeltoDataStore.h"
#include "velto/network/VeltoAdvertisingIdentifier.h"
#include "velto/network/VeltoDevice.h"
#include "velto/network/VeltoParameterNames.h"
#include "velto/platform/NSBundle.h"
#include "velto/platform/Platform.h"
#include "velto/platform/foundation/Text.h"

namespace velto {
namespace {

constexpr char trafficSource[] = "app";
constexpr char digits[] = "0123456789";
constexpr size_t cacheBusterLength = 11;

using OptionalText = std::optional<std::string>;

VeltoVASTURL::Numbers kept(const VeltoVASTURL::Numbers& numbers, int64_t lowest, int64_t highest) {
  VeltoVASTURL::Numbers result;
  for (const auto number : numbers)
    if (number >= lowest && number <= highest) result.push_back(number);
  return result;
}

// Query items in the order in which they are added.
class Items {
 public:
  void add(const char* name, OptionalText value) { items_.push_back({name, std::move(value)}); }
  void add(const char* name, const char* value) { add(name, OptionalText(value)); }
  void add(const char* name, bool flag) { add(name, flag ? "1" : "0"); }
  void add(const char* name, uint64_t number) { add(name, OptionalText(std::to_string(number))); }
  void addNumber(const char* name, double number) { add(name, OptionalText(numberText(number))); }
  void addSixDecimals(const char* name, double number) { add(name, OptionalText(fixedDecimals(number, 6))); }
  void add(const char* name, const VeltoVASTURL::Numbers& numbers) {
    std::vector<std::string> texts;
    for (const auto number : numbers) texts.push_back(std::to_string(number));
    add(name, OptionalText(join(texts, ",")));
  }
  void addIfKnown(const char* name, const OptionalText& value) {
    if (value) add(name, value);
  }
  void addIfKnown(const char* name, std::optional<double> number) {
    if (number) addNumber(name, *number);
  }
  // The carrier's values travel under two names.
  void addIfKnown(const char* name, const char* secondName, const OptionalText& value) {
    addIfKnown(name, value);
    addIfKnown(secondName, value);
  }

  std::vector<NSURLQueryItem> items() && { return std::move(items_); }

 private:
  std::vector<NSURLQueryItem> items_;
};

}  // namespace

// --- making

std::optional<VeltoVASTURL> VeltoVASTURL::VASTURLforHost(const OptionalText& host,
                                                         const OptionalText& veltoKey, uint64_t videoPosition,
                                                         std::optional<double> with,
                                                         std::optional<double> height,
                                                         const OptionalText& applicationName,
                                                         const OptionalText& applicationStoreURL) {
  return initWithURLHost(host, veltoKey, videoPosition, with, height, applicationName, applicationStoreURL);
}

std::optional<VeltoVASTURL> VeltoVASTURL::initWithURLHost(const OptionalText& host,
                                                          const OptionalText& veltoKey,
                                                          uint64_t videoPosition, std::optional<double> with,
                                                          std::optional<double> height,
                                                          const OptionalText& applicationName,
                                                          const OptionalText& applicationStoreURL) {
  if (!_mandatoryParametersAreValid(host, veltoKey, with, height, applicationName, applicationStoreURL))
    return std::nullopt;
  VeltoVASTURL made;
  made.urlType = lowercased(*veltoKey).find("ctv") != std::string::npos ? 1 : 0;
  made.host = host;
  made.veltoKey = veltoKey;
  made.videoPosition = videoPosition;
  made.width = with;
  made.height = height;
  made.applicationName = applicationName;
  made.applicationStoreURL = applicationStoreURL;
  return made;
}

bool VeltoVASTURL::_mandatoryParametersAreValid(const OptionalText& host, const OptionalText& veltoKey,
                                                std::optional<double> with, std::optional<double> height,
                                                const OptionalText& applicationName,
                                                const OptionalText& applicationStoreURL) {
  return host && veltoKey && with && height && applicationName && applicationStoreURL;
}

bool VeltoVASTURL::_mandatoryParametersAreValid() const {
  return _mandatoryParametersAreValid(host, veltoKey, width, height, applicationName, applicationStoreURL);
}

void VeltoVASTURL::setMinDurationVideoSeconds(std::optional<double> seconds) {
  if (seconds) minDurationVideo = *seconds;
}
void VeltoVASTURL::setMaxDurationVideoSeconds(std::optional<double> seconds) {
  if (seconds) maxDurationVideo = *seconds;
}
void VeltoVASTURL::setVASTVideoFormat(const std::optional<Numbers>& formats) {
  if (formats) videoFormat = kept(*formats, 0, 3);
}
void VeltoVASTURL::setVASTVersion(const std::optional<Numbers>& versions) {
  if (versions) version = kept(*versions, 2, 3);
}

// --- the URL

std::optional<NSURL> VeltoVASTURL::URL() const {
  return _mandatoryParametersAreValid() ? _buildURL() : std::nullopt;
}

std::optional<std::string> VeltoVASTURL::stringURL() const {
  const auto url = URL();
  return url ? std::optional(url->absoluteString()) : std::nullopt;
}

std::optional<NSURL> VeltoVASTURL::_buildURL() const {
  const auto url = NSURL::URLWithString("https://" + host.value_or(""));
  return url ? std::optional(url->URLByReplacingQueryItems(_queryParameterItems())) : std::nullopt;
}

std::vector<NSURLQueryItem> VeltoVASTURL::_queryParameterItems() const {
  Items items;
  items.add(constParamVeltoKeyVAST, veltoKey);
  items.add(constParamOperatingSystem, VeltoDevice::os());
  items.add(constParamDeviceIp, VeltoDevice::ip());
  items.add(constParamTrafficSource, trafficSource);
  items.add(constParamAppBundleID, Platform::current().mainBundle().bundleIdentifier());
  items.add(constParamVideoPosition, videoPosition);
  items.addNumber(constParamVideoWidth, width.value_or(0));
  items.addNumber(constParamVideoHeight, height.value_or(0));
  items.addNumber(constParamVideoMinDuration, minDurationVideo);
  items.addNumber(constParamVideoMaxDuration, maxDurationVideo);
  items.add(constParamVideoFormat, videoFormat);
  items.add(constParamAppName, applicationName);
  items.add(constParamAppStoreUrl, applicationStoreURL);
  items.addIfKnown(constParamIDFA, VeltoAdvertisingIdentifier::advertisingIdentifier());
  items.add(constParamCacheBusting, _avoidCache());
  items.add(constParamGdprOptin, gdprOptin);
  items.addIfKnown(constParamGDPRConsent, gpdr);
  items.addIfKnown(constParamPrivacy, privacy);
  items.add(constParamTrackLimited, VeltoAdvertisingIdentifier::isTrackingLimited());
  items.add(constParamUserAgent, VeltoDataStore::getUserAgent());
  items.addIfKnown(constParamLatitude, VeltoDevice::locationLatitude());
  items.addIfKnown(constParamLongitude, VeltoDevice::locationLongitude());
  items.add(constParamVASTVersion, version);
  items.addIfKnown(constParamAppCategory, appCat);
  items.add(constParamVPAID, vpaid);
  if (vpaid) items.add(constParamVPAIDVersion, vpaidV);
  items.add(constParamVASTPlayback, playbackMethod);
  items.add(constParamSecure, "1");
  items.add(constParamOMSDK, omsdk);
  if (omsdk) {
    items.add(constParamOMSDKIdentifier, omsdkId);
    items.add(constParamOMSDKVersion, omsdkV);
  }
  items.add(constParamOSVersion, VeltoDevice::systemVersion());
  items.add(constParamCOPPA, coppa);
  items.add(constParamDeviceBrand, VeltoDevice::manufacturerName());
  items.add(constParamDeviceModelVAST, VeltoDevice::model());
  items.addSixDecimals(constParamDeviceWidth, VeltoDevice::screenSize().width);
  items.addSixDecimals(constParamDeviceHeight, VeltoDevice::screenSize().height);
  items.addSixDecimals(constParamDeviceDensity, VeltoDevice::screenScale());
  items.add(constParamDeviceLanguageVAST, VeltoDevice::language());
  items.add(constParamDeviceConnectionTypeVAST, VeltoDevice::connection());
  items.add(constParamCountryCode, VeltoDevice::locale());
  items.addIfKnown(constParamDeviceSimOperatoreName, constParamDeviceNetworkOperatorName,
                   VeltoDevice::simOperatorName());
  items.addIfKnown(constParamDeviceSimOperatoreCode, constParamDeviceNetworkOperatorCode,
                   VeltoDevice::simOperatorCode());
  items.addIfKnown(constParamDeviceSimOperatorCountry, constParamDeviceNetworkOperatorCountry,
                   VeltoDevice::mobileCountryCode());
  items.add(constParamTest, test);
  return std::move(items).items();
}

std::string VeltoVASTURL::_avoidCache() {
  return randomText(digits, cacheBusterLength);
}

}  // namespace velto
