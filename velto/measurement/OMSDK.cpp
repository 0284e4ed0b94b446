// Settings, activation and injection.
#include "velto/measurement/OMSDK.h"

#include "velto/ads/VeltoAdManager.h"
#include "velto/core/VeltoUtilities.h"
#include "velto/measurement/OMIDVeltoSDK.h"
#include "velto/measurement/OMIDVeltoScriptInjector.h"

namespace velto {

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

void OMSDK::initOMSDK() {
  if (!VeltoUtilities::isOMSDKActive()) VeltoUtilities::activateOMSDK();
}

std::string OMSDK::htmlWithOMSDKInjection(std::string html) {
  if (!VeltoUtilities::isOMSDKActive()) return html;
  const auto script = VeltoAdManager::getOMSKJs();
  if (!script) return html;
  auto injected = OMIDVeltoScriptInjector::injectScriptContent(*script, html, nullptr);
  return injected ? std::move(*injected) : html;
}

}  // namespace velto
