// The checks that a response goes through on its way to an ad.
#include "velto/ads/VeltoAdResolver.h"

#include "velto/ads/AdSDKVelto.h"
#include "velto/ads/VeltoAdMediationResolver.h"
#include "velto/platform/foundation/NSURL.h"
#include "velto/platform/foundation/Text.h"

namespace velto {
namespace {

void fail(const VeltoAdCompletion& completion, VeltoErrorAd error) {
  if (completion) completion(nullptr, std::move(error));
}

std::optional<VeltoAdEndReason> whyWithoutAd(const VeltoTaskResponse& response, const std::string& text) {
  if (response.responseType == VeltoTaskResponseNoFill)
    return response.headers->content() == "vast" ? VeltoAdEndReason::VideoAnswer
                                                 : VeltoAdEndReason::HeaderNoFill;
  if (!isValidUTF8(text)) return VeltoAdEndReason::BodyNotText;
  return AdSDKVelto::isAdNoFill(text) ? std::optional(VeltoAdEndReason::MarkupNoFill) : std::nullopt;
}

std::string siteOf(const NSURLResponse* response) {
  const auto url = response ? NSURL::URLWithString(response->url) : std::nullopt;
  return url ? url->host().value_or("") : "";
}

}  // namespace

namespace VeltoAdManagerAdResolver {

void handleTaskResponse(const VeltoTaskResponsePointer& response, std::optional<int64_t> bannerSize,
                        const VeltoAdCompletion& completionHandler) {
  if (!_handleableTaskResponse(*response, completionHandler)) return;
  if (!response->headers->width() || !response->headers->height())
    return fail(completionHandler, VeltoErrorAd::because(VeltoAdEndReason::SizeMissing));
  auto html = _htmlFrom(*response, completionHandler);
  if (!html) return;
  VeltoAdResolverManager::resolveAdFromTaskResponse(response, bannerSize, std::move(*html),
                                                    response->headers->timerSeconds(), completionHandler);
}

void handleTaskResponseForSecondMRAIDContent(const VeltoTaskResponsePointer& response,
                                             const VeltoAdCompletion& completionHandler) {
  if (!_handleableTaskResponse(*response, completionHandler)) return;
  auto html = _htmlFrom(*response, completionHandler);
  if (!html) return;
  VeltoAdResolverManager::resolveAdFromTaskResponse(response, std::nullopt, std::move(*html), std::nullopt,
                                                    completionHandler);
}

bool _handleableTaskResponse(const VeltoTaskResponse& response, const VeltoAdCompletion& completionHandler) {
  if (!response.error && response.responseType != VeltoTaskResponseUnknown && response.headers) return true;
  const bool saysKind = response.headers && response.headers->content();
  fail(completionHandler, response.error.value_or(VeltoErrorAd::because(
                              saysKind ? VeltoAdEndReason::KindUnknown : VeltoAdEndReason::KindMissing)));
  return false;
}

std::optional<std::string> _htmlFrom(const VeltoTaskResponse& response,
                                     const VeltoAdCompletion& completionHandler) {
  if (!response.data) return std::nullopt;
  const std::string& text = *response.data;
  if (const auto why = whyWithoutAd(response, text)) {
    fail(completionHandler, VeltoErrorAd::because(*why));
    return std::nullopt;
  }
  return text;
}

}  // namespace VeltoAdManagerAdResolver

void VeltoAdResolverManager::resolveAdFromTaskResponse(const VeltoTaskResponsePointer& response,
                                                       std::optional<int64_t> bannerSize, std::string html,
                                                       std::optional<double> /*timer*/,
                                                       const VeltoAdCompletion& completionHandler) {
  if (response->responseType == VeltoTaskResponseMarkup) {
    auto ad = VeltoAd::adWithHTML(std::move(html), bannerSize, response->headers);
    ad->site = siteOf(response->response.get());
    if (completionHandler) completionHandler(std::move(ad), std::nullopt);
  } else if (response->responseType == VeltoTaskResponseMediation) {
    VeltoAdMediationResolver::resolveAd(response, bannerSize, completionHandler);
  }
}

}  // namespace velto
