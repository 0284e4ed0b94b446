// Making errors and naming their codes.
#include "velto/core/VeltoErrorAd.h"

#include "velto/core/VeltoConstants.h"

#include <array>

namespace velto {

VeltoErrorAd VeltoErrorAd::veltoErrorAdWithCode(int64_t code, std::optional<NSError> error) {
  VeltoErrorAd made;
  made.domain = constVeltoBundleIdentifier;
  made.code = code;
  made.errorCode = code;
  made.error = std::move(error);
  made.localizedDescription = made.descriptionError().value_or("");
  return made;
}

VeltoErrorAd VeltoErrorAd::because(VeltoAdEndReason reason, std::optional<NSError> error) {
  auto made = veltoErrorAdWithCode(wordsOf(reason).errorCode.value_or(VeltoErrorServer), std::move(error));
  made.reason = reason;
  return made;
}

std::string VeltoErrorAd::explanation() const {
  const auto& words = wordsOf(reason);
  return std::string(words.sentence).append(" ").append(words.advice);
}

std::optional<std::string> VeltoErrorAd::descriptionError() const {
  static constexpr std::array words{"NO_FILL", "SERVER_ERROR", "DEVELOPER_ERROR", "CANCELLED",
                                    "NO_CONNECTION"};
  if (errorCode < 0 || errorCode >= static_cast<int64_t>(words.size())) return std::nullopt;
  return std::string("VeltoError: ") + words[static_cast<size_t>(errorCode)];
}

}  // namespace velto
