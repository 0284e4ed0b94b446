// What the engine says of a navigation, in the library's words. Used by the web view's peer.
#pragma once

#include <webkit/webkit.h>

#include <string>

#include "velto/platform/ui/WKWebView.h"

namespace velto::gtk {

// The navigation as delegates are asked about it. A link is activated by a person's click on it; one that a script clicks
// is like any other navigation that a script starts.
WKNavigationAction navigationAction(WebKitNavigationAction* action);

// Whether the engine can load such an address at all. Letting it try with any other would replace the ad by an error page.
bool isLoadable(const std::string& address);
// Local files are nobody's business in an ad.
bool isFile(const std::string& address);

std::string addressOf(WebKitNavigationAction* action);

}  // namespace velto::gtk
