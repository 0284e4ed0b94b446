// Where modules are looked for.
#include "velto/gtk/Modules.h"

#include <dlfcn.h>
#include <glib.h>

#include <filesystem>
#include <vector>

namespace velto::gtk {
namespace {

using Folders = std::vector<std::filesystem::path>;

Folders moduleFolders() {
  if (const auto* chosen = g_getenv("VELTO_MODULES")) return {chosen};
  Folders folders;
  Dl_info self{};
  if (dladdr(reinterpret_cast<const void*>(&moduleFolders), &self) && self.dli_fname) {
    std::error_code error;
    const auto file = std::filesystem::canonical(self.dli_fname, error);
    if (!error) folders.push_back(file.parent_path() / "velto");
  }
  folders.emplace_back(VELTO_MODULES_INSTALLED);
  folders.emplace_back(VELTO_MODULES_BUILT);
  return folders;
}

}  // namespace

void* findModuleFunction(const char* module, const char* function, std::string* why) {
  std::string reason = "no folder has it";
  for (const auto& folder : moduleFolders()) {
    const auto file = folder / ("velto-" + std::string(module) + ".so");
    std::error_code error;
    if (!std::filesystem::exists(file, error)) continue;
    // Opened once more or not, it is the same; it is never closed, since threads of its libraries stay.
    auto* handle = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    auto* found = handle ? dlsym(handle, function) : nullptr;
    if (found) return found;
    const char* text = dlerror();
    reason = text ? text : "it has no " + std::string(function);
  }
  if (why) *why = "velto-" + std::string(module) + ": " + reason;
  return nullptr;
}

}  // namespace velto::gtk
