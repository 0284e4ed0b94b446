// Clipping, covering and the reasons.
#include "velto/measurement/Viewability.h"

#include <algorithm>
#include <cmath>

namespace velto {
namespace {

double areaOf(const CGRect& rect) {
  return rect.size.width * rect.size.height;
}

JSON::Object jsonOf(const CGRect& rect) {
  return {{"x", rect.minX()}, {"y", rect.minY()}, {"width", rect.size.width}, {"height", rect.size.height}};
}

// The length of [from, to] that the intervals do not cover.
double uncoveredLength(double from, double to, std::vector<std::pair<double, double>>& intervals) {
  std::sort(intervals.begin(), intervals.end());
  double open = 0;
  double reached = from;
  for (const auto& [begin, end] : intervals) {
    if (begin > reached) open += begin - reached;
    reached = std::max(reached, end);
  }
  return open + std::max(0.0, to - reached);
}

}  // namespace

CGRect intersectionOf(const CGRect& a, const CGRect& b) {
  const double left = std::max(a.minX(), b.minX());
  const double top = std::max(a.minY(), b.minY());
  return {{left, top},
          {std::max(0.0, std::min(a.maxX(), b.maxX()) - left),
           std::max(0.0, std::min(a.maxY(), b.maxY()) - top)}};
}

// A sweep from left to right: between two neighbouring edges the covering rectangles are the same all along.
double uncoveredArea(const CGRect& rect, const std::vector<CGRect>& others) {
  std::vector<CGRect> covers;
  std::vector<double> edges{rect.minX(), rect.maxX()};
  for (const auto& other : others) {
    const CGRect cover = intersectionOf(rect, other);
    if (areaOf(cover) <= 0) continue;
    covers.push_back(cover);
    edges.push_back(cover.minX());
    edges.push_back(cover.maxX());
  }
  if (covers.empty()) return areaOf(rect);
  std::sort(edges.begin(), edges.end());
  double area = 0;
  std::vector<std::pair<double, double>> intervals;
  for (size_t i = 0; i + 1 < edges.size(); ++i) {
    const double width = edges[i + 1] - edges[i];
    if (width <= 0) continue;
    intervals.clear();
    const double middle = edges[i] + width / 2;
    for (const auto& cover : covers)
      if (cover.minX() < middle && middle < cover.maxX()) intervals.emplace_back(cover.minY(), cover.maxY());
    area += width * uncoveredLength(rect.minY(), rect.maxY(), intervals);
  }
  return area;
}

Viewability viewabilityOf(const AdSight& sight) {
  Viewability result;
  result.viewport = sight.viewport;
  if (!sight.found) {
    if (sight.backgrounded) result.reasons.emplace_back("backgrounded");
    if (sight.locked) result.reasons.emplace_back("deviceLocked");
    result.reasons.emplace_back("notFound");
    return result;
  }
  result.geometry = sight.ad;
  result.window = sight.window;
  const double whole = areaOf(sight.ad);
  const CGRect inWindow = intersectionOf(sight.ad, sight.window);
  CGRect shown = inWindow;
  for (const auto& clip : sight.clips) shown = intersectionOf(shown, clip);
  const bool isClipped = areaOf(shown) < areaOf(inWindow);

  std::vector<const char*> reasons;
  const bool hidden = sight.hidden || whole <= 0;
  if (sight.backgrounded) reasons.push_back("backgrounded");
  if (!sight.focused) reasons.push_back("noWindowFocus");
  if (sight.locked) reasons.push_back("deviceLocked");
  if (!sight.measurable) reasons.push_back("unmeasurable");
  if (hidden) reasons.push_back("hidden");
  const bool inSight = reasons.empty();
  if (areaOf(inWindow) < whole) reasons.push_back("viewport");
  if (isClipped) reasons.push_back("clipped");

  if (!hidden) {
    result.onScreenGeometry = shown;
    for (const auto& cover : sight.covers)
      if (const CGRect part = intersectionOf(shown, cover); areaOf(part) > 0)
        result.obstructions.push_back(part);
    if (!result.obstructions.empty()) reasons.push_back("obstructed");
  }
  if (inSight) {
    result.pixelsInView = uncoveredArea(shown, result.obstructions);
    result.percentageInView = static_cast<int>(std::lround(100 * result.pixelsInView / whole));
  }
  if (result.percentageInView < 100) result.reasons.assign(reasons.begin(), reasons.end());
  return result;
}

JSON::Object Viewability::json() const {
  JSON::Array covers;
  for (const auto& cover : obstructions) covers.emplace_back(jsonOf(cover));
  JSON::Object onScreen = jsonOf(onScreenGeometry);
  onScreen["obstructions"] = std::move(covers);
  return {{"viewport", JSON::Object{{"width", viewport.width}, {"height", viewport.height}}},
          {"window", jsonOf(window)},
          {"adView", JSON::Object{{"percentageInView", percentageInView},
                                  {"pixelsInView", pixelsInView},
                                  {"geometry", jsonOf(geometry)},
                                  {"onScreenGeometry", std::move(onScreen)},
                                  {"reasons", JSON::Array(reasons.begin(), reasons.end())}}}};
}

}  // namespace velto
