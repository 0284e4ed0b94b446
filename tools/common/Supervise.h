// A program whose traces go with it, however it ends: temporary folders, the programs that it started. It starts twice: first
// to make what needs tidying and to wait, then, as its own child, to work.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace velto::tools {

// In the child what supervise() was given, in the first process nothing. The environment that it comes by is cleared, so that
// programs started by the child are not mistaken for it; ask once.
std::optional<std::string> handedDown();

// From here on the signals that end this process wait for supervise(), so that none comes while something is made that it has
// to tidy. What is started before that needs endAsUsual() between fork and exec.
void holdEnds();
void endAsUsual();

// Starts this program once more with the same words and environment, and `handed`. Waits for the child's end, or for SIGINT,
// SIGTERM or SIGHUP, at which it kills the child. Then it ends what the child's process group still holds, does the tidying,
// and exits with the child's code, or with 128 and the number of the signal that ended it. Throws std::runtime_error when
// there can be no child, after the tidying.
[[noreturn]] void supervise(const std::string& handed, const std::function<void()>& tidy);

}  // namespace velto::tools
