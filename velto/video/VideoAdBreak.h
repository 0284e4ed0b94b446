// The ads of one load, from the address to the end of the last one: a pod is played in its order, spare ads take the places of
// those that cannot be played. Made by VeltoVideoAd, which it speaks for; main thread.
#pragma once

#include "velto/platform/Handle.h"
#include "velto/timeline/InspectedPlacement.h"
#include "velto/vast/VASTResolver.h"
#include "velto/vast/VMAPDocument.h"
#include "velto/video/VeltoVideoAd.h"
#include "velto/video/VideoAdPage.h"
#include "velto/video/VideoAdShow.h"

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace velto {

class VideoAdBreak final : public std::enable_shared_from_this<VideoAdBreak>,
                           public VideoAdListener,
                           public InspectedPlacement {
 public:
  using State = VeltoVideoAd::State;
  using Why = VeltoAdEndReason;

  static std::shared_ptr<VideoAdBreak> make(std::weak_ptr<VeltoVideoAd> ad,
                                            std::weak_ptr<VeltoVideoAdDelegate> delegate);

  void setSettings(const VeltoVideoAdSettings& settings) { settings_ = settings; }
  void load(const std::string& url);
  void loadDocument(const std::string& text);
  void load(const VMAPAdSource& source);
  bool playIn(const std::shared_ptr<UIView>& view);
  bool playOver(const std::shared_ptr<UIViewController>& controller);
  void stop();
  void letGo(Why why);  // the end, of which nobody here hears

  // A load that waits for DidEndAll alone is one that is on its way.
  State state() const { return state_ == State::Empty && later_ ? State::Loading : state_; }
  const std::shared_ptr<VideoAdSound>& sound() const { return sound_; }
  void setFullscreen(bool fullscreen);
  // What the application wants of the ad that plays: done in the next turn, since the application hears of it.
  void post(std::function<void(VideoAdShow&)> wish) const;
  const std::shared_ptr<VideoAdShow>& show() const { return show_; }  // that plays, or played last; or null
  std::shared_ptr<VideoAdShow> playing() const;                       // only while ads of its load play
  std::shared_ptr<UIView> companionView(size_t place);

  PlacementRecord& placement() { return *placement_; }
  std::shared_ptr<const PlacementRecord> record() const override { return placement_; }
  const char* kindName() const override { return "video ad"; }
  const char* stateName() const override;
  void reload() override;
  bool simulate(Why) override { return false; }

  void adStarted() override;
  void adPassed(VeltoVideoAdQuartile quartile) override;
  void adPaused(bool paused) override;
  void adPressed() override;
  void adMuted(bool muted) override;
  void adNearsEnd() override;
  void adEnded(VideoAdEnd how, std::optional<VASTError> error, bool hadStarted) override;

 private:
  using Call = std::function<void(VeltoVideoAdDelegate&, VeltoVideoAd&)>;

  VideoAdBreak(std::weak_ptr<VeltoVideoAd> ad, std::weak_ptr<VeltoVideoAdDelegate> delegate);
  bool beginLoad(const std::function<void(VideoAdBreak&)>& again);
  void resolve(VASTDocument document);
  VASTResolver::Completion whenResolved();
  VASTSettings resolverSettings() const;
  VASTMacros macros() const;
  void waitForMedia(VASTResolution found);
  void loaded(VASTResolution found);
  void loadFailed(VASTError error);
  bool begin(std::shared_ptr<VideoAdScreen> screen);
  bool cannotPlay();
  void next();
  std::optional<VASTError> faultNow(const VASTAd& ad) const;
  void tellShortened();
  void tellUnplayed(VASTAd ad, size_t place, VASTError error);
  std::shared_ptr<VideoAdShow> makeShow(VASTAd ad, size_t number);
  void play(std::shared_ptr<VideoAdShow> show);
  void finish();
  void setState(State state);
  void endLoad(Why why);
  Why whyFinished() const;
  void removeScreen();
  void removeCompanions();
  void tell(const Call& call);
  void tellFailure(VASTError error);

  std::weak_ptr<VeltoVideoAd> ad_;
  std::weak_ptr<VeltoVideoAdDelegate> delegate_;
  VeltoVideoAdSettings settings_, loadedWith_;
  State state_ = State::Empty;
  uint64_t load_ = 0, showOf_ = 0;  // which one is the valid one; that of `show_`
  const std::shared_ptr<PlacementRecord> placement_ = std::make_shared<PlacementRecord>("video");
  std::shared_ptr<LoadRecord> loadRecord_;
  std::optional<Why> why_;                       // the load ends, if not of itself
  std::function<void(VideoAdBreak&)> lastLoad_;  // as the application asked for it
  VeltoAskedBy askedBy_ = VeltoAskedBy::Application;
  Handle resolving_, platformGoes_;
  std::optional<VASTResolution> found_;  // that waits for what plays it
  std::deque<VASTAd> pod_, spare_;
  size_t number_ = 0, count_ = 0;  // of the ad that plays
  std::shared_ptr<VideoAdSound> sound_ = std::make_shared<VideoAdSound>();
  bool isFullscreen_ = false, contentWaits_ = false, isMediaReady_ = false;
  // What plays is on its way out; it is over, and DidEndAll still to come.
  bool isStopped_ = false, endsWithThis_ = false, isEnding_ = false;
  std::function<void(VideoAdBreak&)> later_;  // a load that waits for that
  double begunAt_ = 0, loadedAt_ = 0;         // monotonic seconds
  std::shared_ptr<VideoAdScreen> screen_;
  std::shared_ptr<VideoAdShow> show_, upcoming_;
  std::map<size_t, std::shared_ptr<VideoAdPage>> companions_;
};

}  // namespace velto
