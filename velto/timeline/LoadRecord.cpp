// Writing down, and telling who listens.
#include "velto/timeline/LoadRecord.h"

#include "velto/platform/AnswerOnMain.h"
#include "velto/platform/Clock.h"
#include "velto/platform/Platform.h"
#include "velto/timeline/TimelineHub.h"

#include <algorithm>
#include <array>
#include <atomic>

namespace velto {
namespace {

constexpr size_t kinds = static_cast<size_t>(VeltoTimelineKind::VideoFailed) + 1;

size_t mostOf(VeltoTimelineKind kind) {
  using Kind = VeltoTimelineKind;
  const bool isMany = kind == Kind::DocumentAsked || kind == Kind::DocumentAnswered ||
                      kind == Kind::FileTried || kind == Kind::VideoEvent || kind == Kind::AddressTold;
  return isMany ? PlacementRecord::mostOfVideo : PlacementRecord::mostOfAKind;
}

// What took the place of a banner that never said it had loaded is not the reason for it.
bool takesItsPlace(VeltoAdEndReason reason) {
  return reason == VeltoAdEndReason::Refreshed || reason == VeltoAdEndReason::RefreshWithoutAd ||
         reason == VeltoAdEndReason::LoadedAnew;
}

// What holds until it is said otherwise; the other kinds happen.
bool isState(VeltoTimelineKind kind) {
  using Kind = VeltoTimelineKind;
  return kind == Kind::MarkupGiven || kind == Kind::PageLoaded || kind == Kind::LoadFinished ||
         kind == Kind::PaintedFirst || kind == Kind::Visible || kind == Kind::RichMedia;
}

// A pointer, for what is let go at the very end finds of this thread only what needs no destruction.
thread_local const LoadScope* innermost = nullptr;

}  // namespace

struct PlacementRecord::Observers {
  std::atomic<bool> any = false;
  std::mutex mutex;
  std::vector<std::weak_ptr<VeltoAdTimelineObserver>> list;

  template <class Call>
  void tell(Call call) {
    std::vector<std::weak_ptr<VeltoAdTimelineObserver>> told;
    {
      std::lock_guard lock(mutex);
      std::erase_if(list, [](const auto& observer) { return observer.expired(); });
      told = list;
    }
    auto* platform = told.empty() ? nullptr : Platform::currentOrNull();
    if (!platform) return;
    platform->mainQueue().post([told = std::move(told), call = std::move(call)] {
      for (const auto& weak : told)
        if (const auto observer = weak.lock()) call(*observer);
    });
  }
};

struct LoadRecord::Story {
  mutable std::mutex mutex;
  VeltoAdTimeline timeline;
  std::array<uint8_t, kinds> counts{};
  std::optional<VeltoAdEndReason> failedShow;
  std::weak_ptr<TimelineHub> hub;
  std::shared_ptr<PlacementRecord::Observers> observers;

  // The clock is read under the lock, so that entries come in its order. Once the platform has gone, time stands still.
  double now() const {
    auto* platform = Platform::currentOrNull();
    if (platform && !hub.expired()) return platform->clock().monotonicSeconds();
    return timeline.entries.empty() ? 0 : timeline.entries.back().seconds;
  }

  void add(Kind kind, std::optional<double> seconds, Detail&& detail) {
    VeltoTimelineEntry entry{kind, 0, std::move(detail)};
    {
      std::lock_guard lock(mutex);
      if (timeline.end && kind != Kind::AddressTold && kind != Kind::VideoFailed) return;
      auto& entries = timeline.entries;
      if (isState(kind) && !isChange(entry)) return;
      entry.seconds = now();
      if (seconds && !entries.empty())
        entry.seconds =
            std::clamp(*seconds, entries.front().seconds, std::max(entry.seconds, entries.front().seconds));
      keep(entry);
    }
    if (const auto alive = hub.lock())
      for (const auto& sink : alive->sinks()) sink->added(timeline.placement, timeline.load, entry);
    if (observers->any)
      observers->tell([placement = timeline.placement, load = timeline.load, entry = std::move(entry)](
                          auto& observer) { observer.veltoAdTimelineDidAdd(placement, load, entry); });
  }

  // In its place by time. What repeats itself is only counted from some number on.
  void keep(const VeltoTimelineEntry& entry) {
    auto& count = counts[static_cast<size_t>(entry.kind)];
    if (count == mostOf(entry.kind)) {
      ++timeline.leftOut;
      return;
    }
    ++count;
    auto& entries = timeline.entries;
    const auto later = std::upper_bound(entries.begin(), entries.end(), entry.seconds,
                                        [](double time, const auto& other) { return time < other.seconds; });
    entries.insert(later, entry);
  }

  bool hasEnded() const {
    std::lock_guard lock(mutex);
    return timeline.end.has_value();
  }

  bool isChange(const VeltoTimelineEntry& entry) const {
    const auto last = std::find_if(timeline.entries.rbegin(), timeline.entries.rend(),
                                   [&](const auto& other) { return other.kind == entry.kind; });
    return last == timeline.entries.rend() || last->detail != entry.detail ||
           counts[static_cast<size_t>(entry.kind)] == mostOf(entry.kind);
  }

  void end(VeltoAdEndReason reason) {
    VeltoAdTimeline told;
    {
      std::lock_guard lock(mutex);
      if (timeline.end) return;
      const bool wasShown = timeline.first(Kind::Appeared) != nullptr;
      if (failedShow && !wasShown) reason = *failedShow;
      if (takesItsPlace(reason) && timeline.first(Kind::MarkupGiven) && !timeline.filled())
        reason = VeltoAdEndReason::PageNeverLoaded;
      if (reason == VeltoAdEndReason::LoadedAnew && timeline.first(Kind::Ready) && !wasShown)
        reason = VeltoAdEndReason::NeverShown;
      timeline.end = reason;
      timeline.endSeconds = now();
      const auto alive = hub.lock();
      if ((!alive || alive->sinks().empty()) && !observers->any) return;
      told = timeline;
    }
    if (const auto alive = hub.lock())
      for (const auto& sink : alive->sinks()) sink->ended(told);
    if (observers->any)
      observers->tell([told = std::move(told)](auto& observer) { observer.veltoAdTimelineDidEnd(told); });
  }
};

// --- one load

LoadRecord::~LoadRecord() {
  end(Platform::currentOrNull() && !story_->hub.expired() ? VeltoAdEndReason::ControllerGone
                                                          : VeltoAdEndReason::PlatformGone);
}

void LoadRecord::addAt(Kind kind, std::optional<double> seconds, Detail detail) {
  story_->add(kind, seconds, std::move(detail));
}

void LoadRecord::showFailed(VeltoAdEndReason reason) {
  add(Kind::ShowFailed, reason);
  std::lock_guard lock(story_->mutex);
  story_->failedShow = reason;
}

void LoadRecord::end(VeltoAdEndReason reason) {
  story_->end(reason);
}

bool LoadRecord::has(Kind kind) const {
  std::lock_guard lock(story_->mutex);
  return story_->timeline.first(kind) != nullptr;
}

bool LoadRecord::hasEnded() const {
  return story_->hasEnded();
}

// --- the loads of a placement

std::shared_ptr<LoadRecord> PlacementRecord::begin(VeltoAskedBy by) {
  const auto hub = TimelineHub::shared();
  auto story = std::make_shared<LoadRecord::Story>();
  story->timeline.load = hub->nextLoad();
  story->timeline.placement = name_;
  story->timeline.entries.reserve(mostOfAKind);
  story->hub = hub;
  story->observers = observers_;
  if (stories_.size() == mostLoads) {
    const auto ended =
        std::find_if(stories_.begin(), stories_.end(), [](const auto& old) { return old->hasEnded(); });
    stories_.erase(ended == stories_.end() ? stories_.begin() : ended);
  }
  stories_.push_back(story);
  std::shared_ptr<LoadRecord> record(new LoadRecord(std::move(story), by));
  record->add(VeltoTimelineKind::Asked, by);
  return record;
}

PlacementRecord::PlacementRecord(std::string name)
    : name_(std::move(name)), observers_(std::make_shared<Observers>()) {}

PlacementRecord::~PlacementRecord() {
  endAll(VeltoAdEndReason::ControllerGone);
}

void PlacementRecord::endAll(VeltoAdEndReason reason) {
  for (const auto& story : std::vector(stories_)) story->end(reason);
}

std::vector<VeltoAdTimeline> PlacementRecord::timelines() const {
  std::vector<VeltoAdTimeline> told;
  for (const auto& story : stories_) {
    std::lock_guard lock(story->mutex);
    told.push_back(story->timeline);
  }
  return told;
}

void PlacementRecord::observe(std::weak_ptr<VeltoAdTimelineObserver> observer) {
  std::lock_guard lock(observers_->mutex);
  observers_->list.push_back(std::move(observer));
  observers_->any = true;
}

// --- the load that a thread works for

LoadScope::LoadScope(std::shared_ptr<LoadRecord> record)
    : record_(std::move(record)), outer_(std::exchange(innermost, this)) {}

LoadScope::~LoadScope() {
  innermost = outer_;
}

const std::shared_ptr<LoadRecord>& LoadScope::current() {
  static const auto& none = *new std::shared_ptr<LoadRecord>;
  return innermost ? innermost->record_ : none;
}

}  // namespace velto
