// The parent's side: signals waited for.
#include "common/Supervise.h"

#include <pthread.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <vector>

namespace velto::tools {
namespace {

constexpr char variable[] = "VELTO_SUPERVISED";
constexpr int notStarted = 127;

pthread_t waiting;  // the thread that supervises

// Libraries have threads of their own that block no signal: what one of these gets is handed on, else it would end the
// process before the tidying, or be lost.
void handOn(int signal) noexcept {
  const int kept = errno;
  pthread_kill(waiting, signal);
  errno = kept;
}

sigset_t endingSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&signals, signal);
  return signals;
}

void handOver(const sigset_t& signals) {
  waiting = pthread_self();
  struct sigaction handing = {};
  handing.sa_handler = handOn;
  handing.sa_flags = SA_RESTART;
  for (const int signal : {SIGCHLD, SIGINT, SIGTERM, SIGHUP})
    if (sigismember(&signals, signal)) sigaction(signal, &handing, nullptr);
}

std::vector<std::string> ownWords() {
  std::ifstream file("/proc/self/cmdline", std::ios::binary);
  const std::string text((std::istreambuf_iterator<char>(file)), {});
  std::vector<std::string> words;
  for (size_t at = 0; at < text.size(); at += words.back().size() + 1) words.emplace_back(text.c_str() + at);
  return words;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (auto& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

std::optional<std::string> handedDown() {
  const char* value = std::getenv(variable);
  if (!value) return std::nullopt;
  std::string handed = value;
  unsetenv(variable);
  return handed;
}

void holdEnds() {
  const auto ends = endingSignals();
  sigprocmask(SIG_BLOCK, &ends, nullptr);
  handOver(ends);
}

void endAsUsual() {
  const auto ends = endingSignals();
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, SIG_DFL);
  sigprocmask(SIG_UNBLOCK, &ends, nullptr);
}

void supervise(const std::string& handed, const std::function<void()>& tidy) {
  auto words = ownWords();
  std::vector<std::string> environment{std::string(variable) + "=" + handed};
  for (char** value = environ; *value; ++value) environment.emplace_back(*value);
  const auto argv = pointersTo(words), envp = pointersTo(environment);
  sigset_t awaited = endingSignals();
  sigaddset(&awaited, SIGCHLD);
  sigprocmask(SIG_BLOCK, &awaited, nullptr);
  handOver(awaited);
  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child < 0) {
    tidy();
    throw std::runtime_error("no process can be made");
  }
  if (child == 0) {
    // Libraries have threads of their own before main(), the web engine's allocator for one. A copy of this process would
    // have their locks as they happened to be and nobody to open them; a fresh start has neither.
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(1);  // it has ended meanwhile
    std::signal(SIGCHLD, SIG_DFL);
    sigprocmask(SIG_UNBLOCK, &awaited, nullptr);
    endAsUsual();
    execve("/proc/self/exe", argv.data(), envp.data());
    _exit(notStarted);
  }
  setpgid(child, child);  // whoever is first
  int signal = 0, status = 0;
  for (;;) {
    sigwait(&awaited, &signal);
    if (signal != SIGCHLD) {
      kill(-child, SIGKILL);
      waitpid(child, &status, 0);
      break;
    }
    if (waitpid(child, &status, WNOHANG) == child) {
      signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
      kill(-child, SIGKILL);
      break;
    }
  }
  tidy();
  if (!signal && WEXITSTATUS(status) == notStarted)
    throw std::runtime_error("the program cannot be started again");
  std::exit(signal ? 128 + signal : WEXITSTATUS(status));
}

}  // namespace velto::tools
