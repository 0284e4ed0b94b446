// Runs programs beside the test; looks into this one.
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "Folder.h"

namespace velto::test {

// A program and what it says on its standard output. Killed with its owner, unless it has ended before.
class Process {
 public:
  explicit Process(std::vector<std::string> words, bool withErrors = false) {
    std::vector<char*> argv;
    for (auto& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    id_ = fork();
    if (id_ == 0) {
      dup2(ends[1], STDOUT_FILENO);
      if (withErrors) dup2(ends[1], STDERR_FILENO);
      execvp(argv[0], argv.data());
      _exit(127);
    }
    close(ends[1]);
    output_ = fdopen(ends[0], "r");
  }
  ~Process() {
    signal(SIGKILL);
    exitCode();
    fclose(output_);
  }
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  void signal(int number) const {
    if (id_ > 0) kill(id_, number);
  }
  // The next line; nothing at the end, also for one that a kill cut off.
  std::optional<std::string> line() {
    std::string text;
    int c = 0;
    while ((c = fgetc(output_)) != EOF && c != '\n') text += static_cast<char>(c);
    return c == '\n' ? std::optional(text) : std::nullopt;
  }
  // Waits for its end; -1 when that was a signal.
  int exitCode() {
    int status = -1;
    if (id_ > 0) waitpid(id_, &status, 0);
    id_ = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

 private:
  pid_t id_ = 0;
  FILE* output_ = nullptr;
};

struct Outcome {
  int code = -1;
  std::string output;
};

// Runs a program to its end.
inline Outcome run(std::vector<std::string> words, bool withErrors = false) {
  Process process(std::move(words), withErrors);
  std::string output;
  while (const auto line = process.line()) output += *line + "\n";
  return {process.exitCode(), output};
}

// Whether this process has a library in its memory.
inline bool isMapped(const std::string& library) {
  return textOf("/proc/self/maps").find(library) != std::string::npos;
}

}  // namespace velto::test
