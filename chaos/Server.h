// The servers that a walk's library talks to: they answer as the script says, look at what they are asked, and know which
// tracks must not be lost.
#pragma once

#include "velto/headless/VeltoHeadless.h"

#include <deque>
#include <map>
#include <set>
#include <string>

#include "Promises.h"

namespace velto::chaos {

// What the host application has said last.
struct Consent {
  bool accepted = false;
  std::string gdpr, usPrivacy;
};

enum class TrackAnswer { Acknowledge, AcknowledgeLate, Refuse, Error, Offline, Silence, CaptivePortal, Cut };
inline constexpr int trackAnswers = 8;

class Server {
 public:
  Server(Promises& promises, const Consent& consent) : promises_(promises), consent_(consent) {}

  // A run of the application begins, and has ended.
  void attach(headless::Platform& platform);
  void detach();

  std::deque<headless::Answer> next;  // for what is no track; then nothing fills
  TrackAnswer tracks = TrackAnswer::Acknowledge;

  // How the store is: what cannot be written need not be there.
  void storeFails(bool fails);
  bool storeCanBeWritten() const { return !storeFails_; }
  void storeWasLost();
  void applicationInFront(bool inFront);
  // A press was told as a click.
  void clickIsDue() { ++clicksDue_; }
  // All that is not acknowledged is in the store, or soon will be.
  void checkTracks();
  void timePassed(std::chrono::nanoseconds by) {
    polledFor_ += inFront_ ? std::chrono::duration<double>(by).count() : 0;
  }
  size_t adRequests() const { return adRequests_; }
  size_t waiting() const { return waiting_.size(); }

 private:
  struct Track {
    bool inStore;  // since it was sent, or since the store could be written again
  };
  headless::Answer answer(const NSURLRequest& request);
  headless::Answer answerTrack(const NSURLRequest& request, bool isClick);
  void checkConsent(const NSURLRequest& request);
  double now() const { return platform_->clock().monotonicSeconds(); }

  Promises& promises_;
  const Consent& consent_;
  headless::Platform* platform_ = nullptr;
  std::map<std::string, Track> waiting_;  // sent, and no server has acknowledged it
  std::set<std::string> sent_;            // in this run
  int clicksDue_ = 0;
  bool storeFails_ = false;
  bool inFront_ = true;
  size_t adRequests_ = 0;
  size_t found_ = 0;       // in the store when this run began
  double polledFor_ = 0;   // seconds of this run with the application in front
  double quietSince_ = 0;  // from when on polling can have seen to the store
};

}  // namespace velto::chaos
