// What a session measures, and who reports its impression and media events. Immutable; main thread.
#pragma once

#include "velto/measurement/OMIDVelto.h"

#include <memory>

namespace velto {

class OMIDVeltoAdSessionConfiguration {
 public:
  // Null, with an error, when a type "by script" comes with another impression owner than JavaScript, nobody
  // owns the impression, a code is unknown, or the engine is not active.
  static std::shared_ptr<const OMIDVeltoAdSessionConfiguration> initWithCreativeType(
      OMIDVeltoCreativeType creativeType, OMIDVeltoImpressionType impressionType,
      OMIDVeltoOwner impressionOwner, OMIDVeltoOwner mediaEventsOwner, bool isolateVerificationScripts,
      OMIDVeltoErrorResult error);

  OMIDVeltoCreativeType creativeType;
  OMIDVeltoImpressionType impressionType;
  OMIDVeltoOwner impressionOwner;
  OMIDVeltoOwner mediaEventsOwner;
  bool isolateVerificationScripts;  // from each other, and from what else is in their page
};

}  // namespace velto
