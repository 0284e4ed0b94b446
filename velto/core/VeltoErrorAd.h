// The one error that every failure callback gives. A plain value.
#pragma once

#include "velto/Export.h"
#include "velto/platform/NSError.h"
#include "velto/timeline/VeltoAdEndReason.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace velto {

enum VeltoErrorCode : int64_t {
  VeltoErrorNoFill = 0,        // the server had no ad
  VeltoErrorServer = 1,        // the server or the page failed
  VeltoErrorDeveloper = 2,     // the request could not be built, or the ad not be used where it was asked for
  VeltoErrorCancelled = 3,     // for host applications; the library never gives it
  VeltoErrorNoConnection = 4,  // the transport failed; `error` says how
};

class VELTO_EXPORT VeltoErrorAd : public NSError {
 public:
  // Of an adapter or application, that gives no reason.
  static VeltoErrorAd veltoErrorAdWithCode(int64_t code, std::optional<NSError> error = std::nullopt);
  // With the code of that reason, which has one.
  static VeltoErrorAd because(VeltoAdEndReason reason, std::optional<NSError> error = std::nullopt);

  int64_t errorCode = 0;
  std::optional<NSError> error;                             // the system error underneath
  VeltoAdEndReason reason = VeltoAdEndReason::Unexplained;  // finer than the code

  // "VeltoError: NO_FILL" and so on; nothing for a code outside the list above.
  std::optional<std::string> descriptionError() const;
  // What happened, and what to do about it: for developers.
  std::string explanation() const;
};

}  // namespace velto
