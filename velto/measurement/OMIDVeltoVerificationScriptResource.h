// A verification script that a native session is to run. Immutable; main thread.
#pragma once

#include "velto/platform/foundation/NSURL.h"

#include <memory>
#include <optional>
#include <string>

namespace velto {

class OMIDVeltoVerificationScriptResource {
 public:
  // The parameters go to this script and no other. Null when the vendor key or the parameters are empty, or
  // the engine is not active. A single blank counts as parameters.
  static std::shared_ptr<const OMIDVeltoVerificationScriptResource> initWithURL(
      const NSURL& url, const std::string& vendorKey, const std::string& parameters);
  // A script without vendor key and parameters.
  static std::shared_ptr<const OMIDVeltoVerificationScriptResource> initWithURL(const NSURL& url);

  const NSURL& URL() const { return url_; }
  const std::optional<std::string>& vendorKey() const { return vendorKey_; }
  const std::optional<std::string>& parameters() const { return parameters_; }

 private:
  OMIDVeltoVerificationScriptResource(NSURL url, std::optional<std::string> vendorKey,
                                      std::optional<std::string> parameters);

  NSURL url_;
  std::optional<std::string> vendorKey_;
  std::optional<std::string> parameters_;
};

}  // namespace velto
