// What the presentation does with URLs. Main thread.
#pragma once

#include "velto/platform/foundation/NSURL.h"

namespace velto::SDKVelto {

inline constexpr char constAdMRAIDHandler[] = "mraid://";

// Asks the system to open it outside the application.
void open(const NSURL& url);
// The URL itself; with "https" before it when it has no scheme and nothing opens it as it stands.
NSURL URLByResolvingImplicitScheme(const NSURL& url);
// Whether it is a rich-media command.
bool isAdMRAIDHandler(const NSURL& url);

}  // namespace velto::SDKVelto
