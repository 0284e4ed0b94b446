// How an adapter in any language stands behind the library's own kind.
#pragma once

#include <velto/ads/VeltoAdMediationAdapterProtocol.h>

#include "velto-private.h"

namespace velto_glib {

// What a mediation item asks for, and who waits for the answer.
struct AdapterQuestion {
  bool fullScreen = false;
  std::optional<std::string> adUnit;
  std::optional<std::string> data;
  std::function<void(VeltoAdapterAd* ad, const velto::VeltoErrorAd* error)> answer;
};

// velto-adapter-request.cpp
VeltoAdapterRequest* newAdapterRequest(AdapterQuestion question);
// velto-adapter.cpp
std::shared_ptr<velto::VeltoAdMediationAdapterProtocol> adapterClassFor(VeltoAdapter* adapter);

}  // namespace velto_glib
