// The files of one video ad, until one of them plays: tries them in their order, each for a limited time, and looks that playing
// goes on. Made by the ad's show; main thread.
#pragma once

#include "velto/platform/AVPlayer.h"
#include "velto/vast/VASTCreative.h"
#include "velto/vast/VASTError.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace velto {

class VideoAdMediaListener {
 public:
  virtual void mediaTries(const VASTMediaFile& file) = 0;
  virtual void mediaPassesOver(VASTError error) = 0;       // the file it tried, for the next one
  virtual void mediaReady(const VASTMediaFile& file) = 0;  // the first picture is there; it does not play yet
  virtual void mediaStalled(bool stalled) = 0;             // waits for data, or does no more
  virtual void mediaEnded() = 0;
  virtual void mediaFailed(VASTError error) = 0;  // of the last file; the end

 protected:
  ~VideoAdMediaListener() = default;
};

class VideoAdMedia : public std::enable_shared_from_this<VideoAdMedia> {
 public:
  VideoAdMedia(std::vector<VASTMediaFile> files, std::chrono::nanoseconds timeout,
               VideoAdMediaListener& listener)
      : files_(std::move(files)), timeout_(timeout), listener_(&listener) {}
  VideoAdMedia(const VideoAdMedia&) = delete;
  VideoAdMedia& operator=(const VideoAdMedia&) = delete;
  ~VideoAdMedia() { cancel(); }

  void start();   // answers in a later turn
  void cancel();  // silent from here on

  // Null before the first file is tried, and once it is over.
  const std::shared_ptr<AVPlayer>& player() const { return player_; }
  void setPlaying(bool playing);
  void setVolume(float volume);
  double seconds() const;
  double duration() const;  // 0: not known
  // Calls back at each of these times, in seconds.
  void atTimes(const std::vector<double>& times, std::function<void()> block);
  // To be called from time to time while it plays.
  void look();

 private:
  void next(VASTError why);
  void heard(AVPlayerEvent event);
  void drop();

  std::vector<VASTMediaFile> files_;
  const std::chrono::nanoseconds timeout_;
  VideoAdMediaListener* listener_;  // null: cancelled
  size_t tried_ = 0;
  std::shared_ptr<AVPlayer> player_;
  AVPlayer::Token times_;
  float volume_ = 1;
  bool ready_ = false, stalled_ = false;
  double lastSeconds_ = 0, movedAt_ = 0;  // of the file; monotonic
};

}  // namespace velto
