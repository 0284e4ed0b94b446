// What an ad's page may not do to the application that shows it.
// Called by the web view's peer for each engine view it takes.
#pragma once

#include <webkit/webkit.h>

namespace velto::gtk {

// No windows of its own, files, full screen, dialogs, menus, prints, permissions or sign-in prompts.
void guardWebView(WebKitWebView* view);

}  // namespace velto::gtk
