// Names of the codes.
#include "velto/measurement/OMIDVelto.h"

#include <array>

namespace velto {
namespace {

// `first` is the code of the first name.
template <size_t count>
const char* nameAt(const std::array<const char*, count>& names, int code, int first) {
  const int index = code - first;
  return index >= 0 && static_cast<size_t>(index) < count ? names[static_cast<size_t>(index)] : nullptr;
}

}  // namespace

bool OMIDVeltoFail(OMIDVeltoErrorResult error, OMIDVeltoErrorCode code, const char* text) {
  if (error) *error = NSError{OMIDVeltoErrorDomain, code, text};
  return false;
}

bool OMIDVeltoIsBlank(std::string_view text) {
  return text.find_first_not_of(" \t\n\v\f\r") == std::string_view::npos;
}

const char* OMIDVeltoName(OMIDVeltoCreativeType type) {
  static constexpr std::array names{"definedByJavaScript", "htmlDisplay", "nativeDisplay", "video", "audio"};
  return nameAt(names, type, 1);
}

const char* OMIDVeltoName(OMIDVeltoImpressionType type) {
  static constexpr std::array names{"definedByJavaScript",
                                    "unspecified",
                                    "loaded",
                                    "beginToRender",
                                    "onePixel",
                                    "viewable",
                                    "audible",
                                    "other"};
  return nameAt(names, type, 1);
}

const char* OMIDVeltoName(OMIDVeltoOwner owner) {
  static constexpr std::array names{"javascript", "native", "none"};
  return nameAt(names, owner, 1);
}

const char* OMIDVeltoName(OMIDVeltoPosition position) {
  static constexpr std::array names{"preroll", "midroll", "postroll", "standalone"};
  return nameAt(names, position, 0);
}

const char* OMIDVeltoName(OMIDVeltoPlayerState state) {
  static constexpr std::array names{"minimized", "collapsed", "normal", "expanded", "fullscreen"};
  return nameAt(names, state, 0);
}

const char* OMIDVeltoName(OMIDVeltoInteractionType type) {
  static constexpr std::array names{"click", "invitationAccept"};
  return nameAt(names, type, 0);
}

}  // namespace velto
