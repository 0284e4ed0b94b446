// What an application hears of its video ads, and the values in it. All calls come on the main thread, never inside a call of
// the application's own. Delegates are held weakly; an ad may be let go of inside any of these calls, and then nothing more comes.
#pragma once

#include "velto/Export.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace velto {

class VeltoVideoAd;

enum class VeltoVideoAdQuartile : uint8_t { First, Midpoint, Third };

// Why an ad was not shown, or not to its end.
struct VeltoVideoAdError {
  int code =
      900;  // as its servers are told (VAST 4.2, 2.3.6.3): 303 where there is no ad, 401 for a missing file, …
  std::string explanation;  // for developers
};

// The ad that plays.
struct VeltoVideoAdInfo {
  std::string identifier, title, advertiser, adSystem;
  size_t number = 1, count = 1;          // "ad 1 of 2"
  double duration = 0;                   // seconds; 0: not known
  std::optional<double> skippableAfter;  // seconds from its start; nothing: never
  bool leadsSomewhere = false;           // a click on it opens something
};

class VELTO_EXPORT VeltoVideoAdDelegate {
 public:
  virtual ~VeltoVideoAdDelegate() = default;

  // There is something to play: playIn() or playOver().
  virtual void veltoVideoAdDidLoad(VeltoVideoAd& /*ad*/) {}
  // Before the load was over: nothing will be played. While ads play: the one that was next, or that plays, cannot be, and no
  // other takes its place; the next one of the pod follows.
  virtual void veltoVideoAdDidFail(VeltoVideoAd& /*ad*/, const VeltoVideoAdError& /*withError*/) {}

  // Ads are about to play: the application's own video pauses, also if no first picture follows.
  virtual void veltoVideoAdDidRequestContentPause(VeltoVideoAd& /*ad*/) {}
  // The first picture of an ad is there.
  virtual void veltoVideoAdDidStart(VeltoVideoAd& /*ad*/, const VeltoVideoAdInfo& /*info*/) {}
  virtual void veltoVideoAdDidPass(VeltoVideoAd& /*ad*/, VeltoVideoAdQuartile /*quartile*/) {}
  virtual void veltoVideoAdDidPause(VeltoVideoAd& /*ad*/) {}   // by whomever, also since nobody can see it
  virtual void veltoVideoAdDidResume(VeltoVideoAd& /*ad*/) {}  // the same ad
  // A person pressed the ad, or what opens its place.
  virtual void veltoVideoAdDidPress(VeltoVideoAd& /*ad*/) {}
  // A person switched its sound: VeltoVideoAd::isMuted() is another.
  virtual void veltoVideoAdDidChangeMuted(VeltoVideoAd& /*ad*/, bool /*muted*/) {}
  virtual void veltoVideoAdDidSkip(VeltoVideoAd& /*ad*/) {}
  virtual void veltoVideoAdDidComplete(VeltoVideoAd& /*ad*/) {}
  // The ads are over or were closed, and are in no view any more: the application's video goes on.
  virtual void veltoVideoAdDidRequestContentResume(VeltoVideoAd& /*ad*/) {}
  // The last call of what was loaded.
  virtual void veltoVideoAdDidEndAll(VeltoVideoAd& /*ad*/) {}
};

}  // namespace velto
