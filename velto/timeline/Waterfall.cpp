// From entries to rows.
#include "velto/timeline/Waterfall.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <utility>

namespace velto {
namespace {

using Kind = VeltoTimelineKind;
using Phase = WaterfallBar::Phase;
using Outcome = WaterfallRow::Outcome;

constexpr double roomAfterwards = 0.15;  // of the axis, for what begins when the ad is there
constexpr double longestHold = 0.25;     // of the rest of the axis, until some of it is left out
constexpr double shortestAxis = 0.001;

std::string sentenceOf(VeltoAdEndReason reason) {
  return std::string(wordsOf(reason).sentence);
}

// Of bytes, in multiples of 1000 as the limits of heavy ads are.
std::string sizeText(double bytes) {
  char text[32];
  std::snprintf(text, sizeof text, bytes < 999'500 ? "%.0f kB" : "%.1f MB",
                bytes / (bytes < 999'500 ? 1e3 : 1e6));
  return text;
}

// The value of the one field that the entry's detail has.
std::string wordOf(const VeltoTimelineEntry& entry, const char* field) {
  const auto fields = entry.fields();
  const auto found = fields.find(field);
  return found != fields.end() && found->second.string() ? *found->second.string() : "";
}

class Chart {
 public:
  Chart(const VeltoAdTimeline& load, double now)
      : load_(load),
        began_(load.entries.empty() ? 0 : load.entries.front().seconds),
        until_((load.end ? load.endSeconds : std::max(now, began_)) - began_) {}

  Waterfall make() {
    for (const auto& entry : load_.entries) take(entry);
    finish();
    return std::move(chart_);
  }

 private:
  // A row whose last bar is open until its end is known.
  struct Open {
    size_t row;
    bool hasBar = false;
  };

  void take(const VeltoTimelineEntry& entry) {
    at_ = entry.seconds - began_;
    switch (entry.kind) {
      case Kind::Asked:
        begin(answer_, "request", Phase::Preparing);
        return note(answer_, "asked by " + wordOf(entry, "by"));
      case Kind::ListHit:
        return note(answer_, "an ad fetched earlier is used");
      case Kind::RequestBuilt:
        if (const auto* size = std::get_if<VeltoBytes>(&entry.detail); size && !network_)
          note(answer_, std::to_string(size->bytes) + " bytes");
        return;
      case Kind::Sent:
        if (network_) return next(network_, Phase::Waiting);
        end(answer_, Outcome::Fine);
        begin(answer_, "answer", Phase::Waiting);
        return note(answer_, wordOf(entry, "connection") == "reused" ? "over an open connection"
                                                                     : "over a new connection");
      case Kind::FirstByte:
        return next(network_ ? network_ : answer_, Phase::Receiving);
      case Kind::Answered:
        if (network_) return next(network_, Phase::Asking);
        if (const auto* answered = std::get_if<VeltoAnswer>(&entry.detail))
          note(answer_, "status " + std::to_string(answered->status) + ", " + wordOf(entry, "class"));
        return end(answer_, Outcome::Fine);
      case Kind::AnswerFailed:
        if (!network_) fail(answer_, std::get<VeltoAdEndReason>(entry.detail));
        return;
      case Kind::NetworkTried:
        end(network_, Outcome::Failed);  // one that never said why
        return begin(network_, wordOf(entry, "network"), Phase::Asking);
      case Kind::NetworkPassedOver:
        if (const auto& why = std::get<VeltoNetworkTry>(entry.detail).passedOver) fail(network_, *why);
        return;
      case Kind::Resolved:
        if (network_) note(network_, "brought an ad: " + wordOf(entry, "kind"));
        end(network_, Outcome::Fine);
        return end(answer_, Outcome::Fine);
      default:
        return takeOfPage(entry);
    }
  }

  void takeOfVideo(const VeltoTimelineEntry& entry) {
    switch (entry.kind) {
      case Kind::DocumentAsked: {
        end(answer_, Outcome::Fine);
        const auto& document = std::get<VeltoVideoDocument>(entry.detail);
        return begin(documents_[document.request],
                     document.depth == 0 ? "document" : "wrapper " + std::to_string(document.depth),
                     Phase::Waiting);
      }
      case Kind::DocumentAnswered: {
        end(answer_, Outcome::Fine);
        const auto& document = std::get<VeltoVideoDocument>(entry.detail);
        auto& open = documents_[document.request];
        if (document.code) failWith(open, *document.code);
        return end(open, Outcome::Fine);
      }
      case Kind::FileTried: {
        const auto& file = std::get<VeltoVideoFile>(entry.detail);
        begin(files_[file.ad], "file of ad " + std::to_string(file.ad), Phase::Loading);
        return note(files_[file.ad], file.type);
      }
      case Kind::VideoFailed: {
        const auto& failure = std::get<VeltoVideoFailure>(entry.detail);
        return failWith(files_[failure.ad], failure.code);
      }
      case Kind::FileChosen:
        return end(files_[std::get<VeltoVideoFile>(entry.detail).ad], Outcome::Fine);
      default:
        return;
    }
  }

  void takeOfPage(const VeltoTimelineEntry& entry) {
    switch (entry.kind) {
      case Kind::WebProcess:
        process_ = wordOf(entry, "process") + " web process";
        return;
      case Kind::MarkupGiven:
        begin(page_, "page", Phase::Loading);
        return note(page_, process_);
      case Kind::PageLoaded:
        return next(page_, Phase::Running);
      case Kind::LoadFinished:
        return end(page_, Outcome::Fine);
      case Kind::Ready:
        return begin(hold_, "ready", Phase::Holding);
      case Kind::ShowAsked:
        note(hold_, "shown by " + wordOf(entry, "by"));
        return end(hold_, Outcome::Fine);
      case Kind::ShowFailed:
        begin(hold_, "show", Phase::Holding);
        return fail(hold_, std::get<VeltoAdEndReason>(entry.detail));
      case Kind::Disappeared:
        return end(page_, Outcome::Fine);
      case Kind::PaintedFirst:
        painted_ = at_;
        return;
      case Kind::Visible:
        if (const auto* share = std::get_if<VeltoShare>(&entry.detail)) visible(share->percent);
        return;
      case Kind::Heavy:
        if (const auto* excess = std::get_if<VeltoAdExcess>(&entry.detail)) heavy(*excess);
        return;
      case Kind::Weighed:
        if (const auto* weight = std::get_if<VeltoAdWeight>(&entry.detail)) weighed(*weight);
        return;
      default:
        return takeOfVideo(entry);
    }
  }

  // A row without bars: it took no time of the ad's way.
  void beginWeight() {
    if (weight_) return;
    begin(weight_, "weight", Phase::Running);
    chart_.rows.back().bars.clear();
    weight_->hasBar = false;
  }

  void heavy(const VeltoAdExcess& excess) {
    beginWeight();
    const bool isBytes = excess.limit == VeltoAdLimit::Network || excess.limit == VeltoAdLimit::Memory;
    const auto text = [&](double figure) { return isBytes ? sizeText(figure) : durationText(figure); };
    note(weight_, std::string(nameOf(excess.limit)) + " " + text(excess.figure) + " of " + text(excess.most) +
                      (excess.ads > 1 ? " (" + std::to_string(excess.ads) + " ads together)" : ""));
    chart_.rows[weight_->row].outcome = Outcome::Failed;
  }

  void weighed(const VeltoAdWeight& weight) {
    beginWeight();
    if (weight.processorSeconds) note(weight_, durationText(*weight.processorSeconds) + " of processor");
    if (weight.networkBytes) note(weight_, sizeText(static_cast<double>(*weight.networkBytes)) + " loaded");
    if (weight.memoryBytes) note(weight_, sizeText(static_cast<double>(*weight.memoryBytes)) + " of memory");
  }

  void visible(int percent) {
    if (sight_) closeBar(*sight_);
    if (percent == 0) return;
    sight_ ? next(sight_, Phase::Visible) : begin(sight_, "seen", Phase::Visible);
    chart_.rows[sight_->row].bars.back().percent = percent;
  }

  void begin(std::optional<Open>& open, std::string name, Phase phase) {
    end(open, Outcome::Fine);
    WaterfallRow row;
    row.name = std::move(name);
    row.from = at_;
    row.bars.push_back({phase, at_, at_});
    chart_.rows.push_back(std::move(row));
    open = Open{chart_.rows.size() - 1, true};
  }
  void next(std::optional<Open>& open, Phase phase) {
    if (!open) return;
    closeBar(*open);
    chart_.rows[open->row].bars.push_back({phase, at_, at_});
    open->hasBar = true;
  }
  void closeBar(Open& open) {
    if (!std::exchange(open.hasBar, false)) return;
    auto& row = chart_.rows[open.row];
    row.bars.back().to = at_;
    row.seconds = at_ - row.from;
    if (row.bars.back().from == at_ && row.bars.size() > 1) row.bars.pop_back();
  }
  void end(std::optional<Open>& open, Outcome outcome) {
    if (!open) return;
    closeBar(*open);
    chart_.rows[open->row].outcome = outcome;
    open.reset();
  }
  void note(const std::optional<Open>& open, const std::string& text) {
    if (!open || text.empty()) return;
    auto& note = chart_.rows[open->row].note;
    note.append(note.empty() ? "" : ", ").append(text);
  }
  void fail(std::optional<Open>& open, VeltoAdEndReason why) {
    if (!open) return;
    chart_.rows[open->row].note = sentenceOf(why);
    end(open, Outcome::Failed);
  }

  void failWith(std::optional<Open>& open, int code) {
    note(open, "code " + std::to_string(code));
    end(open, Outcome::Failed);
  }

  // What is open goes on until now, or has ended with the load.
  void finish() {
    at_ = until_;
    const bool isFilled = load_.filled() != nullptr;
    bool isUnderWay = answer_ || network_ || page_;
    std::vector<std::optional<Open>*> open{&answer_, &network_, &page_, &hold_, &sight_};
    for (auto* rows : {&documents_, &files_})
      for (auto& [key, row] : *rows) {
        isUnderWay = isUnderWay || row;
        open.push_back(&row);
      }
    chart_.isUnderWay = isUnderWay && !load_.end;
    if (load_.end) note(hold_, sentenceOf(*load_.end));
    const auto outcome = load_.end ? Outcome::Fine : Outcome::UnderWay;
    for (auto* row : open) end(*row, outcome);
    if (weight_)
      end(weight_, chart_.rows[weight_->row].outcome == Outcome::Failed ? Outcome::Failed : outcome);
    auto& rows = chart_.rows;
    const bool isTold =
        std::any_of(rows.begin(), rows.end(), [](const auto& row) { return row.outcome == Outcome::Failed; });
    if (load_.end && !isFilled && !isTold && !rows.empty()) {
      rows.back().outcome = Outcome::Failed;
      rows.back().note.append(rows.back().note.empty() ? "" : ". ").append(sentenceOf(*load_.end));
    }
    if (painted_)
      for (auto& row : chart_.rows)
        if (row.name == "seen") row.note = "painted first after " + durationText(*painted_);
    if (isFilled) chart_.filled = load_.filled()->seconds - began_;
    if (load_.end && !isFilled) chart_.failed = until_;
    leaveOut();
  }

  // The axis is as long as the way of the ad; of a long wait for its turn only the beginning is on it.
  void leaveOut() {
    double holdFrom = 0, hold = 0, way = std::max(chart_.filled.value_or(0), chart_.failed.value_or(0));
    for (const auto& row : chart_.rows)
      for (const auto& bar : row.bars) {
        if (bar.phase == Phase::Visible) continue;
        way = std::max(way, bar.to);
        if (bar.phase != Phase::Holding || bar.to - bar.from <= hold) continue;
        holdFrom = bar.from;
        hold = bar.to - bar.from;
      }
    const double shown = std::min(hold, std::max((way - hold) * longestHold, shortestAxis));
    if (hold > shown) {
      chart_.leftOut = hold - shown;
      chart_.leftOutAt = holdFrom + shown;
      const auto place = [this](double& seconds) {
        if (seconds > chart_.leftOutAt) seconds = std::max(chart_.leftOutAt, seconds - chart_.leftOut);
      };
      for (auto& row : chart_.rows)
        for (auto& bar : row.bars) place(bar.from), place(bar.to);
      for (auto* mark : {&chart_.filled, &chart_.failed})
        if (*mark) place(**mark);
      place(way);
    }
    chart_.length = std::max(way, shortestAxis) * (1 + roomAfterwards);
  }

  const VeltoAdTimeline& load_;
  const double began_, until_;
  double at_ = 0;
  Waterfall chart_;
  std::optional<Open> answer_, network_, page_, hold_, sight_, weight_;
  std::map<int, std::optional<Open>> documents_,
      files_;  // by request, by ad: those of a pod are under way at once
  std::optional<double> painted_;
  std::string process_;
};

}  // namespace

Waterfall waterfallOf(const VeltoAdTimeline& load, double now) {
  return Chart(load, now).make();
}

std::vector<SightPoint> sightOf(const VeltoAdTimeline& load) {
  std::vector<SightPoint> points;
  for (const auto& entry : load.entries)
    if (const auto* share = std::get_if<VeltoShare>(&entry.detail))
      points.push_back({entry.seconds, share->percent});
  return points;
}

std::string headlineOf(const VeltoAdTimeline& load) {
  const auto* filled = load.filled();
  if (load.end && !filled) return std::string(wordsOf(*load.end).sentence);
  if (!filled) return "on its way";
  return "filled in " + durationText(filled->seconds - load.entries.front().seconds);
}

std::string durationText(double seconds) {
  constexpr double minute = 60;
  char text[32];
  if (seconds < 0.00995)
    std::snprintf(text, sizeof text, "%.1f ms", seconds * 1e3);
  else if (seconds < 0.9995)
    std::snprintf(text, sizeof text, "%.0f ms", seconds * 1e3);
  else if (seconds < minute)
    std::snprintf(text, sizeof text, "%.1f s", seconds);
  else
    std::snprintf(text, sizeof text, "%.0f min %.0f s", std::floor(std::round(seconds) / minute),
                  std::fmod(std::round(seconds), minute));
  return text;
}

}  // namespace velto
