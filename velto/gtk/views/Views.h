// The view system of the GTK platform: makes the peers that put the library's views on the screen, and the
// display link that animates them. The platform makes one on first use; everything is called on the main
// thread.
#pragma once

#include "velto/platform/ViewSystem.h"

#include <memory>

namespace velto::gtk {

class WebSession;

std::unique_ptr<ViewSystem> makeViewSystem(std::shared_ptr<WebSession> session);

}  // namespace velto::gtk
