// The partner.
#include "velto/measurement/OMIDVeltoPartner.h"

#include "velto/measurement/OMIDVelto.h"
#include "velto/measurement/OMIDVeltoSDK.h"

namespace velto {

std::shared_ptr<const OMIDVeltoPartner> OMIDVeltoPartner::initWithName(const std::string& name,
                                                                       const std::string& versionString) {
  if (!OMIDVeltoSDK::sharedInstance()->isActive() || OMIDVeltoIsBlank(name) ||
      OMIDVeltoIsBlank(versionString))
    return nullptr;
  return std::shared_ptr<const OMIDVeltoPartner>(new OMIDVeltoPartner(name, versionString));
}

OMIDVeltoPartner::OMIDVeltoPartner(std::string name, std::string versionString)
    : name_(std::move(name)), versionString_(std::move(versionString)) {}

}  // namespace velto
