// Marks for a profiler, between the platform's output for developers (DeveloperOutput.h) and the module velto-profiler, which
// has Sysprof's capture library. Any thread.
#pragma once

#include <cstdint>

namespace velto::gtk {

// By this a process that Sysprof has started knows it.
inline constexpr char profilerVariable[] = "SYSPROF_CONTROL_FD";

inline constexpr char profilerModule[] = "profiler";
inline constexpr char profilerMarkName[] = "velto_profiler_mark";

// Nanoseconds of the monotonic clock. Both texts are copied; nothing happens while nobody records.
using ProfilerMarkFunction = void (*)(int64_t time, int64_t duration, const char* name, const char* text);

}  // namespace velto::gtk
