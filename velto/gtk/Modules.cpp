// Where modules are looked for.
#include "velto/gtk/Modules.h"

#include <dlfcn.h>
#include <stdlib.h>

namespace velto::gtk {

std::vector<std::filesystem::path> modulePaths(const std::string& fileName) {
  std::vector<std::filesystem::path> paths;
  if (const char* folder = secure_getenv("VELTO_MODULE_PATH"); folder && *folder)
    paths.push_back(std::filesystem::path(folder) / fileName);
  Dl_info self{};
  if (dladdr(reinterpret_cast<const void*>(&modulePaths), &self) && self.dli_fname) {
    std::error_code unknown;
    const auto folder = std::filesystem::absolute(self.dli_fname, unknown).parent_path();
    paths.push_back(folder / "velto" / fileName);
    paths.push_back(folder / ".." / VELTO_LIBRARY_FOLDER / "velto" / fileName);
  }
  paths.push_back(std::filesystem::path(VELTO_MODULE_FOLDER) / fileName);
  paths.emplace_back(fileName);
  return paths;
}

void* findModuleFunction(const char* module, const char* function, std::string* why) {
  for (const auto& file : modulePaths("velto-" + std::string(module) + ".so")) {
    std::error_code unknown;
    if (file.has_parent_path() && !std::filesystem::exists(file, unknown)) continue;
    // Opened once more or not, it is the same; it is never closed, since threads of its libraries stay.
    auto* handle = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (auto* found = handle ? dlsym(handle, function) : nullptr) return found;
    const char* text = dlerror();
    if (why) *why = text ? text : file.string() + " is no module of this library";
    return nullptr;
  }
  return nullptr;
}

}  // namespace velto::gtk
