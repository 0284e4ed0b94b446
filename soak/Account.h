// What this process holds, and has others hold for it. Everything is asked of the kernel, the C library and the session
// bus. Main thread; takes some milliseconds.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

namespace velto::soak {

struct Process {
  pid_t id;
  std::string name;  // its first fifteen letters
};
// All that descend from this one.
std::vector<Process> descendants();
// Whether one of its threads has that name.
bool hasThread(pid_t process, const std::string& name);

struct Held {
  int64_t heap = 0;  // KiB in use, of the C library's
  int64_t own = 0;   // KiB of memory that no other process shares
  int64_t descriptors = 0, threads = 0, processes = 0;
  int64_t files = 0;      // in the folders for temporary files, caches and sockets, and in shared memory
  int64_t proxies = 0;    // processes of the engine's sandboxes; all others are above
  int64_t sandboxes = 0;  // files that the engine leaves of each process that was
  int64_t kept = 0;       // KiB of the files in the library's folder
  int64_t names = 0;      // on the session bus, of anybody
  bool operator==(const Held&) const = default;
};
// `folder` is the library's. What the C library has free goes back to the system first.
Held heldNow(const std::string& folder);

// A line of the comparison.
struct Row {
  const char* name;
  int64_t Held::*member;
  int64_t limit;  // of the growth
};
// Prints it, and returns the names of those that are over.
std::vector<std::string> compare(const Held& before, const Held& after, const std::vector<Row>& rows);

}  // namespace velto::soak
