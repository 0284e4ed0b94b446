// One banner that is loaded anew as soon as it has loaded, thousands of times; and what the engine grows by when a bare
// program does the same with it.
#pragma once

#include <string>

namespace velto::soak {

enum class Leak { None, All };

// In this process, with the library or bare; prints what is held after the warm-up and at the end. Exit code.
int refresh(const std::string& sandbox, bool withLibrary, int times, Leak leak);
// Both, each in a process of its own, and the comparison. Exit code 1 when the library grows by more than the engine does.
int compareRefreshes(const std::string& program, const std::string& sandbox, int times, Leak leak);

}  // namespace velto::soak
