// One video ad from its files to its end: what plays, what its servers are told, what is measured and what a person does come
// together here. Made by the ad break for each ad of a pod; main thread.
#pragma once

#include "velto/measurement/VideoMeasurement.h"
#include "velto/platform/NSTimer.h"
#include "velto/video/VeltoVideoAd.h"
#include "velto/video/VideoAdIcons.h"
#include "velto/video/VideoAdListener.h"
#include "velto/video/VideoAdMedia.h"
#include "velto/video/VideoAdNotes.h"
#include "velto/video/VideoAdScreen.h"

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace velto {

// What goes from one ad to the next.
struct VideoAdSound {
  bool muted = false;
  float volume = 1;
  float heard() const { return muted ? 0 : volume; }
};

class VideoAdShow final : public std::enable_shared_from_this<VideoAdShow>,
                          public VideoAdMediaListener,
                          public VideoAdScreen::Listener {
 public:
  struct Surroundings {
    VeltoVideoAdSettings settings;
    std::shared_ptr<VideoAdScreen> screen;
    std::shared_ptr<VideoAdSound> sound;
    size_t number = 1, count = 1;
    bool isFullscreen = false;
    std::shared_ptr<LoadRecord> record = {};
  };

  VideoAdShow(VASTAd ad, VASTMacros macros, Surroundings around, std::weak_ptr<VideoAdListener> listener);
  ~VideoAdShow();

  void prepare();  // its file is loaded, and nothing seen of it or told
  void begin();
  void refuse(VASTError error) { fault_ = error; }  // before it begins: that is how it ends
  void companionFailed() { goesOnWithout(VASTError::CompanionNotFetched); }
  void close();  // tells its servers, and nobody here
  void pause(bool paused);
  bool skip();
  void soundChanged();
  void setFullscreen(bool fullscreen);

  VeltoVideoAdInfo info() const;
  double seconds() const { return media_ ? media_->seconds() : 0; }
  bool maySkip() const;
  bool isPaused() const { return hasStarted_ && !isPlaying_; }
  VASTTracker& tracker() { return tracker_; }

  void mediaTries(const VASTMediaFile& file) override { notes_.file(VeltoTimelineKind::FileTried, file); }
  void mediaPassesOver(VASTError error) override { notes_.failed(error); }
  void mediaReady(const VASTMediaFile& file) override;
  void mediaStalled(bool stalled) override;
  void mediaEnded() override;
  void mediaFailed(VASTError error) override;
  void screenToggled() override { pause(!pausedByPerson_); }
  void screenMuted() override;
  void screenSkipped() override { skip(); }
  void screenEscaped() override;
  void screenPressed(std::optional<CGPoint> place) override;
  void screenWentAway() override;

 private:
  using Event = VideoMeasurement::Event;
  void observe();
  void showPicture();
  void startMeasuring();
  void notVerified(size_t verification, VASTNotVerified reason);
  void goesOnWithout(VASTError error);
  void tellWhatIsLeftOut();
  void applyPlaying();
  void startPlaying();
  void playheadMoved();
  void tellPassed();
  void look();
  void watchViewable();
  void tick();
  void retime();
  bool wasTakenAway() const;
  bool isTooLong(double seconds) const;
  void refresh();
  void end(VideoAdEnd how, std::optional<VASTError> error = {});

  VASTTracker tracker_;
  const Surroundings around_;
  const VideoAdNotes notes_;
  std::weak_ptr<VideoAdListener> listener_;
  std::shared_ptr<VideoAdMedia> media_;
  std::unique_ptr<VideoMeasurement> measurement_;
  VideoAdIcons icons_;
  std::unique_ptr<NSTimer> timer_;
  std::weak_ptr<UIView> root_;                // of the window that it began in
  std::vector<VeltoVideoAdQuartile> passed_;  // and not yet told
  std::optional<VASTMediaFile> file_;         // that is ready to play
  std::optional<VASTError> fault_;            // of what was to be prepared
  bool hasBegun_ = false, isReady_ = false, isNearEnd_ = false, hasStarted_ = false, hasEnded_ = false,
       isPlaying_ = false;
  bool pausedByPerson_ = false, isAway_ = false, isStalled_ = false, isFullscreen_ = false;
  bool countsAsSeen_ = false;
  uint64_t sighting_ = 0;  // which one is being timed
};

}  // namespace velto
