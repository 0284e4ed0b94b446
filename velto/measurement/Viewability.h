// How much of an ad can be seen: pure geometry, from what was found in the
// views (ViewSight.h) to what verification scripts are told. Main thread
// or any other. Points, in the coordinates of the window's root view.
#pragma once

#include "velto/platform/Geometry.h"
#include "velto/platform/foundation/JSON.h"

#include <string>
#include <vector>

namespace velto {

// What there is to know about an ad view and what is around it.
struct AdSight {
  bool found = false;         // there is an ad view, and a window shows it
  bool hidden = false;        // it, or a view that holds it, is hidden or fully transparent
  bool backgrounded = false;  // nobody can see the application, or this window of it
  bool focused = true;        // false: another application fills the screen
  bool locked = false;        // the device is
  bool measurable = true;     // what there is to see of it can be told
  CGRect ad;
  CGRect window;               // the part of the window that the screen shows
  CGSize viewport;             // the window's size
  std::vector<CGRect> clips;   // of the views around it that show nothing outside of these
  std::vector<CGRect> covers;  // painted over it by others; they may overlap
};

struct Viewability {
  int percentageInView = 0;  // rounded
  double pixelsInView = 0;   // square points
  CGSize viewport;
  CGRect geometry;                   // all of the ad view
  CGRect onScreenGeometry;           // the part that nothing cuts off
  CGRect window;                     // the part of the window that a screen shows
  std::vector<CGRect> obstructions;  // what covers that part
  std::vector<std::string> reasons;  // why it is less than 100 percent

  bool operator==(const Viewability&) const = default;
  JSON::Object json() const;  // as the service script takes it (geometry.js)
};

Viewability viewabilityOf(const AdSight& sight);

CGRect intersectionOf(const CGRect& a, const CGRect& b);  // of size zero when they do not meet
// The area of the rectangle that none of the others covers.
double uncoveredArea(const CGRect& rect, const std::vector<CGRect>& others);

}  // namespace velto
