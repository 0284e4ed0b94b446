// Command URLs.
#include "velto/mraid/VeltoMRAIDAction.h"

#include "velto/platform/foundation/Description.h"

#include <string_view>

namespace velto {
namespace {

constexpr std::string_view neverRecognised = "setLocation";

// Codes count the names from 1, less the one that is never recognised.
uint64_t codeOf(std::string_view name) {
  uint64_t code = 0;
  for (const std::string_view known : VeltoMRAIDActionValue) {
    if (known == neverRecognised) continue;
    ++code;
    if (known == name) return code;
  }
  return VeltoMRAIDActionNone;
}

}  // namespace

std::optional<VeltoMRAIDAction> VeltoMRAIDAction::_init(const NSURL& url) {
  if (url.absoluteString().empty()) return std::nullopt;
  VeltoMRAIDAction action;
  if (const auto host = url.host()) action.actionValue_ = NSURL::unescaped(*host);
  if (const auto items = url.queryItems(); items && !items->empty()) action.args_ = items->front().value;
  if (action.actionValue_) action.actionType_ = codeOf(*action.actionValue_);
  return action;
}

std::string VeltoMRAIDAction::description() const {
  return Description("VeltoMRAIDAction", this).field("Action", actionValue_).field("Args", args_).text();
}

}  // namespace velto
