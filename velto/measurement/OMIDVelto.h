// The codes of the measurement engine's interface, and how its operations report an error: through the last
// argument, which may be null and is set only when they fail. Main thread, like all of the engine.
#pragma once

#include "velto/platform/NSError.h"

#include <optional>
#include <string_view>

namespace velto {

enum OMIDVeltoCreativeType : int {
  OMIDVeltoCreativeTypeDefinedByJavaScript = 1,
  OMIDVeltoCreativeTypeHTMLDisplay = 2,
  OMIDVeltoCreativeTypeNativeDisplay = 3,
  OMIDVeltoCreativeTypeVideo = 4,
  OMIDVeltoCreativeTypeAudio = 5,
};

enum OMIDVeltoImpressionType : int {
  OMIDVeltoImpressionTypeDefinedByJavaScript = 1,
  OMIDVeltoImpressionTypeUnspecified = 2,
  OMIDVeltoImpressionTypeLoaded = 3,
  OMIDVeltoImpressionTypeBeginToRender = 4,
  OMIDVeltoImpressionTypeOnePixel = 5,
  OMIDVeltoImpressionTypeViewable = 6,
  OMIDVeltoImpressionTypeAudible = 7,
  OMIDVeltoImpressionTypeOther = 8,
};

// Who reports the impression, and who the media events.
enum OMIDVeltoOwner : int {
  OMIDVeltoOwnerJavaScript = 1,
  OMIDVeltoOwnerNative = 2,
  OMIDVeltoOwnerNone = 3,
};

enum OMIDVeltoFriendlyObstructionType : int {
  OMIDVeltoFriendlyObstructionMediaControls = 0,
  OMIDVeltoFriendlyObstructionCloseAd = 1,
  OMIDVeltoFriendlyObstructionNotVisible = 2,
  OMIDVeltoFriendlyObstructionOther = 3,
};

enum OMIDVeltoPosition : int {
  OMIDVeltoPositionPreroll = 0,
  OMIDVeltoPositionMidroll = 1,
  OMIDVeltoPositionPostroll = 2,
  OMIDVeltoPositionStandalone = 3,
};

enum OMIDVeltoPlayerState : int {
  OMIDVeltoPlayerStateMinimized = 0,
  OMIDVeltoPlayerStateCollapsed = 1,
  OMIDVeltoPlayerStateNormal = 2,
  OMIDVeltoPlayerStateExpanded = 3,
  OMIDVeltoPlayerStateFullscreen = 4,
};

enum OMIDVeltoInteractionType : int {
  OMIDVeltoInteractionTypeClick = 0,
  OMIDVeltoInteractionTypeAcceptInvitation = 1,
};

inline constexpr char OMIDVeltoErrorDomain[] = "OMIDVeltoErrorDomain";
enum OMIDVeltoErrorCode : int {
  OMIDVeltoErrorNotActive = 1,        // the engine was not activated
  OMIDVeltoErrorInvalidArgument = 2,  // a value that is out of range, blank or missing
  OMIDVeltoErrorInvalidState = 3,     // not now: before the start, after the finish, a second time
  OMIDVeltoErrorWrongOwner = 4,       // somebody else reports that
};

using OMIDVeltoErrorResult = std::optional<NSError>*;

// False, with the error told: for "return OMIDVeltoFail(…)".
bool OMIDVeltoFail(OMIDVeltoErrorResult error, OMIDVeltoErrorCode code, const char* text);

// Empty, or nothing but blanks and line breaks.
bool OMIDVeltoIsBlank(std::string_view text);

// The names that verification scripts know the codes by. A code outside the list has none (null).
const char* OMIDVeltoName(OMIDVeltoCreativeType type);
const char* OMIDVeltoName(OMIDVeltoImpressionType type);
const char* OMIDVeltoName(OMIDVeltoOwner owner);
const char* OMIDVeltoName(OMIDVeltoPosition position);
const char* OMIDVeltoName(OMIDVeltoPlayerState state);
const char* OMIDVeltoName(OMIDVeltoInteractionType type);

}  // namespace velto
