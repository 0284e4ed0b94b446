// Settings, activation and injection.
#include "velto/measurement/OMSDK.h"

#include "velto/ads/VeltoAdManager.h"
#include "velto/measurement/OMIDVeltoSDK.h"
#include "velto/measurement/OMIDVeltoScriptInjector.h"

namespace velto::OMSDK {

std::string omsdkPartnerName() {
  return "Velto";
}
std::string omsdkVendorKey() {
  return VELTO_VERIFICATION_VENDOR;
}
std::string omsdkVerificationScriptURL() {
  return VELTO_VERIFICATION_SCRIPT;
}
std::string omsdkVerificationParameters() {
  return " ";
}

bool isOMSDKActive() {
  return OMIDVeltoSDK::sharedInstance()->isActive();
}
void activateOMSDK() {
  OMIDVeltoSDK::sharedInstance()->activate();
}
void initOMSDK() {
  if (!isOMSDKActive()) activateOMSDK();
}

std::string htmlWithOMSDKInjection(std::string html) {
  if (!isOMSDKActive()) return html;
  const auto script = VeltoAdManager::getOMSKJs();
  if (!script) return html;
  auto injected = OMIDVeltoScriptInjector::injectScriptContent(*script, html, nullptr);
  return injected ? std::move(*injected) : html;
}

}  // namespace velto::OMSDK
