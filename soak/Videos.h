// Short video ads one after another, thousands of times, on the real player: what is held after each tenth, and at the end beside
// what was held once all was warm.
#pragma once

#include <string>

namespace velto::soak {

// Exit code 1 when an ad does not play, or something grows. `leaks`: on purpose, from outside the library.
int playVideos(const std::string& sandbox, int times, bool leaks);

}  // namespace velto::soak
