// The words of the rich-media convention (MRAID 2.0): commands, states, placements, and the statements that a
// page is spoken to with. Any thread.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace velto {

// A page names a command in the host of an "mraid://" URL.
inline constexpr std::array<const char*, 14> VeltoMRAIDActionValue{
    "open",
    "expand",
    "playVideo",
    "resize",
    "storePicture",
    "createCalendarEvent",
    "setOrientationProperties",
    "setExpandProperties",
    "setResizeProperties",
    "setCurrentAppOrientation",
    "setLocation",
    "close",
    "unload",
    "mraidLog",
};

// The version told, and what each statement is wrapped in.
inline constexpr std::array<const char*, 2> MRAIDBridge{"2.0", "window.mraid.%@;"};
inline constexpr std::array<const char*, 3> MRAIDLocationType{"1", "2", "3"};
inline constexpr std::array<const char*, 11> MRAIDFunction{
    "setIsViewable(%@)",        "fireEvent(%@)",           "setScreenSize(%@)",      "setMaxSize(%@)",
    "setVersion(\"%@\")",       "setState(\"%@\")",        "setDefaultPosition(%@)", "setCurrentPosition(%@)",
    "setPlacementType(\"%@\")", "setSupports(\"%@\", %@)", "setLocation(%@)",
};
inline constexpr std::array<const char*, 5> MRAIDState{"loading", "default", "expanded", "resized", "hidden"};
inline constexpr std::array<const char*, 3> MRAIDPlacementType{"unknown", "inline", "interstitial"};
inline constexpr std::array<const char*, 3> MRAIDOrientation{"portrait", "landscape", "none"};
enum MRAIDStateIndex : size_t {
  MRAIDStateLoading,
  MRAIDStateDefault,
  MRAIDStateExpanded,
  MRAIDStateResized,
  MRAIDStateHidden,
};
enum MRAIDPlacementIndex : size_t { MRAIDPlacementUnknown, MRAIDPlacementInline, MRAIDPlacementInterstitial };
enum MRAIDOrientationIndex : size_t {
  MRAIDOrientationPortrait,
  MRAIDOrientationLandscape,
  MRAIDOrientationNone
};
inline constexpr std::array<const char*, 7> MRAIDFeature{"sms",      "tel",   "storePicture", "inlineVideo",
                                                         "calendar", "vpaid", "location"};
inline constexpr std::array<const char*, 7> MRAIDEvents{
    "error", "ready", "sizeChange", "stateChange", "exposureChange", "audioVolumeChange", "viewableChange"};
// The number is one that is kept free for fiction.
inline constexpr std::array<const char*, 9> MRAIDValue{
    "{x: %.2f, y: %.2f, width: %.2f, height: %.2f}",
    "{width: %.2f, height: %.2f}",
    "{volumePercentage: %.1f}",
    "{lat: %f, lon: %f, type: %d, accuracy: %f, lastfix: %f, ipservice: %@}",
    "{exposedPercentage: %.1f, visibleRectangle: %@, occlusionRectangles: %@}",
    "true",
    "false",
    "tel://12025550123",
    "sms://12025550123",
};

inline constexpr float VeltoMRAIDMinDp = 50;  // the side of a close region, points
inline constexpr float VeltoMRAIDExposedPercentageNoVisible = 0;
inline constexpr float VeltoMRAIDExposedPercentageFullVisible = 100;

// A text that knows whether it is an entry of one of the tables above or came from elsewhere, perhaps with
// the same letters. Some decisions look at that.
class MRAIDText {
 public:
  MRAIDText(std::string text) : text_(std::move(text)) {}
  static MRAIDText entry(const char* entry) {
    MRAIDText text{std::string(entry)};
    text.isFromTable_ = true;
    return text;
  }
  bool isEntry(const char* entry) const { return isFromTable_ && text_ == entry; }
  const std::string& text() const { return text_; }
  friend bool operator==(const MRAIDText& one, std::string_view other) { return one.text_ == other; }

 private:
  std::string text_;
  bool isFromTable_ = false;
};

}  // namespace velto
