// Circumstances, as one text.
#include "velto/gtk/web/EngineMemory.h"

#include "velto/gtk/store/Files.h"
#include "velto/platform/NSUserDefaults.h"
#include "velto/platform/Platform.h"

#include <sys/stat.h>

#include <filesystem>
#include <sstream>

namespace velto::gtk {
namespace {

constexpr char storeKey[] = "VeltoEngineStarted";

std::string numbersOf(const std::string& file) {
  struct stat facts {};
  if (stat(file.c_str(), &facts) != 0) return "none";
  std::ostringstream text;
  text << facts.st_dev << ':' << facts.st_ino << ':' << facts.st_size << ':' << facts.st_mode << ':'
       << facts.st_mtim.tv_sec << ':' << facts.st_mtim.tv_nsec;
  return text.str();
}

}  // namespace

EngineMemory::EngineMemory(const std::vector<std::string>& programs) {
  for (const char* file : {"/proc/sys/kernel/random/boot_id", "/proc/self/attr/current",
                           "/proc/sys/user/max_user_namespaces", "/proc/sys/kernel/unprivileged_userns_clone",
                           "/proc/sys/kernel/apparmor_restrict_unprivileged_userns"})
    circumstances_ += firstLine(file).value_or("-") + ' ';
  for (const char* line : {"Uid:", "CapEff:", "CapBnd:", "NoNewPrivs:", "Seccomp:", "Seccomp_filters:"})
    circumstances_ += lineAfter("/proc/self/status", line).value_or("-") + ' ';
  for (const char* space : {"user", "pid", "mnt"}) {
    std::error_code unknown;
    circumstances_ +=
        std::filesystem::read_symlink(std::string("/proc/self/ns/") + space, unknown).string() + ' ';
  }
  for (const auto& program : programs) circumstances_ += program + ' ' + numbersOf(program) + ' ';
}

std::optional<std::string> EngineMemory::kept() {
  const auto value = Platform::current().standardUserDefaults().objectForKey(storeKey);
  const auto* text = value ? std::get_if<std::string>(&*value) : nullptr;
  return text ? std::optional(*text) : std::nullopt;
}

void EngineMemory::forget() const {
  Platform::current().standardUserDefaults().removeObjectForKey(storeKey);
}

void EngineMemory::keep() const {
  Platform::current().standardUserDefaults().setObject(storeKey, circumstances_);
}

}  // namespace velto::gtk
