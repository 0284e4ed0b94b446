// Where modules are looked for.
#include "velto/gtk/Modules.h"

#include <dlfcn.h>
#include <stdlib.h>

#include <memory>

namespace velto::gtk {
namespace {

void addRunPath(void* handle, std::vector<std::filesystem::path>& folders) {
  Dl_serinfo size{};
  if (!handle) return;
  if (dlinfo(handle, RTLD_DI_SERINFOSIZE, &size) == 0) {
    const auto room = std::make_unique<char[]>(size.dls_size);
    auto* found = reinterpret_cast<Dl_serinfo*>(room.get());
    if (dlinfo(handle, RTLD_DI_SERINFOSIZE, found) == 0 && dlinfo(handle, RTLD_DI_SERINFO, found) == 0)
      for (unsigned i = 0; i < found->dls_cnt; ++i) folders.emplace_back(found->dls_serpath[i].dls_name);
  }
  dlclose(handle);
}

// Of the shared library that this is a part of, if it is, and of the program, as the loader tells it (dlinfo(3)).
std::vector<std::filesystem::path> runPath() {
  std::vector<std::filesystem::path> folders;
  Dl_info self{};
  if (dladdr(reinterpret_cast<const void*>(&modulePaths), &self) && self.dli_fname)
    addRunPath(dlopen(self.dli_fname, RTLD_LAZY | RTLD_NOLOAD), folders);
  addRunPath(dlopen(nullptr, RTLD_LAZY), folders);
  return folders;
}

}  // namespace

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

std::filesystem::path findModuleFile(const std::string& fileName) {
  auto paths = modulePaths(fileName);
  paths.pop_back();  // the name alone, for the loader
  for (const auto& folder : runPath()) paths.push_back(folder / fileName);
  std::error_code unknown;
  for (const auto& path : paths)
    if (std::filesystem::exists(path, unknown)) return std::filesystem::canonical(path, unknown);
  return {};
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
