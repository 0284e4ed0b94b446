// Processes, and shrinking.
#include "Walk.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <iostream>

namespace velto::chaos {
namespace {

constexpr unsigned longestScript = 120;  // seconds of real time: beyond it a script never ends
constexpr size_t heapSlack = 512 << 10;  // bytes that caches may grow by after the first script
constexpr size_t mostTrials = 3000;      // of shrinking

// What a process tells of its scripts: where it is, and at last what came of them.
struct Report {
  uint64_t script = 0;
  size_t step = 0;
  Figures figures;
  bool done = false;
  char broken[160] = {};
};

// Plays scripts one after the other, and tells of each step before it is done.
class Player {
 public:
  Player(int pipe, Fault fault) : pipe_(pipe), fault_(fault) {}

  bool play(uint64_t number, const Script& script) {
    report_.script = number;
    alarm(longestScript);
    std::optional<std::string> broken;
    {
      World world(fault_);
      for (report_.step = 1; report_.step <= script.size() && !world.broken(); ++report_.step) {
        tell();
        world.run(script[report_.step - 1]);
        if (world.broken()) break;
      }
      if (!world.broken()) tell();
      world.finish();
      broken = world.broken();
      report_.figures.add(world.figures);
    }
    if (!broken) broken = heapGrown();
    if (broken) std::strncpy(report_.broken, broken->c_str(), sizeof report_.broken - 1);
    return !broken;
  }
  void end() {
    report_.done = true;
    tell();
  }

 private:
  void tell() const {
    if (::write(pipe_, &report_, sizeof report_) != sizeof report_) _exit(2);
  }
  std::optional<std::string> heapGrown() {
    const size_t now = bytesInUse();
    if (++played_ <= 2) first_ = now;
    return now > first_ + heapSlack
               ? std::optional<std::string>("the heap is as it was when all was let go of")
               : std::nullopt;
  }

  const int pipe_;
  const Fault fault_;
  Report report_;
  size_t played_ = 0, first_ = 0;
};

// Runs the work in a child, and hears its reports to the end. What the process died of, if it did.
template <class Work>
std::pair<Report, std::optional<std::string>> inChild(const Work& work) {
  int ends[2];
  if (pipe(ends) != 0) throw std::runtime_error("no pipe");
  std::cout.flush();
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("no process");
  if (child == 0) {
    close(ends[0]);
    work(ends[1]);
    std::exit(0);  // with what sanitizers look at then
  }
  close(ends[1]);
  Report last, read;
  while (::read(ends[0], &read, sizeof read) == sizeof read) last = read;
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  if (WIFSIGNALED(status))
    return {last, WTERMSIG(status) == SIGALRM
                      ? "a script comes to an end"
                      : "the process lives (signal " + std::to_string(WTERMSIG(status)) + ")"};
  if (WEXITSTATUS(status) != 0)
    return {last, "the process lives (exit code " + std::to_string(WEXITSTATUS(status)) + ")"};
  return {last, std::nullopt};
}

std::optional<Failure> failureOf(const Report& report, const std::optional<std::string>& death) {
  if (death) return Failure{*death, report.step};
  if (report.broken[0] != 0) return Failure{report.broken, report.step};
  return std::nullopt;
}

}  // namespace

std::optional<Failure> play(const Script& script, Fault fault) {
  const auto [report, death] = inChild([&](int pipe) {
    Player player(pipe, fault);
    player.play(0, script);
    player.end();
  });
  return failureOf(report, death);
}

Script shrunk(Script script, const Failure& failure, Fault fault) {
  script.resize(std::min(script.size(), failure.step));
  size_t trials = 0;
  const auto failsToo = [&](const Script& tried) {
    if (++trials > mostTrials) return false;
    const auto other = play(tried, fault);
    return other && other->what == failure.what;
  };
  // Pieces go, halves first, until no single step can.
  for (size_t piece = std::max<size_t>(1, script.size() / 2);; piece = std::max<size_t>(1, piece / 2)) {
    bool went = false;
    for (size_t at = 0; at < script.size();) {
      Script tried = script;
      tried.erase(tried.begin() + static_cast<std::ptrdiff_t>(at),
                  tried.begin() + static_cast<std::ptrdiff_t>(std::min(script.size(), at + piece)));
      if (failsToo(tried)) {
        script = std::move(tried);
        went = true;
      } else {
        at += piece;
      }
    }
    if (piece == 1 && !went) break;
  }
  // Numbers that do not matter become 0.
  for (size_t at = 0; at < script.size(); ++at)
    for (size_t number = 0; number < script[at].numbers.size(); ++number) {
      Script tried = script;
      if (std::exchange(tried[at].numbers[number], 0) != 0 && failsToo(tried)) script = std::move(tried);
    }
  return script;
}

Walked walk(uint64_t seed, size_t steps, size_t length, Fault fault) {
  const auto script = [&](uint64_t number) {
    return drawn(seed * 1'000'003 + number, std::min(length, steps - number * length));
  };
  const uint64_t scripts = (steps + length - 1) / length;
  const auto [report, death] = inChild([&](int pipe) {
    Player player(pipe, fault);
    for (uint64_t number = 0; number < scripts; ++number)
      if (!player.play(number, script(number))) break;
    player.end();
  });
  Walked walked{report.figures.steps, report.figures, failureOf(report, death), {}};
  if (walked.failure) walked.script = script(report.script);
  return walked;
}

}  // namespace velto::chaos
