// What an application says of its video ads before they are loaded, and the values that they have. Plain values; any thread.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velto {

// Where the ads stand in the application's video.
enum class VeltoVideoAdPosition : uint8_t { Preroll, Midroll, Postroll, Standalone };

struct VeltoVideoAdSettings {
  VeltoVideoAdPosition position = VeltoVideoAdPosition::Preroll;
  bool startsMuted = false;
  float volume = 1;  // 0 … 1; the output volume comes on top
  bool showsControls =
      true;  // false: the application has its own, and calls what VeltoVideoAd.h has for them
  // Documents: wrappers inside one another, the time for each answer, and for all of a load.
  size_t mostWrappers = 5;
  std::chrono::milliseconds answerTimeout = std::chrono::seconds(5), loadTimeout = std::chrono::seconds(20);
  // Files: until the first picture, and as long as one may stand still for lack of data. Then the next file is tried.
  std::chrono::milliseconds fileTimeout = std::chrono::seconds(8);
  std::optional<double> longest = {};  // seconds; longer ads are refused
  // Kilobits a second, to choose among files by; nothing: what the network has carried for earlier ones.
  std::optional<double> bandwidth = {};
  bool onlySecureFiles = false;  // by https
  // For the macros of addresses; empty: not known.
  std::string contentURL = {}, contentIdentifier = {}, consent = {}, regulations = {};
  std::optional<double> contentPosition = {};  // seconds: where the application's own video stands meanwhile
  // Whose verification scripts are not run.
  std::vector<std::string> refusedVendors = {};
};

// An ad that belongs beside the player.
struct VeltoVideoAdCompanion {
  std::string identifier, slot, alternativeText;
  double width = 0, height = 0;  // points
  bool isEndCard = false;        // for after the video, in its place
};

}  // namespace velto
