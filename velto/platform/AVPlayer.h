// Supplied by the platform: a player of videos, and the picture it plays. Used by the player's screen
// (video/). What players have in common, such as finding the right moment for boundary times, stands here; a
// platform's own player fetches, decodes, sounds and shows. Main thread only, and calls back on it.
#pragma once

#include "velto/Export.h"
#include "velto/platform/AVAsset.h"
#include "velto/platform/MediaSystem.h"
#include "velto/platform/NSError.h"
#include "velto/platform/ViewPeer.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velto {

enum class AVPlayerEvent {
  ReadyToPlay,   // loaded: the asset's duration is known and the first picture is there
  RateChanged,   // played or paused, by whomever
  DidPlayToEnd,  // the last event
  FailedToPlay   // could not be loaded or not be played on: see error(). The last event
};

class VELTO_EXPORT AVPlayer : public std::enable_shared_from_this<AVPlayer> {
 public:
  using Token = std::shared_ptr<const void>;
  using EventHandler = std::function<void(AVPlayerEvent)>;

  // Begins to load at once, and plays nothing before play(). Events come in later turns.
  static std::shared_ptr<AVPlayer> playerWithPlayerItem(const std::shared_ptr<AVPlayerItem>& item);
  AVPlayer(const AVPlayer&) = delete;
  AVPlayer& operator=(const AVPlayer&) = delete;
  virtual ~AVPlayer() = default;

  const std::shared_ptr<AVAsset>& asset() const { return item_->asset; }
  const std::optional<NSError>& error() const { return error_; }
  void setEventHandler(EventHandler handler) { handler_ = std::move(handler); }

  void play();  // before the video is loaded: as soon as it is
  void pause();
  bool isPlaying() const { return playing_; }  // or would, if the data were there
  float volume() const { return volume_; }     // 0 … 1; the output volume comes on top
  void setVolume(float volume);
  CMTime currentTime() const;
  void seekToTime(CMTime time);  // nothing where the server sends only all of a video
  // Lets go of everything, for good: silence, no event, no call of an observer.
  void cancel();

  // Calls back for each of the times that playing passes, in their order; what a seek jumps over is not
  // passed. Inside the call currentTime() is that time to the letter, however late the main queue came to it.
  // At the video's end what is left of the times up to its duration counts as passed, unless the end came too
  // early (more than a hundredth of the duration, and a tenth of a second).
  [[nodiscard]] Token addBoundaryTimeObserverForTimes(const std::vector<CMTime>& times,
                                                      std::function<void()> block);
  void removeTimeObserver(const Token& token);

  // A peer for a view that shows the picture, as large as fits, on the view's background.
  virtual std::unique_ptr<ViewPeer> makePicture() = 0;

 protected:
  using Nanoseconds = std::chrono::nanoseconds;

  explicit AVPlayer(std::shared_ptr<AVPlayerItem> item) : item_(std::move(item)) {}

  // What the platform's player does. Only release() is called once it has told the end or a failure.
  virtual void run(bool playing) = 0;           // plays, or holds
  virtual bool jump(Nanoseconds position) = 0;  // false: this one cannot
  virtual void applyVolume(float volume) = 0;
  virtual Nanoseconds position() const = 0;
  virtual void release() = 0;

  // What it tells, never inside the calls above.
  void becameReady(CMTime duration);
  void reachedEnd();
  void failed(NSError error);

 private:
  enum class State { Loading, Ready, Over };
  struct Observer;

  void tell(AVPlayerEvent event);
  void setPlaying(bool playing);
  void scheduleNextBoundary();
  std::optional<Nanoseconds> nextBoundary() const;
  void passBoundaries(Nanoseconds upTo);

  std::shared_ptr<AVPlayerItem> item_;
  State state_ = State::Loading;
  bool playing_ = false;
  float volume_ = 1;
  std::optional<NSError> error_;
  EventHandler handler_;
  std::vector<std::shared_ptr<Observer>> observers_;
  Nanoseconds passed_{0};                // boundaries up to here are done
  std::optional<Nanoseconds> boundary_;  // the one being told
  uint64_t schedule_ = 0;                // which look for a boundary is the valid one
};

}  // namespace velto
