// Colours and axes. The colours are of middle brightness: they stand on a light ground as on a dark one.
#include "velto/gtk/inspector/Charts.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace velto::gtk {
namespace {

using Phase = WaterfallBar::Phase;

constexpr GdkRGBA blue{0.21F, 0.52F, 0.89F, 1}, violet{0.61F, 0.35F, 0.71F, 1}, amber{0.90F, 0.60F, 0.04F, 1},
    green{0.18F, 0.65F, 0.42F, 1}, red{0.88F, 0.20F, 0.20F, 1}, grey{0.55F, 0.55F, 0.55F, 1};
constexpr float margin = 2;  // so that what stands at the very ends is seen
constexpr double dim = 0.4;

struct Meaning {
  Phase phase;
  const char* words;
  GdkRGBA color;
};
const std::array meanings{Meaning{Phase::Preparing, "request", grey},
                          Meaning{Phase::Waiting, "waiting", withAlpha(blue, dim)},
                          Meaning{Phase::Receiving, "receiving", blue},
                          Meaning{Phase::Asking, "asking a network", amber},
                          Meaning{Phase::Loading, "page loads", violet},
                          Meaning{Phase::Running, "page runs", withAlpha(violet, dim)},
                          Meaning{Phase::Holding, "ready", withAlpha(grey, dim)},
                          Meaning{Phase::Visible, "seen", green}};

GdkRGBA colorOf(const WaterfallBar& bar, bool failed) {
  const auto& own = meanings.at(static_cast<size_t>(bar.phase)).color;
  if (bar.phase == Phase::Visible) return withAlpha(own, 0.25 + 0.75 * bar.percent / 100);
  return failed ? withAlpha(red, own.alpha) : own;
}

// 1, 2 or 5 times a power of ten, so that no more than that many fit into the length.
double stepFor(double length, double most) {
  const double least = length / std::max(most, 1.0);
  const double power = std::pow(10, std::floor(std::log10(least)));
  for (const double factor : {1.0, 2.0, 5.0})
    if (factor * power >= least) return factor * power;
  return 10 * power;
}

class Axis {
 public:
  Axis(const Waterfall& chart, const StripCanvas& canvas)
      : chart_(chart), canvas_(canvas), step_(stepFor(chart.length, canvas.width / spacing)) {}

  float at(double seconds) const {
    const double part = std::clamp(seconds / chart_.length, 0.0, 1.0);
    return margin + static_cast<float>(part) * (canvas_.width - 2 * margin);
  }
  // Behind the bars: lines, the place where time is left out, and the end.
  void ground() const {
    constexpr double faint = 0.1, strong = 0.7;
    for (double seconds = 0; seconds <= chart_.length; seconds += step_)
      canvas_.fill(withAlpha(canvas_.text, faint), at(seconds), 0, 1, canvas_.height);
    if (chart_.leftOut > 0)
      canvas_.fill(withAlpha(canvas_.text, faint), at(chart_.leftOutAt) - 3, 0, 6, canvas_.height);
    if (chart_.filled) canvas_.fill(withAlpha(green, strong), at(*chart_.filled), 0, 1, canvas_.height);
    if (chart_.failed) canvas_.fill(withAlpha(red, strong), at(*chart_.failed), 0, 1, canvas_.height);
  }
  void ruler() const {
    float free = 0;
    for (int i = 0; i * step_ <= chart_.length; ++i) {
      const double seconds = i * step_;
      const bool isBeyond = chart_.leftOut > 0 && seconds > chart_.leftOutAt;
      const auto words = i == 0 ? "0" : durationText(isBeyond ? seconds + chart_.leftOut : seconds);
      const float x = at(seconds), width = canvas_.widthOf(words);
      if (x < free || x + width > canvas_.width) continue;
      canvas_.write(words, x + 3, 0);
      free = x + width + 8;
    }
  }

 private:
  static constexpr double spacing = 90;  // of ruler lines, at least
  const Waterfall& chart_;
  const StripCanvas& canvas_;
  const double step_;
};

}  // namespace

StripPainter rulerOf(const std::shared_ptr<const Waterfall>& chart) {
  return [chart](const StripCanvas& canvas) {
    const Axis axis(*chart, canvas);
    axis.ground();
    axis.ruler();
  };
}

StripPainter barsOf(const std::shared_ptr<const Waterfall>& chart, size_t row) {
  return [chart, row](const StripCanvas& canvas) {
    constexpr float thinnest = 3, inset = 4, rounding = 2;
    const Axis axis(*chart, canvas);
    axis.ground();
    const auto& line = chart->rows[row];
    for (const auto& bar : line.bars) {
      if (bar.from > chart->length) continue;
      const float from = axis.at(bar.from), to = std::max(axis.at(bar.to), from + thinnest);
      canvas.fill(colorOf(bar, line.outcome == WaterfallRow::Outcome::Failed), from, inset, to - from,
                  canvas.height - 2 * inset, rounding);
    }
  };
}

std::string textOf(const WaterfallRow& row) {
  const char* outcome = row.outcome == WaterfallRow::Outcome::Failed ? "failed, "
                        : row.outcome == WaterfallRow::Outcome::Fine ? ""
                                                                     : "goes on, ";
  if (row.bars.empty()) return row.name + ": " + row.note;
  return row.name + ": " + outcome + durationText(row.seconds) + " from " + durationText(row.from) + " on. " +
         row.note;
}

StripPainter sightGraph(std::vector<SightPoint> points, double until) {
  return [points = std::move(points), until](const StripCanvas& canvas) {
    constexpr float label = 44, room = 4;
    constexpr double faint = 0.15, area = 0.35;
    const float height = canvas.height - 2 * room, width = canvas.width - label - margin;
    const auto level = [&](int percent) { return room + height * static_cast<float>(100 - percent) / 100; };
    for (const int percent : {0, 50, 100}) {
      canvas.fill(withAlpha(canvas.text, faint), label, level(percent), width, 1);
      canvas.write(std::to_string(percent) + " %", 0,
                   std::clamp(level(percent) - 8, 0.F, canvas.height - 16));
    }
    if (points.empty()) return;
    const double from = points.front().seconds, length = std::max(until - from, 0.001);
    const auto at = [&](double seconds) {
      return label + width * static_cast<float>(std::clamp((seconds - from) / length, 0.0, 1.0));
    };
    float before = level(0);
    for (size_t i = 0; i < points.size(); ++i) {
      const float x = at(points[i].seconds), y = level(points[i].percent);
      const float end = i + 1 < points.size() ? at(points[i + 1].seconds) : label + width;
      canvas.fill(withAlpha(green, area), x, y, end - x, level(0) - y);
      canvas.fill(green, x, y - 1, std::max(end - x, 2.F), 2);
      canvas.fill(green, x - 1, std::min(y, before), 2, std::abs(y - before));
      before = y;
    }
  };
}

std::string sightText(const std::vector<SightPoint>& points, double until) {
  if (points.empty()) return "not measured";
  double weighed = 0;
  for (size_t i = 0; i < points.size(); ++i) {
    const double end = i + 1 < points.size() ? points[i + 1].seconds : until;
    weighed += points[i].percent * std::max(end - points[i].seconds, 0.0);
  }
  const double length = until - points.front().seconds;
  auto text = std::to_string(points.back().percent) + " % is seen";
  if (length > 0)
    text +=
        ", " + std::to_string(std::lround(weighed / length)) + " % on average over " + durationText(length);
  return text;
}

GtkWidget* newLegend() {
  constexpr int side = 12;
  auto* legend = gtk_flow_box_new();
  gtk_widget_set_margin_top(legend, 8);
  gtk_flow_box_set_column_spacing(GTK_FLOW_BOX(legend), 12);
  gtk_flow_box_set_selection_mode(GTK_FLOW_BOX(legend), GTK_SELECTION_NONE);
  gtk_flow_box_set_max_children_per_line(GTK_FLOW_BOX(legend), static_cast<guint>(meanings.size()) + 1);
  const auto add = [legend](const char* words, const GdkRGBA& color) {
    auto* box = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 6);
    auto* swatch = newStrip(side, side);
    gtk_widget_set_hexpand(swatch, FALSE);
    gtk_widget_set_valign(swatch, GTK_ALIGN_CENTER);
    setStrip(
        swatch, [color](const StripCanvas& canvas) { canvas.fill(color, 0, 0, side, side, 2); }, words);
    gtk_box_append(GTK_BOX(box), swatch);
    auto* label = gtk_label_new(words);
    gtk_widget_add_css_class(label, "dim-label");
    gtk_box_append(GTK_BOX(box), label);
    auto* child = gtk_flow_box_child_new();
    gtk_flow_box_child_set_child(GTK_FLOW_BOX_CHILD(child), box);
    gtk_widget_set_focusable(child, FALSE);
    gtk_flow_box_insert(GTK_FLOW_BOX(legend), child, -1);
  };
  for (const auto& meaning : meanings) add(meaning.words, meaning.color);
  add("failed", red);
  return legend;
}

}  // namespace velto::gtk
