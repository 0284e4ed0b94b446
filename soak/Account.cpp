// Reading /proc, folders and the bus.
#include "Account.h"

#include <gio/gio.h>
#include <malloc.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>

namespace velto::soak {
namespace {

namespace fs = std::filesystem;

int64_t entriesOf(const fs::path& folder) {
  std::error_code error;
  int64_t found = 0;
  for (auto at = fs::directory_iterator(folder, error); !error && at != fs::directory_iterator();
       at.increment(error))
    ++found;
  return found;
}

// Files come and go meanwhile.
int64_t filesBelow(const fs::path& folder, int64_t* bytes = nullptr) {
  std::error_code error;
  int64_t found = 0;
  fs::recursive_directory_iterator at(folder, fs::directory_options::skip_permission_denied, error);
  for (; !error && at != fs::recursive_directory_iterator(); at.increment(error)) {
    std::error_code gone;
    if (at->is_directory(gone)) continue;
    ++found;
    const auto size = bytes && at->is_regular_file(gone) ? at->file_size(gone) : 0;
    if (bytes && !gone) *bytes += static_cast<int64_t>(size);
  }
  return found;
}

// What the engine's sandboxes leave in the folder for sockets, and all else.
void countFiles(Held& held) {
  held.files = entriesOf("/dev/shm");
  for (const char* variable : {"TMPDIR", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"})
    if (const char* folder = std::getenv(variable)) held.files += filesBelow(folder);
  if (const char* folder = std::getenv("XDG_RUNTIME_DIR"))
    for (const char* name : {".flatpak", "webkitgtk"}) held.sandboxes += filesBelow(fs::path(folder) / name);
  held.files -= held.sandboxes;
}

int64_t ownMemory() {
  std::ifstream file("/proc/self/smaps_rollup");
  int64_t sum = 0;
  for (std::string line; std::getline(file, line);)
    if (line.starts_with("Private_Dirty:") || line.starts_with("Swap:"))
      sum += std::atoll(line.c_str() + line.find(':') + 1);
  return sum;
}

int64_t busNames() {
  GDBusConnection* bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
  if (!bus) return 0;
  constexpr int longest = 5000;  // milliseconds
  GVariant* answer = g_dbus_connection_call_sync(
      bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "ListNames", nullptr,
      G_VARIANT_TYPE("(as)"), G_DBUS_CALL_FLAGS_NONE, longest, nullptr, nullptr);
  g_object_unref(bus);
  if (!answer) return 0;
  GVariant* names = g_variant_get_child_value(answer, 0);
  const auto found = static_cast<int64_t>(g_variant_n_children(names));
  g_variant_unref(names);
  g_variant_unref(answer);
  return found;
}

}  // namespace

std::vector<Process> descendants() {
  struct Entry {
    pid_t parent = 0;
    std::string name;
  };
  std::map<pid_t, Entry> all;
  for (const auto& folder : fs::directory_iterator("/proc")) {
    std::ifstream file(folder.path() / "stat");
    std::string text;
    if (!std::getline(file, text)) continue;
    const auto open = text.find('('), close = text.rfind(')');
    if (open == std::string::npos || close == std::string::npos || close + 4 > text.size()) continue;
    all[std::atoi(text.c_str())] = {std::atoi(text.c_str() + close + 4),
                                    text.substr(open + 1, close - open - 1)};
  }
  std::vector<Process> ours;
  for (const auto& [id, entry] : all) {
    pid_t ancestor = entry.parent;
    while (ancestor != getpid() && all.contains(ancestor)) ancestor = all[ancestor].parent;
    if (ancestor == getpid()) ours.push_back({id, entry.name});
  }
  return ours;
}

bool hasThread(pid_t process, const std::string& name) {
  std::error_code error;
  fs::directory_iterator at("/proc/" + std::to_string(process) + "/task", error);
  for (; !error && at != fs::directory_iterator(); at.increment(error)) {
    std::ifstream file(at->path() / "comm");
    std::string found;
    if (std::getline(file, found) && found == name) return true;
  }
  return false;
}

Held heldNow(const std::string& folder) {
  malloc_trim(0);
  const auto heap = mallinfo2();
  Held held;
  held.heap = static_cast<int64_t>((heap.uordblks + heap.hblkhd) >> 10);
  held.own = ownMemory();
  held.descriptors = entriesOf("/proc/self/fd");
  held.threads = entriesOf("/proc/self/task");
  for (const auto& process : descendants())
    ++(process.name == "bwrap" || process.name == "xdg-dbus-proxy" ? held.proxies : held.processes);
  countFiles(held);
  filesBelow(folder, &held.kept);
  held.kept >>= 10;
  held.names = busNames();
  return held;
}

std::vector<std::string> compare(const Held& before, const Held& after, const std::vector<Row>& rows) {
  std::vector<std::string> over;
  std::printf("%-30s %10s %10s %10s %10s\n", "what is held", "before", "after", "growth", "limit");
  for (const auto& [name, member, limit] : rows) {
    const int64_t growth = after.*member - before.*member;
    std::printf("%-30s %10lld %10lld %+10lld %10lld%s\n", name, static_cast<long long>(before.*member),
                static_cast<long long>(after.*member), static_cast<long long>(growth),
                static_cast<long long>(limit), growth > limit ? "  OVER" : "");
    if (growth > limit) over.emplace_back(name);
  }
  return over;
}

}  // namespace velto::soak
