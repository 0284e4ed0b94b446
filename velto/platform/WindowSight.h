// What a window knows of how its root view is seen, or a view in it that stands among the host application's
// own widgets (ViewPeer::knowsSight()). Part of ViewPeer.h; main thread.
#pragma once

#include "velto/platform/Geometry.h"

#include <optional>
#include <vector>

namespace velto {

// Lengths in the root view's coordinates.
struct WindowSight {
  bool minimized = false;  // or otherwise out of sight, while it counts as shown
  bool focused = true;     // false: the window filled the screen, and another has taken its place
  bool measurable = true;  // false: something is between of which nothing can be told
  std::optional<CGRect> onScreen = {};  // the part that lies on a screen; nothing: all, as far as is known
  bool painted = true;                  // false: nothing of the view is, though its window is shown
  std::optional<CGRect> clip = {};      // the part that what is around the view lets be seen; nothing: all
  std::vector<CGRect> covers = {};      // what is painted over the view by others than what is in it
};

}  // namespace velto
