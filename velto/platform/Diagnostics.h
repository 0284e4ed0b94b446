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

// A span of time, or with no length a moment.
struct ProfilerMark {
  double from = 0, seconds = 0;  // of the platform's monotonic clock
  std::string name, text;
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

  // Puts marks into what a profiler records of this process. Empty where none does. Asked once, like the other.
  virtual std::function<void(const ProfilerMark& mark)> markOutput() { return nullptr; }
};

}  // namespace velto
