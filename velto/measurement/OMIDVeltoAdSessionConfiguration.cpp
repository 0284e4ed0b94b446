// The rules of a configuration.
#include "velto/measurement/OMIDVeltoAdSessionConfiguration.h"

#include "velto/measurement/OMIDVeltoSDK.h"

namespace velto {

std::shared_ptr<const OMIDVeltoAdSessionConfiguration> OMIDVeltoAdSessionConfiguration::initWithCreativeType(
    OMIDVeltoCreativeType creativeType, OMIDVeltoImpressionType impressionType,
    OMIDVeltoOwner impressionOwner, OMIDVeltoOwner mediaEventsOwner, bool isolateVerificationScripts,
    OMIDVeltoErrorResult error) {
  const auto fail = [error](OMIDVeltoErrorCode code, const char* text) {
    OMIDVeltoFail(error, code, text);
    return nullptr;
  };
  if (!OMIDVeltoSDK::sharedInstance()->isActive())
    return fail(OMIDVeltoErrorNotActive, "The measurement engine is not active");
  if (!OMIDVeltoName(creativeType) || !OMIDVeltoName(impressionType) || !OMIDVeltoName(impressionOwner) ||
      !OMIDVeltoName(mediaEventsOwner))
    return fail(OMIDVeltoErrorInvalidArgument, "No such type or owner");
  if (impressionOwner == OMIDVeltoOwnerNone)
    return fail(OMIDVeltoErrorInvalidArgument, "Somebody must report the impression");
  const bool byScript = creativeType == OMIDVeltoCreativeTypeDefinedByJavaScript ||
                        impressionType == OMIDVeltoImpressionTypeDefinedByJavaScript;
  if (byScript && impressionOwner != OMIDVeltoOwnerJavaScript)
    return fail(OMIDVeltoErrorInvalidArgument, "A type by script needs the impression owner JavaScript");
  return std::make_shared<const OMIDVeltoAdSessionConfiguration>(OMIDVeltoAdSessionConfiguration{
      creativeType, impressionType, impressionOwner, mediaEventsOwner, isolateVerificationScripts});
}

}  // namespace velto
