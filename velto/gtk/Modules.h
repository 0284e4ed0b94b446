// Parts of this platform that few processes need and that bring many libraries along: they are shared objects
// of their own, opened on first use and kept open. Each exports one C function and knows nothing of the
// library but the header that it implements. Any thread.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace velto::gtk {

// Where a module's file may be; the first that is there counts. In the folder that VELTO_MODULE_PATH names,
// beside the library or program that this is linked into, where it was to be installed, and (a name without a
// folder) wherever the program's own run path leads, into which the package files put the folder of an
// installed copy: that may have been moved.
std::vector<std::filesystem::path> modulePaths(const std::string& fileName);

// The first of them that is there, also along the run path; empty: none is.
std::filesystem::path findModuleFile(const std::string& fileName);

// The function, or null when the module cannot be opened; `why` (may be null) then says what was wrong.
void* findModuleFunction(const char* module, const char* function, std::string* why = nullptr);

template <class Function>
Function moduleFunction(const char* module, const char* function, std::string* why = nullptr) {
  return reinterpret_cast<Function>(findModuleFunction(module, function, why));
}

}  // namespace velto::gtk
