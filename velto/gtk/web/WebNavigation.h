// What the engine says of a navigation, in the library's words, and an answer to it. Used by the web view's peer.
#pragma once

#include "velto/platform/ui/WKWebView.h"

#include <webkit/webkit.h>

#include <memory>
#include <string>

namespace velto::gtk {

// The navigation as delegates are asked about it. A link is activated by a person's click on it; one that a
// script clicks is like any other navigation that a script starts.
WKNavigationAction navigationAction(WebKitNavigationAction* action);

// An address of a page, with characters that only engines let pass escaped; nothing when it is none even so.
std::optional<NSURL> urlFrom(const std::string& address);

// Whether the engine can load such an address at all. With any other it would put an error in the ad's place.
bool isLoadable(const std::string& address);
// Local files are nobody's business in an ad.
bool isFile(const std::string& address);

std::string addressOf(WebKitNavigationAction* action);

// Lets it go on after what has been posted by now. If the page's view is gone by then it does not: a load would only leave a
// process behind.
void allowLater(WebKitPolicyDecision* decision, WebKitWebsitePolicies* policies,
                const std::weak_ptr<WKWebView>& page);

}  // namespace velto::gtk
