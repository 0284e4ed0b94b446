// From the address of a video ad, or from a document, to ads that can be played: goes after wrappers (VAST 4.2, 2.4.4 and 3.19)
// and tells servers of what fails on the way. Main thread; requests by the platform's URL session.
//
//   resolving_ = velto::VASTResolver::resolve(*url, {}, [](velto::VASTResolution found) {
//     if (found.pod.empty()) return giveUp(found.error);
//     play(found.pod);
//   });
//
// What servers of wrappers asked to be told is in each ad beside what its own asked.
#pragma once

#include "velto/Export.h"
#include "velto/platform/Handle.h"
#include "velto/platform/foundation/NSURL.h"
#include "velto/vast/VASTDocument.h"
#include "velto/vast/VASTMacros.h"
#include "velto/vast/VASTSender.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

namespace velto {

// Something that a resolution did, for timelines.
struct VASTStep {
  enum class Kind : uint8_t {
    Asked,     // for the document of that depth
    Answered,  // it is there, with `ads`; or it is none, with `error`
    Failed,    // an ad, a wrapper or a document, with `error`
    Told,      // somebody of that, with `sent`; also after the completion
  };
  Kind kind = Kind::Asked;
  size_t depth = 0;  // of the document: 0 is the first, 1 that of its wrapper
  size_t request =
      0;  // which one, from 1 on: those of a pod are asked for at once; 0: the document was given
  size_t ads = 0;
  std::optional<VASTError> error = {};
  VASTSent sent = {};
};

struct VASTSettings {
  size_t mostWrappers = 5;                                     // one inside another; one more fails with 302
  std::chrono::nanoseconds timeout = std::chrono::seconds(5);  // of each answer; later it fails with 301
  std::chrono::nanoseconds wholeTimeout =
      std::chrono::seconds(20);        // of all of them; what is missing by then fails with 301
  size_t mostRequests = 50;            // for one resolution, however many ads it has; beyond, 302
  size_t mostAds = 20;                 // of one resolution, pod and spare together; more are left out
  bool allowMultipleAds = true;        // the first answer may be a pod
  bool followWrappers = true;          // and may be wrappers; else these fail with 300
  std::optional<double> longest = {};  // seconds: longer ads fail with 202
  VASTMacros macros = {};              // what is known of player, content and user, for all addresses
  std::function<void(const VASTStep&)> heard = {};
};

struct VASTResolution {
  // To be played one after another; each has `linear` with media files, and none is a wrapper. Several only where the document
  // made them a pod: of ads that stand alone one plays.
  std::vector<VASTAd> pod;
  // Ads that stand alone and were not needed, in the document's order, without wrappers. One takes the place of an ad of the
  // pod that fails later.
  std::vector<VASTAd> spare;
  // Why there is none, the last reason of several; with ads, nothing. An answer that simply has no ads is 303.
  std::optional<VASTError> error;
};

class VELTO_EXPORT VASTResolver {
 public:
  using Completion = std::function<void(VASTResolution)>;

  // The completion is called once, later on the main thread, unless the handle goes before.
  [[nodiscard]] static Handle resolve(const NSURL& tag, VASTSettings settings, Completion completion);
  // The same for a document that is there already.
  [[nodiscard]] static Handle resolve(VASTDocument document, VASTSettings settings, Completion completion);

  // Why the ad cannot be played here, were it not a wrapper: it has no video (200, 201), no file (101) or only files that are
  // programs (403).
  static std::optional<VASTError> faultOf(const VASTAd& ad);
};

}  // namespace velto
