// Reports installs and clicks to the tracking server. Main thread.
#pragma once

#include <optional>
#include <string>

namespace velto {

// Nothing is tracked yet: the operations are called where they will be needed and do nothing so far.
class VeltoTrackerManager {
 public:
  static void start() {}
  static void trackInstall() {}
  // A click counts only when all three identifiers are known.
  static void trackClickForBannerId(const std::optional<std::string>& /*bannerId*/,
                                    const std::optional<std::string>& /*publisherId*/,
                                    const std::optional<std::string>& /*ordId*/) {}
};

}  // namespace velto
