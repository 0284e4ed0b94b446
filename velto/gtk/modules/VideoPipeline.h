// What plays one video, between the platform's player (VideoPlayer.h) and the module velto-video, which has
// all of GStreamer. Main thread only; everything is called back on it, in a later turn, until the pipeline is
// destroyed. It may be destroyed inside a call back.
#pragma once

#include "velto/platform/NSError.h"

#include <glib.h>

#include <chrono>
#include <cstddef>
#include <optional>

namespace velto::gtk {

struct VideoFrame {
  GBytes* pixels = nullptr;  // the receiver takes a reference of its own. Blue, green, red, alpha
  int width = 0;
  int height = 0;
  size_t stride = 0;
};

class VideoPipelineEvents {
 public:
  using Nanoseconds = std::chrono::nanoseconds;
  virtual void pipelineLoaded(std::optional<Nanoseconds> duration) = 0;  // nothing: without an end
  virtual void pipelineShows(const VideoFrame& frame) = 0;
  virtual void pipelineCarried(double kilobits) = 0;  // a second, for the file's beginning; at most once
  virtual void pipelineEnded() = 0;
  virtual void pipelineFailed(const NSError& error) = 0;

 protected:
  ~VideoPipelineEvents() = default;
};

class VideoPipeline {
 public:
  using Nanoseconds = std::chrono::nanoseconds;
  virtual ~VideoPipeline() = default;
  virtual void run(bool playing) = 0;
  virtual bool jump(Nanoseconds position) = 0;  // false: this video or its server cannot
  virtual void setVolume(double volume) = 0;    // 0 … 1
  virtual Nanoseconds position() const = 0;
};

inline constexpr char videoModule[] = "video";
inline constexpr char makeVideoPipelineName[] = "velto_make_video_pipeline";

// Begins to load. `caFile`: certificate authorities to trust instead of the system's, or null. `proxy`: through which it
// loads, instead of the system's, or null. The caller owns what comes back; null when GStreamer cannot be started.
using MakeVideoPipeline = VideoPipeline* (*)(const char* url, const char* caFile, const char* proxy,
                                             VideoPipelineEvents* events);

// Does what the functions here would do first and take long for. Any thread.
inline constexpr char prepareVideoName[] = "velto_prepare_video";
using PrepareVideo = void (*)();

// Whether files of this MIME type and codec (lower case; each may be empty) find all that they need to be played. Main thread.
enum class CanPlay : gint { No, Perhaps, Yes };  // perhaps: the type is one that nobody here knows
inline constexpr char canPlayVideoName[] = "velto_can_play_video";
using CanPlayVideo = CanPlay (*)(const char* type, const char* codec);

}  // namespace velto::gtk
