// Videos of the headless platform: they play in virtual time, as a test's script has it. Main thread.
#pragma once

#include "velto/Export.h"
#include "velto/platform/AVPlayer.h"
#include "velto/platform/Handle.h"

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace velto::headless {

class ScriptedPlayer;
class VirtualQueue;

struct VideoScript {
  CMTime duration{10, 1};                                // what the file says; {} for a stream without an end
  std::chrono::nanoseconds loadsAfter{0};                // until it is ready to play, or its load fails
  bool loadFails = false;                                // it is not there
  bool isNoVideo = false;                                // its load fails, since nothing here decodes it
  bool hasPlayer = true;                                 // false: since nothing here plays files at all
  std::optional<std::chrono::nanoseconds> endsAt = {};   // where it really ends, if not at its duration
  std::optional<std::chrono::nanoseconds> failsAt = {};  // where playing breaks off with an error
  std::optional<std::chrono::nanoseconds> stallsAt = {};  // where it waits for data,
  std::chrono::nanoseconds stallsFor{0};                  // and for so long
  bool loads = true;                                      // false: the server never answers
};

class VELTO_EXPORT ScriptedMedia : public MediaSystem {
 public:
  explicit ScriptedMedia(std::shared_ptr<VirtualQueue> queue);

  // What is behind a URL; ten seconds that load at once where nothing was said.
  void setVideo(const std::string& url, const VideoScript& script) { scripts_[url] = script; }

  // Until what plays files is made ready, from each prepare() on.
  std::chrono::nanoseconds preparesAfter{0};
  // False: nothing here plays files, whatever they are.
  bool hasPlayer = true;
  // MIME types and codecs that do not play here, in lower case.
  std::set<std::string> unplayable;
  // And those that may play, for all that is known.
  std::set<std::string> unsure;

  // Players that exist, oldest first, also cancelled ones.
  const std::vector<ScriptedPlayer*>& players() const { return *players_; }

  std::shared_ptr<AVPlayer> makePlayer(const std::shared_ptr<AVPlayerItem>& item) override;
  void prepare(std::function<void()> ready) override;
  bool canPlay(const std::string& type, const std::string& codec) override {
    return !unplayable.contains(type) && !unplayable.contains(codec);
  }
  bool surelyPlays(const std::string& type, const std::string& codec) override {
    return canPlay(type, codec) && !unsure.contains(type) && !unsure.contains(codec);
  }

 private:
  std::shared_ptr<VirtualQueue> queue_;
  std::map<std::string, VideoScript> scripts_;
  std::shared_ptr<std::vector<ScriptedPlayer*>> players_ = std::make_shared<std::vector<ScriptedPlayer*>>();
};

class VELTO_EXPORT ScriptedPlayer : public AVPlayer {
 public:
  ScriptedPlayer(std::shared_ptr<VirtualQueue> queue, const std::shared_ptr<AVPlayerItem>& item,
                 const VideoScript& script);

  bool isReleased() const { return released_; }
  float appliedVolume() const { return appliedVolume_; }
  std::unique_ptr<ViewPeer> makePicture() override;

 protected:
  void run(bool playing) override;
  bool jump(Nanoseconds position) override;
  void applyVolume(float volume) override { appliedVolume_ = volume; }
  Nanoseconds position() const override;
  void release() override;

 private:
  friend class ScriptedMedia;
  void load();
  void scheduleStop();

  std::shared_ptr<VirtualQueue> queue_;
  VideoScript script_;
  Nanoseconds from_{0};          // the position when `since_` was
  std::optional<double> since_;  // while it moves: since when
  uint64_t stop_ = 0;            // which wait for the end is the valid one
  float appliedVolume_ = -1;
  bool released_ = false;
  Handle registration_;
};

}  // namespace velto::headless
