// Up from the ad to the root for what cuts it off, and down again for what is painted later.
#include "velto/measurement/ViewSight.h"

#include "velto/platform/ui/UIView.h"

#include <algorithm>

namespace velto {
namespace {

// The children of a view begin at its origin, which is in root coordinates here.
CGRect moved(const CGRect& rect, CGPoint by) {
  return {{rect.origin.x + by.x, rect.origin.y + by.y}, rect.size};
}

class Collector {
 public:
  Collector(AdSight& sight, const FriendlyViews& friendly) : sight_(sight), friendly_(friendly) {}

  // All that this view and those in it paint, as far as it is not cut off.
  void collect(const UIView& view, CGPoint origin, CGRect visible) {
    if (view.isHidden() || view.alpha() <= 0) return;
    if (view.peer().knowsSight()) return;  // it lies among the application's widgets, which are below
    if (std::find(friendly_.begin(), friendly_.end(), &view) != friendly_.end()) return;
    if (const auto clip = view.peer().clip()) visible = intersectionOf(visible, moved(*clip, origin));
    const CGRect frame = moved(view.frame(), origin);
    if (view.paints()) {
      const CGRect painted = intersectionOf(frame, visible);
      if (painted.size.width > 0 && painted.size.height > 0) sight_.covers.push_back(painted);
    }
    for (const auto& subview : view.subviews()) collect(*subview, frame.origin, visible);
  }

 private:
  AdSight& sight_;
  const FriendlyViews& friendly_;
};

}  // namespace

AdSight sightOf(const UIView* ad, const FriendlyViews& friendly) {
  AdSight sight;
  if (!ad) return sight;
  std::vector<const UIView*> path;  // from the ad up to the root
  for (const UIView* view = ad; view; view = view->superview()) path.push_back(view);
  const UIView& root = *path.back();
  sight.viewport = root.frame().size;
  sight.found = ad->isInWindow();
  if (!sight.found) return sight;

  size_t outermost = 0;  // who knows what lies around it
  while (outermost + 1 < path.size() && !path[outermost]->peer().knowsSight()) ++outermost;
  const WindowSight window = path[outermost]->peer().windowSight();
  sight.backgrounded = window.minimized;
  sight.focused = window.focused;
  sight.measurable = window.measurable;
  sight.window = window.onScreen.value_or(root.bounds());
  if (path[outermost] == &root) sight.window = intersectionOf(sight.window, root.bounds());
  sight.covers = window.covers;
  if (window.clip) sight.clips.push_back(*window.clip);

  // The root's own frame says nothing of where its content lies.
  std::vector<CGPoint> origins(path.size());
  for (size_t i = path.size() - 1; i-- > 0;) {
    origins[i] = {origins[i + 1].x + path[i]->frame().origin.x, origins[i + 1].y + path[i]->frame().origin.y};
    if (const auto clip = path[i]->peer().clip()) sight.clips.push_back(moved(*clip, origins[i + 1]));
  }
  sight.ad = {origins.front(), ad->frame().size};
  sight.hidden = !window.painted || std::any_of(path.begin(), path.end(), [](const UIView* view) {
    return view->isHidden() || view->alpha() <= 0;
  });
  if (sight.hidden) return sight;

  Collector collector(sight, friendly);
  for (size_t i = 0; i < outermost; ++i) {
    CGRect visible = sight.window;
    for (size_t j = i + 1; j + 1 < path.size(); ++j)
      if (const auto clip = path[j]->peer().clip())
        visible = intersectionOf(visible, moved(*clip, origins[j + 1]));
    const auto& siblings = path[i + 1]->subviews();
    auto later = std::find_if(siblings.begin(), siblings.end(),
                              [&](const auto& sibling) { return sibling.get() == path[i]; });
    for (++later; later != siblings.end(); ++later) collector.collect(**later, origins[i + 1], visible);
  }
  return sight;
}

}  // namespace velto
