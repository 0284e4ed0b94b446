// Puts the service script into an ad's markup, before any
// other script. Used by the web view host; any thread.
#pragma once

#include "velto/measurement/OMIDVelto.h"

#include <optional>
#include <string>

namespace velto {

class OMIDVeltoScriptInjector {
 public:
  // Nothing, with an error, when the markup is blank, there is no script, or the engine is not active.
  static std::optional<std::string> injectScriptContent(const std::string& script,
                                                        const std::string& intoHTML,
                                                        OMIDVeltoErrorResult error);
};

}  // namespace velto
