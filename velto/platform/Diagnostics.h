// Supplied by a platform that has a place for what developers read: its log, and a file for a trace. Any thread.
#pragma once

#include "velto/Export.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velto {

enum class LogLevel : uint8_t {
  Info,   // how a load ended
  Debug,  // each step of it
};

// Holds nothing that is to stay between the library and the ad server: no key, no identifier, no location.
struct LogLine {
  LogLevel level = LogLevel::Debug;
  std::string text;
  std::vector<std::pair<std::string, std::string>>
      fields;  // "placement", "load", and the particulars of a step
};

class VELTO_EXPORT Diagnostics {
 public:
  virtual ~Diagnostics() = default;

  // Whether anybody reads lines of that level; asked before each.
  virtual bool wants(LogLevel level) const = 0;
  virtual void log(const LogLine& line) = 0;

  // Takes the pieces of a trace in the Trace Event Format, one after the other, each to be kept before it returns: what was
  // written is readable whenever the process ends. Empty where nobody wants a trace. Asked once, by the first load.
  virtual std::function<void(std::string_view piece)> traceOutput() = 0;
};

}  // namespace velto
