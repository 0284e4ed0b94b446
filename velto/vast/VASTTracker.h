// Tells the servers of one video ad what becomes of it (VAST 4.2, 3.14.1): fed by the player with what happens, it sends each
// address when its moment has come, once; those of events that happen again, each time. Main thread.
//
//   velto::VASTTracker tracker(ad, macros);
//   tracker.loaded();                       // the file can be played
//   tracker.started(player.duration());     // the first frame is on the screen: impression and start
//   tracker.playhead(player.seconds());     // often; quartiles and progress follow from it
//   tracker.completed();
//
// What comes in an order that cannot be (a pause before the start, a quartile after the end) says nothing. After the end there are
// still viewability, icons, companions, and a companion that cannot be fetched.
#pragma once

#include "velto/Export.h"
#include "velto/vast/VASTAd.h"
#include "velto/vast/VASTError.h"
#include "velto/vast/VASTMacros.h"
#include "velto/vast/VASTSender.h"

#include <string_view>

namespace velto {

struct VASTClickPosition {  // on the ad, points from its upper left corner
  double x = 0, y = 0;
};

enum class VASTViewability : uint8_t { Viewable, NotViewable, Undetermined };

// Why a verification script was not run: what [REASON] stands for (VAST 4.2, 3.17.3).
enum class VASTNotVerified : uint8_t { VendorRefused = 1, NotSupported = 2, LoadFailed = 3 };

class VELTO_EXPORT VASTTracker {
 public:
  // An ad as VASTResolver gives it. The macros are what is known of player, content and user; what the ad says of itself and
  // where it is, the tracker adds.
  explicit VASTTracker(VASTAd ad, VASTMacros macros = {});

  // Hears the name of each event as it is told, once however many addresses there are: for timelines and measurement.
  void observe(std::function<void(std::string_view event)> told) { told_ = std::move(told); }
  // Hears what became of each address that was told of an event; also after this object has gone.
  using Heard = std::function<void(std::string_view event, const VASTSent& sent)>;
  void observeSent(Heard heard) { heard_ = std::move(heard); }

  // What is being played, for [ASSETURI] and [MEDIAMIME].
  void chose(const VASTMediaFile& file);
  void setMacros(VASTMacros macros) { macros_ = std::move(macros); }

  void loaded();
  // The ad can be seen or heard for the first time. Once; started() does it by itself.
  void impression();
  // Nothing, where the player does not know how long it is: then as long as the document says.
  void started(std::optional<double> duration = std::nullopt);
  // Where the player is, in seconds. What was passed since the last time is told, in its order; going back tells nothing again.
  void playhead(double seconds);
  void completed();  // tells what has not been told of the way there, too

  void setMuted(bool muted);
  void setPaused(bool paused);
  void setFullscreen(bool fullscreen);  // also as playerExpand and playerCollapse
  void rewound();
  void acceptedInvitation();
  void otherInteraction();
  void minimized();

  // Whether the user may skip by now; never where the ad says nothing of it.
  bool maySkip() const;
  // The end: told as skip, and as closeLinear for documents of 3.0.
  void skipped();
  void closed();
  // Of errors with a file or on the way, the first is the ad's end; 409, 410, 603 and 604 are none, and are told each time. A
  // companion may be shown when the video is over, so 603 is told then, too.
  void failed(VASTError error);

  // Where the click leads; nothing when the ad leads nowhere.
  std::optional<std::string> clicked(std::optional<VASTClickPosition> position = std::nullopt);
  void customClicked();
  void viewability(VASTViewability viewability);  // once, whichever it is
  void notVerified(const VASTVerification& verification, VASTNotVerified reason);

  // Of one of the ad's icons or companions, by its place in the list; shown counts once each. Clicks give where they lead.
  void iconShown(size_t icon);
  std::optional<std::string> iconClicked(size_t icon);
  void companionShown(size_t companion);
  std::optional<std::string> companionClicked(size_t companion);

  const VASTAd& ad() const { return ad_; }
  std::optional<double> duration() const { return duration_; }
  bool hasEnded() const { return state_ == State::Ended; }

 private:
  enum class State : uint8_t { Waiting, Playing, Ended };
  // A point of the way at which something is told.
  struct Moment {
    double seconds = 0;
    const char* event;
    std::vector<std::string> urls;
  };

  void planMoments();
  void passUpTo(double seconds);
  void tell(std::string_view event);
  void send(std::string_view event, const std::vector<std::string>& urls, const VASTMacros& macros) const;
  VASTMacros macrosNow() const;
  bool isPlaying() const { return state_ == State::Playing; }

  VASTAd ad_;
  VASTMacros macros_;
  std::function<void(std::string_view)> told_;
  Heard heard_;
  std::optional<VASTMediaFile> file_;
  State state_ = State::Waiting;
  std::optional<double> duration_;
  double playhead_ = 0;
  std::vector<Moment> moments_;  // still to come, by time
  bool hasLoaded_ = false, hasImpression_ = false, hasViewability_ = false;
  bool isMuted_ = false, isPaused_ = false, isFullscreen_ = false;
  std::vector<bool> shownIcons_, shownCompanions_;
};

}  // namespace velto
