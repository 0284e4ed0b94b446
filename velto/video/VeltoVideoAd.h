// Video ads, one or a pod of several, in an application's own player or over its window. The document comes from an ad server
// (VeltoVASTURL makes such addresses) or from the application; what plays, what is told to servers and how it is measured follow
// from it. Main thread. Link velto::vast.
//
//   ad = velto::VeltoVideoAd::make(delegate);
//   ad->load(url);                        // DidLoad or DidFail
//   ad->playIn(playerView);               // content pause, start, quartiles, complete, …, content resume, end of all
//
// Letting go of it, or of the platform, ends whatever it does, and nothing is called any more.
#pragma once

#include "velto/Export.h"
#include "velto/timeline/VeltoAdTimeline.h"
#include "velto/video/VeltoVideoAdDelegate.h"
#include "velto/video/VeltoVideoAdSettings.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velto {

class UIView;
class UIViewController;
class VideoAdBreak;
struct VMAPAdSource;

class VELTO_EXPORT VeltoVideoAd : public std::enable_shared_from_this<VeltoVideoAd> {
 public:
  using Delegate = std::shared_ptr<VeltoVideoAdDelegate>;
  enum class State : uint8_t { Empty, Loading, Ready, Playing };

  // Held weakly. Throws std::logic_error without a platform.
  static std::shared_ptr<VeltoVideoAd> make(const Delegate& delegate);
  VeltoVideoAd(const VeltoVideoAd&) = delete;
  VeltoVideoAd& operator=(const VeltoVideoAd&) = delete;
  ~VeltoVideoAd();

  // For loads from now on.
  void setSettings(const VeltoVideoAdSettings& settings);

  // A new load takes the place of one that is on its way or ready. While ads play, nothing happens; once they are stopped, or
  // in what is told of the end of the last one, the load begins after DidEndAll.
  void load(const std::string& url);
  void loadDocument(const std::string& text);
  // What a break of a schedule names (VMAPDocument.h), by its own rules on pods and wrappers.
  void load(const VMAPAdSource& source);
  State state() const;

  // Plays what is ready: over everything in that view, in all of its bounds; or over all of that controller's window. False,
  // and nothing happens, when nothing is ready or there is no such place. Ads in a view that is taken out of its window, or
  // goes with it, are closed after a second.
  bool playIn(const std::shared_ptr<UIView>& view);
  bool playOver(const std::shared_ptr<UIViewController>& controller);

  // As by the person, in the next turn of the main queue.
  void pause();
  void resume();
  bool skip();  // false: not yet, or not at all
  void setMuted(bool muted);
  bool isMuted() const;
  void setVolume(float volume);
  // The player that the ads are in fills the screen, or does so no more: for who measures.
  void setFullscreen(bool fullscreen);
  // Closes all ads that play, or forgets what was loaded. DidRequestContentResume and DidEndAll follow where ads played.
  void stop();

  // Of the ad that plays.
  std::optional<VeltoVideoAdInfo> info() const;
  double currentTime() const;  // seconds
  bool isPaused() const;
  // What belongs beside it, also after its end until the next one begins. The view, of a companion by its place in that list,
  // is a page that loads by itself; once it is in a window it counts as shown, and it leaves with its ad. Null when there is none.
  std::vector<VeltoVideoAdCompanion> companions() const;
  std::shared_ptr<UIView> companionView(size_t place) const;

  // What became of its last loads, oldest first (VeltoAdTimeline.h).
  std::vector<VeltoAdTimeline> veltoAdTimeline() const;
  void addTimelineObserver(std::weak_ptr<VeltoAdTimelineObserver> observer);
  // What timelines, logs and figures call it, of loads to come: "video" unless said.
  void setPlacement(const std::string& name);

 private:
  VeltoVideoAd() = default;

  std::shared_ptr<VideoAdBreak> break_;
};

}  // namespace velto
