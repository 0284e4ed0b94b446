// What timelines say of video ads: the particulars of their entries. Values; any thread. `ad` is the place in the pod, from 1 on;
// 0 is none of them: a document or a wrapper on the way to them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace velto {

struct VeltoVideoDocument {
  int depth = 0;            // 0: the one that the load asked for; 1: of its wrapper, and so on
  std::optional<int> ads;   // of one that is there: how many it has
  std::optional<int> code;  // why it is of no use (VAST 4.2, 2.3.6.3)
  int request = 0;  // which of the load's, from 1 on: several may be under way; 0: the application gave it
  bool operator==(const VeltoVideoDocument&) const = default;
};

// What a load has brought: ads to be played one after another, and those that may take their places.
struct VeltoVideoPod {
  int ads = 0, spare = 0;
  bool operator==(const VeltoVideoPod&) const = default;
};

struct VeltoVideoFile {
  int ad = 0;
  std::string type;               // as its document says it; at most 64 bytes of it
  int width = 0, height = 0;      // the same
  std::optional<double> bitrate;  // kilobits a second
  bool operator==(const VeltoVideoFile&) const = default;
};

struct VeltoVideoMoment {
  int ad = 0;
  double playhead = 0;  // seconds
  bool operator==(const VeltoVideoMoment&) const = default;
};

struct VeltoVideoEvent {
  int ad = 0;
  std::string
      event;  // as the standard names it (VAST 4.2, 3.14.1): "firstQuartile"; "impression", "error", "click"
  bool operator==(const VeltoVideoEvent&) const = default;
};

// One address that was told of an event, when it is known what became of that.
struct VeltoVideoTold {
  enum class Result : uint8_t {
    Arrived,  // the server answered
    Perhaps,  // it left, and no answer came: it is not sent again
    Waits,    // the network was away: it is sent again
    GivenUp,  // it is no address, or its server cannot be reached
  };
  int ad = 0;
  std::string event;
  Result result = Result::Arrived;
  int status = 0;  // of the answer; 0: none
  bool operator==(const VeltoVideoTold&) const = default;
};

struct VeltoVideoFailure {
  int ad = 0;
  int code = 900;  // as its servers are told (VAST 4.2, 2.3.6.3)
  bool operator==(const VeltoVideoFailure&) const = default;
};

}  // namespace velto
