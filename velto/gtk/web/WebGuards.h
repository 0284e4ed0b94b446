// What an ad's page may not do to the application that shows it.
#pragma once

#include "velto/platform/foundation/GMemory.h"

#include <webkit/webkit.h>

namespace velto::gtk {

// What an engine view is made with: of each change to one that is there the engine tells all settings to its process anew,
// which takes them one after another while the ad waits.
GPtr<WebKitSettings> guardedSettings();

// No windows of its own, files, full screen, dialogs, menus, prints, permissions or sign-in prompts. Called by the web view's
// peer for each engine view it takes.
void guardWebView(WebKitWebView* view);

}  // namespace velto::gtk
