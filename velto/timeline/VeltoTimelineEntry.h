// One thing that happened to a load: what it was, when, and its particulars in a type of their own. Values; any thread.
#pragma once

#include "velto/Export.h"
#include "velto/platform/foundation/JSON.h"
#include "velto/timeline/VeltoAdEndReason.h"
#include "velto/timeline/VeltoAdWeight.h"
#include "velto/timeline/VeltoVideoSteps.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace velto {

enum class VeltoTimelineKind : uint8_t {
  Asked,              // VeltoAskedBy
  ListHit,            // an ad fetched earlier is used. VeltoSeconds: since its lifetime ran out
  RequestBuilt,       // VeltoBytes: of its body
  Sent,               // the request is on its way. VeltoConnection
  FirstByte,          // of the answer
  Answered,           // VeltoAnswer
  AnswerFailed,       // VeltoAdEndReason: of the transport
  Resolved,           // VeltoAdKind
  NetworkTried,       // VeltoNetworkTry: an item of mediation, with no reason
  NetworkPassedOver,  // VeltoNetworkTry: with the reason
  WebProcess,         // a web view was made. VeltoWebProcess
  MarkupGiven,        // to the web view
  PageLoaded,         // as the engine says
  LoadFinished,       // as the page says, or the adapter's view is in its place; DidFinishLoad of a banner
  Animated,           // the entry animation has begun
  PaintedFirst,       // some of it can be seen, as measured from what the window has painted
  Ready,              // an interstitial or video ad waits to be shown; of videos VeltoVideoPod
  ShowAsked,          // VeltoAskedBy
  ShowFailed,         // VeltoAdEndReason
  Appeared,           // an interstitial is on the screen, or the first video ad plays
  Disappeared,        // and off it
  Visible,            // VeltoShare: how much of the ad can be seen from now on
  Tapped,             // VeltoTap
  RichMedia,          // VeltoRichMedia: the state of the page from now on
  Measured,           // VeltoMeasured
  AdapterFailed,      // the adapter of an ad that is shown said so
  AdapterClosed,      // the same, of a banner
  Heavy,              // VeltoAdExcess: the ad has crossed a limit; once for each
  Weighed,            // VeltoAdWeight: all that the ad's page has cost, right before its end
  // Of video ads.
  DocumentAsked,     // VeltoVideoDocument
  DocumentAnswered,  // VeltoVideoDocument: it is there, or is none
  FileTried,         // VeltoVideoFile
  FileChosen,        // VeltoVideoFile: it is the one that plays
  FirstPicture,      // VeltoVideoMoment: in its view
  VideoEvent,        // VeltoVideoEvent: what servers can be told of has happened
  AddressTold,       // VeltoVideoTold: also after the load's end
  VideoFailed,       // VeltoVideoFailure: of a file, an ad, a document or wrapper; also after the load's end
};

enum class VeltoAskedBy : uint8_t { Application, Refresh, AutoShow, Inspector };
enum class VeltoConnection : uint8_t { Made, Reused };
enum class VeltoAnswerClass : uint8_t { Unknown, NoFill, Markup, Mediation };
enum class VeltoAdKind : uint8_t { Markup, Adapter, RichMedia };
enum class VeltoWebProcess : uint8_t { Cold, Warm };
enum class VeltoTap : uint8_t {
  Told,          // to the delegate; a click is not told, for want of identifiers
  ClickTracked,  // to the delegate and the tracking server
  LinkOpened,    // handed to the system
  LinkInPlace,   // nothing opens it: the page goes there itself
};
enum class VeltoRichMedia : uint8_t { Loading, Default, Expanded, Resized, Hidden };
enum class VeltoMeasured : uint8_t { SessionStarted, Impression, SessionFinished };
struct VeltoBytes {
  uint64_t bytes = 0;
  bool operator==(const VeltoBytes&) const = default;
};
struct VeltoSeconds {
  double seconds = 0;
  bool operator==(const VeltoSeconds&) const = default;
};
struct VeltoShare {
  int percent = 0;
  bool operator==(const VeltoShare&) const = default;
};
struct VeltoAnswer {
  int status = 0;
  VeltoAnswerClass kind = VeltoAnswerClass::Unknown;
  bool operator==(const VeltoAnswer&) const = default;
};
struct VeltoNetworkTry {
  std::string network;  // as the instructions name its adapter; at most 64 bytes of it
  std::optional<VeltoAdEndReason> passedOver;
  bool operator==(const VeltoNetworkTry&) const = default;
};

struct VELTO_EXPORT VeltoTimelineEntry {
  using Detail = std::variant<std::monostate, VeltoAskedBy, VeltoBytes, VeltoSeconds, VeltoConnection,
                              VeltoAnswer, VeltoAdEndReason, VeltoAdKind, VeltoNetworkTry, VeltoWebProcess,
                              VeltoShare, VeltoTap, VeltoRichMedia, VeltoMeasured, VeltoAdExcess,
                              VeltoAdWeight, VeltoVideoDocument, VeltoVideoPod, VeltoVideoFile,
                              VeltoVideoMoment, VeltoVideoEvent, VeltoVideoTold, VeltoVideoFailure>;

  VeltoTimelineKind kind;
  double seconds = 0;  // of the platform's monotonic clock
  Detail detail;       // of the type that stands beside the kind

  // The detail's own fields, by names that stay as they are: {"by": "refresh"}, {"status": 200, "class": "markup"}.
  JSON::Object fields() const;
};

// "load-finished": stays as it is.
VELTO_EXPORT std::string_view nameOf(VeltoTimelineKind kind);

}  // namespace velto
