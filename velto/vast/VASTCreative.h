// What of a video ad is played or drawn, as a document says it. Plain values; any thread. Addresses are as they were sent,
// with macros; lengths are points, times seconds. The numbers name sections of VAST 4.2.
#pragma once

#include "velto/vast/VASTTime.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velto {

// An address that is told of something, with the name of what it is told of (3.14.1): "start", "firstQuartile", …,
// "progress", which has an offset. Names are as the standard writes them, whatever their case in the document.
struct VASTTracking {
  std::string event;
  std::string url;
  std::optional<VASTOffset> offset;
};

// One form of something that is drawn (3.15): a picture, a page, or markup.
struct VASTResource {
  enum class Kind : uint8_t { Static, IFrame, HTML };
  Kind kind = Kind::Static;
  std::string content;       // an address, or markup
  std::string creativeType;  // of a static one: its MIME type
};

// What a server adds of its own (3.7.3, 3.18.1).
struct VASTExtension {
  std::string type;
  std::string markup;  // what is inside, as it stands
};

// A file of the ad's video or audio (3.9.1).
struct VASTMediaFile {
  enum class Delivery : uint8_t { Unknown, Progressive, Streaming };
  std::string url;
  std::string id;
  Delivery delivery = Delivery::Unknown;
  std::string type;   // MIME type, lower case
  std::string codec;  // as RFC 6381 writes it
  double width = 0, height = 0;
  // Kilobits a second; the lowest and highest where the rate varies. Nothing: not said.
  std::optional<double> bitrate, minBitrate, maxBitrate;
  std::optional<double> fileSize;  // bytes
  bool scalable = true, maintainAspectRatio = true;
  std::string apiFramework;  // not empty: no file to play, but a program, such as "VPAID"
};

// A program that wants to be run beside the file (3.9.3), such as one of "SIMID". None is.
struct VASTInteractiveFile {
  std::string url, type, apiFramework;
};

struct VASTCaption {  // 3.9.5
  std::string url, type, language;
};

// 3.7.1; the registry is "unknown" where none is named.
struct VASTUniversalAdId {
  std::string registry, value;
};

// A small picture over the video, such as the one of an advertising choices programme (3.11.1).
struct VASTIcon {
  std::string program;
  double width = 0, height = 0;
  std::string xPosition, yPosition;  // "left", "right", "top", "bottom", or points
  std::optional<double> offset;      // shown from then on; nothing: from the start
  std::optional<double> duration;    // for so long; nothing: to the end
  double pxratio = 1;
  std::vector<VASTResource> resources;
  std::string clickThrough;
  std::vector<std::string> clickTrackings;  // 3.11.4
  std::vector<std::string> viewTrackings;   // 3.11.2
};

// An ad beside the player (3.13.1).
struct VASTCompanion {
  std::string id, adSlotId, altText, apiFramework;
  double width = 0, height = 0;
  double pxratio = 1;
  std::string renderingMode;  // "default", "end-card" or "concurrent"
  std::vector<VASTResource> resources;
  std::string adParameters;
  std::string clickThrough;
  std::vector<std::string> clickTrackings;
  std::vector<VASTTracking> trackings;  // "creativeView"
};

// Of the companions of an ad, how many must be shown (3.13 required): where they cannot be, the ad is not played (602).
enum class VASTCompanionsRequired : uint8_t { None, Any, All };

// The video itself (3.8).
struct VASTLinear {
  std::string creativeId, adId;  // 3.7
  std::vector<VASTUniversalAdId> universalAdIds;
  std::optional<double> duration;        // 3.8.1
  std::optional<VASTOffset> skipOffset;  // nothing: cannot be skipped
  std::vector<VASTMediaFile> mediaFiles;
  std::vector<VASTInteractiveFile> interactiveFiles;
  std::vector<VASTCaption> captions;
  std::string adParameters;                 // 3.8.2
  std::string clickThrough;                 // 3.10.1
  std::vector<std::string> clickTrackings;  // 3.10.2
  std::vector<std::string> customClicks;    // 3.10.3
  std::vector<VASTTracking> trackings;      // 3.14
  std::vector<VASTIcon> icons;
  std::vector<VASTExtension> extensions;  // 3.7.3
};

}  // namespace velto
