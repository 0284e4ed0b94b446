// Where developers read: GLib's log of the domain "Velto", which shows what G_MESSAGES_DEBUG names, and the file that
// VELTO_TRACE names; Sysprof, when it has started this process. Any thread.
#pragma once

#include "velto/platform/Diagnostics.h"

namespace velto::gtk {

class DeveloperOutput : public Diagnostics {
 public:
  bool wants(LogLevel level) const override;
  void log(const LogLine& line) override;
  std::function<void(std::string_view)> traceOutput() override;
  std::function<void(const ProfilerMark&)> markOutput() override;
};

}  // namespace velto::gtk
