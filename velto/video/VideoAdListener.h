// What the ad break hears of the ad that plays, and how that ended. Main thread.
#pragma once

#include "velto/vast/VASTError.h"
#include "velto/video/VeltoVideoAdDelegate.h"

#include <cstdint>
#include <optional>

namespace velto {

enum class VideoAdEnd : uint8_t {
  Completed,
  Skipped,
  Failed,
  Closed,  // its view was taken away, or the application stopped it
  Left,    // closed by a person, since it went on without end
};

// In adEnded() it may let go of the ad.
class VideoAdListener {
 public:
  virtual void adStarted() = 0;
  virtual void adPassed(VeltoVideoAdQuartile quartile) = 0;
  virtual void adPaused(bool paused) = 0;
  virtual void adPressed() = 0;
  virtual void adMuted(bool muted) = 0;  // by the person
  virtual void adNearsEnd() = 0;         // once, some seconds before
  virtual void adEnded(VideoAdEnd how, std::optional<VASTError> error, bool hadStarted) = 0;

 protected:
  ~VideoAdListener() = default;
};

}  // namespace velto
