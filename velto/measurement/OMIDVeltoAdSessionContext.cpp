// The rules of a context.
#include "velto/measurement/OMIDVeltoAdSessionContext.h"

#include "velto/measurement/OMIDVeltoSDK.h"

#include <algorithm>

namespace velto {
namespace {

using Context = OMIDVeltoAdSessionContext;

size_t characters(const std::string& text) {
  constexpr unsigned char continuation = 0x80;
  return static_cast<size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != continuation;
  }));
}

bool isUsable(const Context::Partner& partner, const std::optional<std::string>& customReference,
              OMIDVeltoErrorResult error) {
  if (!OMIDVeltoSDK::sharedInstance()->isActive())
    return OMIDVeltoFail(error, OMIDVeltoErrorNotActive, "The measurement engine is not active");
  if (!partner) return OMIDVeltoFail(error, OMIDVeltoErrorInvalidArgument, "There is no partner");
  if (customReference && characters(*customReference) > Context::longestCustomReference)
    return OMIDVeltoFail(error, OMIDVeltoErrorInvalidArgument, "The custom reference is too long");
  return true;
}

}  // namespace

Context::Context Context::initWithPartner(const Partner& partner, const std::shared_ptr<WKWebView>& webView,
                                          const std::optional<std::string>& contentUrl,
                                          const std::optional<std::string>& customReferenceIdentifier,
                                          OMIDVeltoErrorResult error) {
  if (!isUsable(partner, customReferenceIdentifier, error)) return nullptr;
  if (!webView) {
    OMIDVeltoFail(error, OMIDVeltoErrorInvalidArgument, "There is no web view");
    return nullptr;
  }
  auto context = std::make_shared<OMIDVeltoAdSessionContext>();
  context->partner = partner;
  context->webView = webView;
  context->contentUrl = contentUrl;
  context->customReferenceIdentifier = customReferenceIdentifier;
  return context;
}

Context::Context Context::initWithPartner(const Partner& partner, const std::optional<std::string>& script,
                                          const Resources& resources,
                                          const std::optional<std::string>& contentUrl,
                                          const std::optional<std::string>& customReferenceIdentifier,
                                          OMIDVeltoErrorResult error) {
  if (!isUsable(partner, customReferenceIdentifier, error)) return nullptr;
  if (!script || OMIDVeltoIsBlank(*script) || resources.empty() ||
      std::find(resources.begin(), resources.end(), nullptr) != resources.end()) {
    OMIDVeltoFail(error, OMIDVeltoErrorInvalidArgument,
                  "A native ad needs the service script and a verification script");
    return nullptr;
  }
  auto context = std::make_shared<OMIDVeltoAdSessionContext>();
  context->partner = partner;
  context->script = *script;
  context->resources = resources;
  context->contentUrl = contentUrl;
  context->customReferenceIdentifier = customReferenceIdentifier;
  context->isNative = true;
  return context;
}

}  // namespace velto
