// Open Measurement in this library: what it tells of itself, activation of the engine, and injection of the
// service script into markup. Called by registration, by the web view host and by the sessions of controllers
// (UIViewControllerOMSDKSDKVelto). Main thread.
#pragma once

#include <string>

namespace velto::OMSDK {

// The verification script of native sessions, which no page brings along.
std::string omsdkPartnerName();
std::string omsdkVendorKey();
std::string omsdkVerificationScriptURL();
std::string omsdkVerificationParameters();

bool isOMSDKActive();
void activateOMSDK();
void initOMSDK();  // activates it unless it is active

// The markup with the service script in it; the markup as it is while the engine is not active, without
// script, and when there is nothing to inject it into.
std::string htmlWithOMSDKInjection(std::string html);

}  // namespace velto::OMSDK
