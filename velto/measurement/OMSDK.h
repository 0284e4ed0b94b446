// Open Measurement: activation of the engine by registration, on any thread, and injection of its service
// script into markup by the web view host, on the main one. What it tells of the library is in
// VeltoUtilities.
#pragma once

#include <string>

namespace velto::OMSDK {

void initOMSDK();  // activates the engine unless it is active

// The markup with the service script in it; the markup as it is while the engine is not active, without
// script, and when there is nothing to inject it into.
std::string htmlWithOMSDKInjection(const std::string& html);

}  // namespace velto::OMSDK
