// What is known about the process, asked of whoever knows it.
#include "velto/core/VeltoUtilities.h"

#include "velto/ads/VeltoAdMediationAdapterRegistry.h"
#include "velto/measurement/OMIDVeltoSDK.h"

namespace velto {

bool VeltoUtilities::isGoogleAdMobAvailable() {
  return VeltoAdMediationAdapterRegistry::adapterNamed("VeltoAdMediationAdapterAdMob") != nullptr;
}

std::string VeltoUtilities::omsdkPartnerName() {
  return "Velto";
}
std::string VeltoUtilities::omsdkVendorKey() {
  return VELTO_VERIFICATION_VENDOR;
}
std::string VeltoUtilities::omsdkVerificationScriptURL() {
  return VELTO_VERIFICATION_SCRIPT;
}
std::string VeltoUtilities::omsdkVerificationParameters() {
  return " ";
}

bool VeltoUtilities::isOMSDKActive() {
  return OMIDVeltoSDK::sharedInstance()->isActive();
}
void VeltoUtilities::activateOMSDK() {
  OMIDVeltoSDK::sharedInstance()->activate();
}

}  // namespace velto
