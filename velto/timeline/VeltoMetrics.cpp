// Counting, and writing it down.
#include "velto/timeline/VeltoMetrics.h"

#include "velto/platform/foundation/Text.h"
#include "velto/timeline/TimelineHub.h"

#include <algorithm>
#include <mutex>

namespace velto {
namespace {

// From 10 ms on, each twice the one before: to 82 s.
std::vector<double> secondBounds() {
  std::vector<double> bounds;
  for (double bound = 0.01; bounds.size() < 14; bound *= 2) bounds.push_back(bound);
  return bounds;
}

std::vector<double> percentBounds() {
  return {0, 10, 20, 30, 40, 50, 60, 70, 80, 90, 100};
}

// From 64 KiB on, each twice the one before: to 1 GiB.
std::vector<double> byteBounds() {
  std::vector<double> bounds;
  for (double bound = 65536; bounds.size() < 15; bound *= 2) bounds.push_back(bound);
  return bounds;
}

// As label values are escaped.
std::string escaped(const std::string& text) {
  return replaceAll(replaceAll(replaceAll(text, "\\", "\\\\"), "\"", "\\\""), "\n", "\\n");
}

// Bounds have a point.
std::string canonical(double bound) {
  auto text = numberText(bound);
  return text.find('.') == std::string::npos ? std::move(text) + ".0" : text;
}

class MetricsText {
 public:
  void family(const char* name, const char* type, const char* help) {
    name_ = name;
    text_.append("# TYPE ").append(name).append(" ").append(type).append("\n");
    text_.append("# HELP ").append(name).append(" ").append(help).append("\n");
  }
  void sample(const char* suffix, const std::string& labels, double value) {
    text_.append(name_)
        .append(suffix)
        .append("{")
        .append(labels)
        .append("} ")
        .append(numberText(value))
        .append("\n");
  }
  void histogram(const std::string& labels, const VeltoDistribution& values) {
    uint64_t below = 0;
    for (size_t i = 0; i < values.counts.size(); ++i) {
      below += values.counts[i];
      const auto bound = i < values.bounds.size() ? canonical(values.bounds[i]) : "+Inf";
      sample("_bucket", std::string(labels).append(",le=\"").append(bound).append("\""),
             static_cast<double>(below));
    }
    sample("_count", labels, static_cast<double>(values.count));
    sample("_sum", labels, values.sum);
  }
  std::string end() { return std::move(text_) + "# EOF\n"; }

 private:
  std::string name_, text_;
};

}  // namespace

VeltoDistribution::VeltoDistribution(std::vector<double> ownBounds)
    : bounds(std::move(ownBounds)), counts(bounds.size() + 1) {}

void VeltoDistribution::add(double value) {
  const auto found = std::lower_bound(bounds.begin(), bounds.end(), value);
  ++counts[static_cast<size_t>(found - bounds.begin())];
  ++count;
  sum += value;
}

double VeltoDistribution::quantile(double part) const {
  const double wanted = part * static_cast<double>(count);
  double below = 0;
  for (size_t i = 0; i < counts.size(); ++i) {
    const auto here = static_cast<double>(counts[i]);
    if (here > 0 && below + here >= wanted) {
      const double from = i == 0 ? 0 : bounds[i - 1];
      const double to = i < bounds.size() ? bounds[i] : from;
      return from + (to - from) * (wanted - below) / here;
    }
    below += here;
  }
  return 0;
}

VeltoPlacementFigures::VeltoPlacementFigures()
    : loadSeconds(secondBounds()),
      visiblePercent(percentBounds()),
      processorSeconds(secondBounds()),
      networkBytes(byteBounds()),
      memoryBytes(byteBounds()) {}

class VeltoMetrics::Counter : public TimelineSink {
 public:
  void added(const std::string&, uint64_t load, const VeltoTimelineEntry& entry) override {
    std::lock_guard lock(mutex_);
    if (entry.kind == VeltoTimelineKind::Asked) open_.emplace(load, Sight());
    const auto open = open_.find(load);
    if (open == open_.end()) return;
    if (const auto* share = std::get_if<VeltoShare>(&entry.detail))
      open->second.becomes(share->percent, entry.seconds);
  }

  void ended(const VeltoAdTimeline& told) override {
    std::lock_guard lock(mutex_);
    auto open = open_.extract(told.load);
    if (!open) return;
    auto& figures = figuresOf(told.placement);
    ++figures.loads;
    ++figures.ends[*told.end];
    const auto& asked = told.entries.front();
    if (asked.detail == VeltoTimelineEntry::Detail(VeltoAskedBy::Refresh)) ++figures.refreshes;
    if (const auto* filled = told.filled()) {
      ++figures.filled;
      figures.loadSeconds.add(filled->seconds - asked.seconds);
    }
    if (const auto percent = open.mapped().average(told.endSeconds)) figures.visiblePercent.add(*percent);
    for (const auto& entry : told.entries) {
      if (const auto* excess = std::get_if<VeltoAdExcess>(&entry.detail)) ++figures.heavy[excess->limit];
      if (const auto* weight = std::get_if<VeltoAdWeight>(&entry.detail)) addWeight(figures, *weight);
    }
  }

  std::map<std::string, VeltoPlacementFigures> figures() const {
    std::lock_guard lock(mutex_);
    return figures_;
  }

 private:
  // What was seen of a load's ad, weighed with time.
  class Sight {
   public:
    void becomes(int percent, double seconds) {
      if (!began_) began_ = since_ = seconds;
      weighed_ += percent_ * (seconds - since_);
      since_ = seconds;
      percent_ = percent;
    }
    std::optional<double> average(double until) const {
      if (!began_ || until <= *began_) return std::nullopt;
      return (weighed_ + percent_ * (until - since_)) / (until - *began_);
    }

   private:
    std::optional<double> began_;
    double since_ = 0, weighed_ = 0;
    int percent_ = 0;
  };

  static void addWeight(VeltoPlacementFigures& figures, const VeltoAdWeight& weight) {
    if (weight.processorSeconds) figures.processorSeconds.add(*weight.processorSeconds);
    if (weight.networkBytes) figures.networkBytes.add(static_cast<double>(*weight.networkBytes));
    if (weight.memoryBytes) figures.memoryBytes.add(static_cast<double>(*weight.memoryBytes));
  }

  VeltoPlacementFigures& figuresOf(const std::string& placement) {
    const bool isKnown = figures_.count(placement) > 0 || figures_.size() < mostPlacements;
    const std::string& name = isKnown ? placement : "other";
    auto& found = figures_[name];
    found.placement = name;
    return found;
  }

  mutable std::mutex mutex_;
  std::map<std::string, VeltoPlacementFigures> figures_;
  std::map<uint64_t, Sight> open_;
};

std::shared_ptr<VeltoMetrics> VeltoMetrics::collect() {
  auto counter = std::make_shared<Counter>();
  TimelineHub::shared()->add(counter);
  return std::make_shared<VeltoMetrics>(std::move(counter));
}

std::vector<VeltoPlacementFigures> VeltoMetrics::placements() const {
  std::vector<VeltoPlacementFigures> list;
  for (auto& [name, figures] : counter_->figures()) list.push_back(figures);
  return list;
}

std::string VeltoMetrics::openMetrics() const {
  const auto all = placements();
  const auto labels = [](const auto& figures) { return "placement=\"" + escaped(figures.placement) + "\""; };
  MetricsText text;
  text.family("velto_loads", "counter", "Loads that have ended, by the reason.");
  for (const auto& figures : all)
    for (const auto& [reason, count] : figures.ends)
      text.sample("_total", labels(figures) + ",reason=\"" + std::string(wordsOf(reason).name) + "\"",
                  static_cast<double>(count));
  text.family("velto_refreshes", "counter", "Loads that a refresh has asked for.");
  for (const auto& figures : all)
    text.sample("_total", labels(figures), static_cast<double>(figures.refreshes));
  text.family("velto_filled_loads", "counter", "Loads whose ad has loaded.");
  for (const auto& figures : all) text.sample("_total", labels(figures), static_cast<double>(figures.filled));
  text.family("velto_heavy_ads", "counter", "Ads that have crossed a limit of what they may cost.");
  for (const auto& figures : all)
    for (const auto& [limit, count] : figures.heavy)
      text.sample("_total", labels(figures) + ",limit=\"" + std::string(nameOf(limit)) + "\"",
                  static_cast<double>(count));
  const auto histogram = [&](const char* name, const char* help, auto values) {
    text.family(name, "histogram", help);
    for (const auto& figures : all) text.histogram(labels(figures), figures.*values);
  };
  using Figures = VeltoPlacementFigures;
  histogram("velto_load_seconds", "From the question to the ad.", &Figures::loadSeconds);
  histogram("velto_visible_percent", "How much of an ad was seen, on average over its time.",
            &Figures::visiblePercent);
  histogram("velto_ad_processor_seconds", "Processor time of an ad's page.", &Figures::processorSeconds);
  histogram("velto_ad_network_bytes", "What an ad's page has loaded.", &Figures::networkBytes);
  histogram("velto_ad_memory_bytes", "By how much an ad's page has let its process grow.",
            &Figures::memoryBytes);
  return text.end();
}

}  // namespace velto
