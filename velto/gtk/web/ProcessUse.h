// What a process of this machine has used, as the kernel tells, and a call when it has used more. Main thread.
#pragma once

#include "velto/platform/Handle.h"
#include "velto/platform/WebPageUse.h"

#include <sys/types.h>

#include <functional>

namespace velto::gtk {

// All but its number, what shares it, and the network. Nothing of one that has ended.
WebPageUse useOf(pid_t process);

// Calls back once, in a turn of its own, when it has used that much more processor time. The kernel counts that:
// until then nothing runs anywhere. Empty where the kernel cannot, or the process has ended.
Handle afterProcessorTime(pid_t process, double seconds, std::function<void()> then);

}  // namespace velto::gtk
