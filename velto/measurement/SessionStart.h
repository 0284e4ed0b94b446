// What the service script is told when a session starts in its page: the session, its context, what is
// measured and what can be seen of it. Used by sessions; main thread.
#pragma once

#include "velto/measurement/OMIDVeltoAdSessionConfiguration.h"
#include "velto/measurement/OMIDVeltoAdSessionContext.h"
#include "velto/measurement/Viewability.h"

#include <string>
#include <vector>

namespace velto {

// `lossWords`: of the context's scripts, those of ServicePage::observeLoss(); may be empty.
JSON::Object sessionStart(const std::string& identifier, const OMIDVeltoAdSessionConfiguration& configuration,
                          const OMIDVeltoAdSessionContext& context, const Viewability& seen,
                          const std::vector<std::string>& lossWords);

}  // namespace velto
