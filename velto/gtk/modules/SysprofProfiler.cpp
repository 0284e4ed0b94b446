// Sysprof's collector, which finds the recording by itself.
#include "velto/gtk/modules/Profiler.h"

#include <sysprof-capture.h>

extern "C" __attribute__((visibility("default"))) void velto_profiler_mark(int64_t time, int64_t duration,
                                                                           const char* name,
                                                                           const char* text) {
  sysprof_collector_mark(time, duration, "velto", name, text);
}
