// The parent's side: signals waited for.
#include "common/Supervise.h"

#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

namespace velto::tools {

void supervise(const std::function<void()>& tidy) {
  sigset_t awaited, before;
  sigemptyset(&awaited);
  for (const int signal : {SIGCHLD, SIGINT, SIGTERM, SIGHUP}) sigaddset(&awaited, signal);
  sigprocmask(SIG_BLOCK, &awaited, &before);
  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("no process can be made");
  if (child == 0) {
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(1);  // it has ended meanwhile
    sigprocmask(SIG_SETMASK, &before, nullptr);
    return;
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
  std::exit(signal ? 128 + signal : WEXITSTATUS(status));
}

}  // namespace velto::tools
