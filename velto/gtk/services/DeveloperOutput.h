// Where developers read: GLib's log of the domain "Velto", which shows what G_MESSAGES_DEBUG names, and the file that
// VELTO_TRACE names. Any thread.
#pragma once

#include "velto/platform/Diagnostics.h"

namespace velto::gtk {

class DeveloperOutput : public Diagnostics {
 public:
  bool wants(LogLevel level) const override;
  void log(const LogLine& line) override;
  std::function<void(std::string_view)> traceOutput() override;
};

}  // namespace velto::gtk
