// Parts of this platform that few processes need and that bring many libraries along: they are shared objects
// of their own, opened on first use and kept open. Each exports one C function and knows nothing of the
// library but the header that it implements. Main thread.
//
// They lie in the folder named by VELTO_MODULES, if that is set, else beside the library or program that this
// is linked into (in "velto/"), else where they were installed or built.
#pragma once

#include <string>

namespace velto::gtk {

// The function, or null when the module cannot be opened; `why` (may be null) then says what was wrong.
void* findModuleFunction(const char* module, const char* function, std::string* why = nullptr);

template <class Function>
Function moduleFunction(const char* module, const char* function, std::string* why = nullptr) {
  return reinterpret_cast<Function>(findModuleFunction(module, function, why));
}

}  // namespace velto::gtk
