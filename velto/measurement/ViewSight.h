// Looks through the views for what can be seen of one of them. Used by measurement sessions; main thread.
//
// A view covers what is painted before it with what it paints itself: a background that is not clear, or
// content of its own (a page, a button, whatever a platform's peer shows). An empty clear view covers
// nothing; the views in it count by themselves. Friendly views, and all inside them, cover nothing.
#pragma once

#include "velto/measurement/Viewability.h"

#include <memory>
#include <vector>

namespace velto {

class UIView;

using FriendlyViews = std::vector<const UIView*>;

// `ad` may be null. Whether the application is in the background is not found here.
AdSight sightOf(const UIView* ad, const FriendlyViews& friendly);

}  // namespace velto
