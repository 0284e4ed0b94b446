// Why a load ended, or an ad could not be shown: one reason for each way that the library knows, with the words for
// people in one table. A delegate finds it in its error, a timeline at its end. Any thread.
#pragma once

#include "velto/Export.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace velto {

enum class VeltoAdEndReason : uint8_t {
  // The request could not be made.
  NoServerAddress,
  BadRequestValue,
  // It did not reach the server, or its answer not the application.
  Offline,
  NameNotFound,
  NotConnected,
  Untrusted,
  SecureConnectionFailed,
  TimedOut,
  ConnectionLost,
  AnswerTooLarge,
  RedirectRefused,
  TransportFailed,
  // What the server answered.
  StatusNoFill,
  StatusServerError,
  StatusUnexpected,
  AnswerWithoutData,
  AnswerNotHTTP,
  KindMissing,
  KindUnknown,
  SizeMissing,
  HeaderNoFill,
  VideoAnswer,
  BodyNotText,
  MarkupNoFill,
  // Mediation: its instructions, one item of them, the ad that an adapter brought.
  InstructionsUnreadable,
  InstructionsEmpty,
  NobodyFilled,
  ItemNotInList,
  AdapterUnknown,
  ItemWithoutData,
  AdapterNeverAnswered,
  AdapterTakesNoController,
  AdapterWithoutView,
  AdapterOfOtherKind,
  AdapterFailed,
  AdapterShowedNothing,
  // There was no place for it.
  HostGone,
  ContainerGone,
  ContainerElsewhere,
  PresentationRefused,
  NothingReady,
  AdEmpty,
  PresentedAlready,
  WindowNotOnScreen,
  WindowBusy,
  // Its page.
  EngineUnavailable,
  PageFailed,
  PageUntrusted,
  PageProcessCrashed,
  PageProcessOutOfMemory,
  PageProcessEnded,
  PageProcessHung,
  PageGaveUp,
  PageNeverLoaded,
  PageLeft,
  PageTooHeavy,
  // Video ads.
  VideoWithoutAd,
  VideoDocumentFailed,
  VideoFileFailed,
  VideoOver,
  // It had its time, or its turn never came.
  Refreshed,
  RefreshWithoutAd,
  LoadedAnew,
  NeverShown,
  Removed,
  ClosedByPerson,
  ClosedByAdapter,
  ControllerGone,
  PlatformGone,
  // Of an error that somebody else made: its code is all there is.
  Unexplained,
};

struct VeltoAdEndReasonWords {
  VeltoAdEndReason reason;
  std::optional<int64_t>
      errorCode;              // of the error that goes with it (VeltoErrorCode); nothing: no error is given
  std::string_view name;      // "name-not-found": for logs, traces and metrics; stays as it is
  std::string_view sentence;  // what happened
  std::string_view advice;    // what to do about it
};

// All of them, in the order of the enumeration, each found by its number.
VELTO_EXPORT std::span<const VeltoAdEndReasonWords> veltoAdEndReasons();
VELTO_EXPORT const VeltoAdEndReasonWords& wordsOf(VeltoAdEndReason reason);

}  // namespace velto
