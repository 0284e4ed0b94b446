// What is written of one video ad, or of the way to it, into the timeline of its load. A value; main thread.
#pragma once

#include "velto/timeline/LoadRecord.h"
#include "velto/vast/VASTResolver.h"
#include "velto/vast/VASTTracker.h"

#include <memory>
#include <string_view>

namespace velto {

class VideoAdNotes {
 public:
  using Kind = VeltoTimelineKind;

  // `ad`: its place in the pod, from 1 on; 0: none, on the way to them. Without a record nothing is written.
  explicit VideoAdNotes(std::shared_ptr<LoadRecord> record, size_t ad = 0)
      : record_(std::move(record)), ad_(static_cast<int>(ad)) {}

  void note(Kind kind, LoadRecord::Detail detail = {}) const {
    if (record_) record_->add(kind, std::move(detail));
  }
  void file(Kind kind, const VASTMediaFile& file) const;
  void picture(double playhead) const { note(Kind::FirstPicture, VeltoVideoMoment{ad_, playhead}); }
  void seen(int percent) const { note(Kind::Visible, VeltoShare{percent}); }
  void event(std::string_view name) const { note(Kind::VideoEvent, VeltoVideoEvent{ad_, std::string(name)}); }
  void failed(VASTError error) const {
    note(Kind::VideoFailed, VeltoVideoFailure{ad_, static_cast<int>(error)});
  }
  void step(const VASTStep& step) const;
  // For what becomes of addresses.
  VASTTracker::Heard receipts() const;

 private:
  void told(std::string_view event, const VASTSent& sent) const;

  std::shared_ptr<LoadRecord> record_;
  int ad_;
};

}  // namespace velto
