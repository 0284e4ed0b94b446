// Where a session runs: in the page of an HTML ad, or, for an ad that is no page, in a hidden one with the
// verification scripts named here. Immutable; main thread.
#pragma once

#include "velto/measurement/OMIDVelto.h"
#include "velto/measurement/OMIDVeltoPartner.h"
#include "velto/measurement/OMIDVeltoVerificationScriptResource.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velto {

class WKWebView;

class OMIDVeltoAdSessionContext {
 public:
  using Context = std::shared_ptr<const OMIDVeltoAdSessionContext>;
  using Partner = std::shared_ptr<const OMIDVeltoPartner>;
  using Resources = std::vector<std::shared_ptr<const OMIDVeltoVerificationScriptResource>>;

  static constexpr size_t longestCustomReference = 256;  // characters

  // Of an HTML ad, whose page holds the service script. Null, with an error, without partner or web view,
  // with a longer custom reference, or while the engine is not active.
  static Context initWithPartner(const Partner& partner, const std::shared_ptr<WKWebView>& webView,
                                 const std::optional<std::string>& contentUrl,
                                 const std::optional<std::string>& customReferenceIdentifier,
                                 OMIDVeltoErrorResult error);
  // Of a native ad. Likewise, and null without service script or without verification scripts.
  static Context initWithPartner(const Partner& partner, const std::optional<std::string>& script,
                                 const Resources& resources, const std::optional<std::string>& contentUrl,
                                 const std::optional<std::string>& customReferenceIdentifier,
                                 OMIDVeltoErrorResult error);

  Partner partner;
  std::weak_ptr<WKWebView> webView;  // of an HTML ad
  std::string script;                // of a native ad
  Resources resources;
  std::optional<std::string> contentUrl;
  std::optional<std::string> customReferenceIdentifier;
  bool isNative = false;
};

}  // namespace velto
