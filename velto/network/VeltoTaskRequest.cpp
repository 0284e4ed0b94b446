// Requests: URL, query, method and headers. The body of an ad request is in VeltoTaskRequestBody.cpp.
#include "velto/network/VeltoTaskRequest.h"

#include "velto/core/VeltoDataStore.h"
#include "velto/network/VeltoURL.h"
#include "velto/platform/Clock.h"
#include "velto/platform/Platform.h"
#include "velto/platform/foundation/Text.h"

#include <array>
#include <exception>
#include <utility>

namespace velto {
namespace {

constexpr std::array adTypeWords{"notvalid", "banner", "interstitial"};
constexpr std::array bannerSizeWords{"Smart Banner", "320x50", "728x90", "300x250"};

std::optional<NSURLRequest> trackRequest(const std::optional<NSURL>& url, const std::string& identifier) {
  if (!url) return std::nullopt;
  return VeltoTaskRequest::_buildURLRequestForTrackInstall(*url, identifier);
}

}  // namespace

std::optional<NSURLRequest> VeltoTaskRequest::requestFor(VeltoAdType type, VeltoBannerSize size,
                                                         const std::optional<VeltoSettings>& settings) {
  try {
    const auto url = VeltoURL::veltoURL();
    if (!url) return std::nullopt;
    const auto withQuery = url->URLByReplacingQueryItems(queryParameterItemsFor(type, size));
    return _buildURLRequestFor(withQuery, httpBodyFor(settings));
  } catch (const std::exception&) {
    return std::nullopt;  // the caller reports a developer's fault
  }
}

std::optional<NSURLRequest> VeltoTaskRequest::requestForMediationItemData(const std::string& data) {
  const auto url = VeltoURL::veltoSSPURL();
  return url ? std::optional(_buildURLRequestFor(*url, data)) : std::nullopt;
}

std::optional<NSURLRequest> VeltoTaskRequest::requestForSecondaryMRAIDContent(
    const std::optional<std::string>& url) {
  return requestForDownloadData(url);
}

std::optional<NSURLRequest> VeltoTaskRequest::requestForDownloadData(const std::optional<std::string>& url) {
  const auto parsed = url ? NSURL::URLWithString(*url) : std::nullopt;
  return parsed ? std::optional(NSURLRequest{*parsed, "GET", {}, {}}) : std::nullopt;
}

std::optional<NSURLRequest> VeltoTaskRequest::requestForTrackInstall(const std::string& identifier) {
  return trackRequest(VeltoURL::veltoTrackInstallURL(), identifier);
}

std::optional<NSURLRequest> VeltoTaskRequest::requestForTrackClick(const std::string& identifier) {
  return trackRequest(VeltoURL::veltoTrackClickURL(), identifier);
}

std::vector<NSURLQueryItem> VeltoTaskRequest::queryParameterItemsFor(VeltoAdType type, VeltoBannerSize size) {
  std::vector<NSURLQueryItem> items;
  items.push_back({constParamTimestamp, fixedDecimals(Platform::current().clock().secondsSince1970(), 0)});
  if (auto key = VeltoDataStore::getVeltoKey()) items.push_back({constParamVeltoKey, std::move(key)});
  items.push_back({constParamTest, VeltoDataStore::isTestMode() ? "1" : "0"});
  items.push_back({constParamBannerType, adTypeWords.at(type)});
  if (type == VeltoAdTypeBanner)
    items.push_back({constParamBannerSize, bannerSizeWords.at(static_cast<size_t>(size))});
  return items;
}

std::vector<NSURLQueryItem> VeltoTaskRequest::queryParameterItemsForTrackIdentifier(
    const std::string& identifier) {
  return {{constParamTrackId, identifier}};
}

NSURLRequest VeltoTaskRequest::_buildURLRequestFor(const NSURL& url, const std::optional<std::string>& body) {
  NSURLRequest request{url, body ? "POST" : "GET", {}, body};
  if (body) request.allHTTPHeaderFields.set("Content-Type", "application/json");
  request.allHTTPHeaderFields.set("user-agent", VeltoDataStore::getUserAgent());
  return request;
}

NSURLRequest VeltoTaskRequest::_buildURLRequestForTrackInstall(const NSURL& url,
                                                               const std::string& identifier) {
  return _buildURLRequestFor(url.URLByReplacingQueryItems(queryParameterItemsForTrackIdentifier(identifier)),
                             std::nullopt);
}

}  // namespace velto
