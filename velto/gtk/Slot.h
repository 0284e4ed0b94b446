// The slot: a widget among the application's own that an ad stands in. Part of VeltoGtk.h; main thread.
#pragma once

#include "velto/Export.h"
#include "velto/platform/Geometry.h"

#include <gtk/gtk.h>

#include <optional>

namespace velto::gtk {

// A widget that an ad stands in, like any other of the application's: what lies over it covers the ad, and
// what it is in clips, scrolls and transforms it. It asks for the size of its ad; a narrower one shows the ad
// smaller, down to two fifths. It may move to other parents, with the ad as it is. An ad that needs more room
// for a time (expanded, resized beyond the slot) leaves it for a layer over the window's content and comes
// back. While it is empty it is not visible, so that boxes keep no spacing for it: its "visible" is its own
// matter, and who wants an ad hidden hides what the slot is in. Returned with a floating reference, as new
// widgets are; it may be made before install().
struct SlotOptions {
  // What is kept free while there is no ad, such as {320, 50}; nothing: the slot is not visible then.
  std::optional<CGSize> room = {};
};
VELTO_EXPORT GtkWidget* adSlot(const SlotOptions& options = {});
// Changes what it keeps free. Throws std::invalid_argument for other widgets.
VELTO_EXPORT void setSlotRoom(GtkWidget* slot, std::optional<CGSize> room);

}  // namespace velto::gtk
