// The processes that run this one's pages, and the one that asks the network for them.
#pragma once

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

namespace velto::test {

// Engines may put processes of a sandbox between this one and theirs, so all descendants count.
inline std::vector<pid_t> engineProcesses(const std::string& prefix) {
  const auto own = std::to_string(getpid());
  std::map<std::string, std::string> parents;
  std::vector<std::string> found;
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    std::ifstream stat(entry.path() / "stat");
    std::string pid, name, state, parent;
    if (!(stat >> pid >> name >> state >> parent)) continue;
    parents[pid] = parent;
    if (name.starts_with("(" + prefix)) found.push_back(pid);
  }
  std::vector<pid_t> ours;
  for (const auto& pid : found) {
    auto ancestor = pid;
    while (parents.contains(ancestor) && ancestor != own) ancestor = parents[ancestor];
    if (ancestor == own) ours.push_back(std::stoi(pid));
  }
  return ours;
}
// Names are cut off by the system.
inline std::vector<pid_t> webProcesses() {
  return engineProcesses("WebKitWebProces");
}
inline std::vector<pid_t> networkProcesses() {
  return engineProcesses("WebKitNetworkPr");
}

}  // namespace velto::test
