// What the inspector's page draws: the rows of a waterfall under their ruler, what was seen of an ad, and the colours.
#pragma once

#include "velto/gtk/inspector/Strip.h"
#include "velto/timeline/Waterfall.h"

#include <memory>
#include <vector>

namespace velto::gtk {

StripPainter rulerOf(const std::shared_ptr<const Waterfall>& chart);
StripPainter barsOf(const std::shared_ptr<const Waterfall>& chart, size_t row);
std::string textOf(const WaterfallRow& row);

// Up to that moment, monotonic seconds.
StripPainter sightGraph(std::vector<SightPoint> points, double until);
std::string sightText(const std::vector<SightPoint>& points, double until);

// The meaning of each colour.
GtkWidget* newLegend();

}  // namespace velto::gtk
