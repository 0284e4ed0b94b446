// One command of a page: an "mraid://" URL taken apart. Made
// for each command by the controller's dispatch; any thread.
#pragma once

#include "velto/mraid/VeltoMRAIDTables.h"
#include "velto/platform/foundation/NSURL.h"

#include <cstdint>
#include <optional>
#include <string>

namespace velto {

enum VeltoMRAIDActionType : uint64_t {
  VeltoMRAIDActionNone = 0,  // an unknown command, and "setLocation"
  VeltoMRAIDActionOpen = 1,
  VeltoMRAIDActionExpand = 2,
  VeltoMRAIDActionPlayVideo = 3,
  VeltoMRAIDActionResize = 4,
  VeltoMRAIDActionStorePicture = 5,
  VeltoMRAIDActionCreateCalendarEvent = 6,
  VeltoMRAIDActionSetOrientationProperties = 7,
  VeltoMRAIDActionSetExpandProperties = 8,
  VeltoMRAIDActionSetResizeProperties = 9,
  VeltoMRAIDActionSetCurrentAppOrientation = 10,
  VeltoMRAIDActionClose = 11,
  VeltoMRAIDActionUnload = 12,
  VeltoMRAIDActionLog = 13,  // known, and not acted on
};

class VeltoMRAIDAction {
 public:
  // The host is the name; the value of the first query item, whatever
  // its name, is the argument. Nothing for a URL without text.
  static std::optional<VeltoMRAIDAction> actionFrom(const NSURL& url) { return _init(url); }
  static std::optional<VeltoMRAIDAction> _init(const NSURL& url);

  uint64_t actionType() const { return actionType_; }
  const std::optional<std::string>& args() const { return args_; }
  const std::optional<std::string>& actionValue() const { return actionValue_; }
  std::string description() const;

 private:
  uint64_t actionType_ = VeltoMRAIDActionNone;
  std::optional<std::string> args_;
  std::optional<std::string> actionValue_;
};

}  // namespace velto
