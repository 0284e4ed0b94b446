// Runs a program to its end; looks into this one.
#pragma once

#include "velto/platform/foundation/GMemory.h"

#include <glib.h>
#include <sys/wait.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace velto::test {

struct Outcome {
  int code = -1;
  std::string output, errors;
};

inline Outcome run(std::vector<std::string> words) {
  std::vector<char*> argv;
  for (auto& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  char *output = nullptr, *errors = nullptr;
  int status = -1;
  g_spawn_sync(nullptr, argv.data(), nullptr, G_SPAWN_SEARCH_PATH, nullptr, nullptr, &output, &errors,
               &status, nullptr);
  const GText outputOwner(output), errorsOwner(errors);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output ? output : "", errors ? errors : ""};
}

// Whether this process has a library in its memory.
inline bool isMapped(const std::string& library) {
  std::ifstream maps("/proc/self/maps");
  return std::string(std::istreambuf_iterator<char>(maps), {}).find(library) != std::string::npos;
}

}  // namespace velto::test
