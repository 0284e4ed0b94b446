// Activation and injection.
#include "velto/measurement/OMSDK.h"

#include "velto/ads/VeltoAdManager.h"
#include "velto/core/VeltoUtilities.h"
#include "velto/measurement/OMIDVeltoScriptInjector.h"

namespace velto {

void OMSDK::initOMSDK() {
  if (!VeltoUtilities::isOMSDKActive()) VeltoUtilities::activateOMSDK();
}

std::string OMSDK::htmlWithOMSDKInjection(const std::string& html) {
  if (!VeltoUtilities::isOMSDKActive()) return html;
  const auto script = VeltoAdManager::getOMSKJs();
  if (!script) return html;
  auto injected = OMIDVeltoScriptInjector::injectScriptContent(*script, html, nullptr);
  if (injected) return std::move(*injected);
  return html;
}

}  // namespace velto
