// What is written down of loads. Any thread, but where something else is said.
//
// A load's record is held by whatever works on it: the question that is on its way, then the ad that is shown. The
// placement keeps the story itself, so a record that nobody holds any more has ended. Work that goes down through
// interfaces which know nothing of records finds the one it works for in LoadScope.
#pragma once

#include "velto/platform/foundation/Text.h"
#include "velto/timeline/VeltoAdTimeline.h"

#include <memory>
#include <mutex>

namespace velto {

class PlacementRecord;
class TimelineHub;

class VELTO_EXPORT LoadRecord {
 public:
  using Kind = VeltoTimelineKind;
  using Detail = VeltoTimelineEntry::Detail;

  ~LoadRecord();
  LoadRecord(const LoadRecord&) = delete;
  LoadRecord& operator=(const LoadRecord&) = delete;

  // After the end nothing is added but what became of addresses (AddressTold), and what goes wrong beside a video that is over
  // (VideoFailed); nor what is only said to be as it is known to be already.
  void add(Kind kind, Detail detail = {}) { addAt(kind, std::nullopt, std::move(detail)); }
  // Of a moment that has passed, as a transport tells it afterwards.
  void addAt(Kind kind, std::optional<double> seconds, Detail detail = {});
  // An attempt to show the ad has failed. Should it never be shown, that is how it ended.
  void showFailed(VeltoAdEndReason reason);
  // Once; what comes later says nothing.
  void end(VeltoAdEndReason reason);

  VeltoAskedBy askedBy() const { return askedBy_; }
  bool has(Kind kind) const;
  bool hasEnded() const;

 private:
  friend class PlacementRecord;
  struct Story;
  LoadRecord(std::shared_ptr<Story> story, VeltoAskedBy by) : story_(std::move(story)), askedBy_(by) {}

  const std::shared_ptr<Story> story_;
  const VeltoAskedBy askedBy_;
};

// The loads of one controller, which owns it. Main thread.
class VELTO_EXPORT PlacementRecord {
 public:
  static constexpr size_t mostLoads = 32;
  static constexpr size_t mostOfAKind = 16;
  static constexpr size_t mostOfVideo = 128;  // of documents, files, events and addresses of video ads

  explicit PlacementRecord(std::string name);
  ~PlacementRecord();  // what has not ended by now ends
  PlacementRecord(const PlacementRecord&) = delete;
  PlacementRecord& operator=(const PlacementRecord&) = delete;

  // Of loads to come. What is no text is made one, so that trace, figures and reports stay what they are.
  void setName(const std::string& name) { name_ = validUTF8(name); }
  const std::string& name() const { return name_; }
  std::shared_ptr<LoadRecord> begin(VeltoAskedBy by);
  void endAll(VeltoAdEndReason reason);
  std::vector<VeltoAdTimeline> timelines() const;  // oldest first
  bool isEmpty() const { return stories_.empty(); }
  void observe(std::weak_ptr<VeltoAdTimelineObserver> observer);

 private:
  friend class LoadRecord;
  std::string name_;
  std::vector<std::shared_ptr<LoadRecord::Story>> stories_;
  struct Observers;
  const std::shared_ptr<Observers> observers_;  // shared with the stories, which go on on other threads
};

// The load that this thread works for, while the scope lasts.
class LoadScope {
 public:
  explicit LoadScope(std::shared_ptr<LoadRecord> record);
  ~LoadScope();
  LoadScope(const LoadScope&) = delete;
  LoadScope& operator=(const LoadScope&) = delete;

  static const std::shared_ptr<LoadRecord>& current();  // null outside of any
  // Nothing outside of any.
  static void add(LoadRecord::Kind kind, LoadRecord::Detail detail = {}) {
    if (const auto& record = current()) record->add(kind, std::move(detail));
  }

 private:
  const std::shared_ptr<LoadRecord> record_;
  const LoadScope* const outer_;
};

// What an object writes down of the load it was made for; nothing where there is none, as in tests.
class LoadNotes {
 public:
  void note(LoadRecord::Kind kind, LoadRecord::Detail detail = {}) const {
    if (record_) record_->add(kind, std::move(detail));
  }
  // Comes first of all that happens then.
  void endLoad(VeltoAdEndReason reason) const {
    if (record_) record_->end(reason);
  }
  const std::shared_ptr<LoadRecord>& record() const { return record_; }

 protected:
  void silence() { record_.reset(); }

 private:
  std::shared_ptr<LoadRecord> record_ = LoadScope::current();
};

}  // namespace velto
