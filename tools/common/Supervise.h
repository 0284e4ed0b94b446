// A program whose traces go with it, however it ends: temporary folders, the programs that it started.
#pragma once

#include <functional>

namespace velto::tools {

// Before any thread starts. What follows the call runs in a child; the process that was called waits for the child's end, or
// for SIGINT, SIGTERM or SIGHUP, at which it kills the child. Then it ends what the child's process group still holds, does
// the tidying, and exits with the child's code, or with 128 and the number of the signal that ended it.
void supervise(const std::function<void()>& tidy);

}  // namespace velto::tools
