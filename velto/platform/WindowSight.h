// What a window knows of how its root view is seen. Part of ViewPeer.h; main thread.
#pragma once

#include "velto/platform/Geometry.h"

#include <optional>
#include <vector>

namespace velto {

// Lengths in the root view's coordinates.
struct WindowSight {
  bool minimized = false;               // or otherwise out of sight, while it counts as shown
  bool focused = true;                  // false: the application had a person's attention, and has lost it
  std::optional<CGRect> onScreen = {};  // the part that lies on a screen; nothing: all, as far as is known
  std::vector<CGRect> covers = {};      // what the host application paints over the root view
};

}  // namespace velto
