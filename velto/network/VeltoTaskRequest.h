// Turns a wish (an ad, a mediation item's data, a download, a track) into a ready HTTP request. Nothing when
// it cannot be built. Reads the store, the device and the settings at the moment of the call. Any thread.
#pragma once

#include "velto/core/VeltoConstants.h"
#include "velto/core/VeltoSettings.h"
#include "velto/network/VeltoParameterNames.h"
#include "velto/platform/NSURLSession.h"
#include "velto/platform/foundation/JSON.h"

#include <optional>
#include <string>
#include <vector>

namespace velto {

class VeltoTaskRequest {
 public:
  static std::optional<NSURLRequest> requestFor(VeltoAdType type, VeltoBannerSize size,
                                                const std::optional<VeltoSettings>& settings);
  static std::optional<NSURLRequest> requestForMediationItemData(const std::string& data);
  static std::optional<NSURLRequest> requestForSecondaryMRAIDContent(const std::optional<std::string>& url);
  static std::optional<NSURLRequest> requestForDownloadData(const std::optional<std::string>& url);
  static std::optional<NSURLRequest> requestForTrackInstall(const std::string& identifier);
  static std::optional<NSURLRequest> requestForTrackClick(const std::string& identifier);

  // Throws std::out_of_range for a type or size without a word.
  static std::vector<NSURLQueryItem> queryParameterItemsFor(VeltoAdType type, VeltoBannerSize size);
  static std::vector<NSURLQueryItem> queryParameterItemsForTrackIdentifier(const std::string& identifier);
  static NSURLRequest _buildURLRequestFor(const NSURL& url, const std::optional<std::string>& body);
  static NSURLRequest _buildURLRequestForTrackInstall(const NSURL& url, const std::string& identifier);

  // The JSON body of an ad request; nothing when it cannot be written as JSON. Like the steps below it throws
  // when a value that must be sent is missing or a setting has no word.
  static std::optional<std::string> httpBodyFor(const std::optional<VeltoSettings>& settings);
  static JSON::Object _postParametersForSettings(const std::optional<VeltoSettings>& settings);
  static void _fillTracconstParameters(JSON::Object& parameters);
  static void _fillDeviceDataParameters(JSON::Object& parameters);
  static void _fillAppDataParameters(JSON::Object& parameters);
  static void _fillGeoDataParameters(JSON::Object& parameters);
  static void _fillVeltoSettingsDataParameters(JSON::Object& parameters,
                                               const std::optional<VeltoSettings>& settings);
  static void _fillPrivacyDataParameters(JSON::Object& parameters);
};

}  // namespace velto
