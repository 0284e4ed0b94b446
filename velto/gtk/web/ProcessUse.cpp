// The kernel's files, and its timers.
#include "velto/gtk/web/ProcessUse.h"

#include "velto/platform/foundation/GMemory.h"

#include <glib.h>
#include <unistd.h>

#include <cmath>
#include <csignal>
#include <ctime>
#include <fstream>
#include <map>
#include <string>

namespace velto::gtk {
namespace {

std::string folderOf(pid_t process) {
  return "/proc/" + std::to_string(process);
}

// "Name:   12 kB" of a file of such lines.
std::map<std::string, uint64_t> numbersIn(const std::string& path,
                                          std::initializer_list<std::string_view> names) {
  std::map<std::string, uint64_t> found;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    const auto colon = line.find(':');
    if (colon == std::string::npos) continue;
    for (const auto& name : names)
      if (std::string_view(line).substr(0, colon) == name)
        found[line.substr(0, colon)] = g_ascii_strtoull(line.c_str() + colon + 1, nullptr, 10);
  }
  return found;
}

constexpr char waited[] = "voluntary_ctxt_switches";

std::optional<uint64_t> wakeUpsOf(pid_t process) {
  const std::string tasks = folderOf(process) + "/task/";
  const GOwned<GDir, g_dir_close> folder(g_dir_open(tasks.c_str(), 0, nullptr));
  std::optional<uint64_t> sum;
  while (const char* task = folder ? g_dir_read_name(folder.get()) : nullptr)
    for (const auto& [name, count] : numbersIn(tasks + task + "/status", {waited}))
      sum = sum.value_or(0) + count;
  return sum;
}

// Its name, in brackets, may hold anything.
std::optional<double> mainThreadSecondsOf(pid_t process) {
  std::ifstream file(folderOf(process) + "/task/" + std::to_string(process) + "/stat");
  std::string line;
  std::getline(file, line);
  const auto name = line.rfind(')');
  if (name == std::string::npos) return std::nullopt;
  constexpr int between =
      11;  // fields from the name to the time in user mode, behind which that in the kernel is
  gchar* next = line.data() + name + 4;  // and the state, which is a letter
  for (int i = 1; i < between; ++i) g_ascii_strtoll(next, &next, 10);
  const auto user = g_ascii_strtoull(next, &next, 10);
  const auto system = g_ascii_strtoull(next, &next, 10);
  return static_cast<double>(user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
}

std::optional<double> processorSecondsOf(pid_t process) {
  clockid_t clock = 0;
  timespec used{};
  if (clock_getcpuclockid(process, &clock) != 0 || clock_gettime(clock, &used) != 0) return std::nullopt;
  return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) / 1e9;
}

// --- timers. They ring on a thread of the C library's, which only passes on which one it was: by the time that the main
// thread hears of it, it may be gone.

struct Alarm {
  timer_t timer;
  std::function<void()> then;
};

// Never destroyed: ads of a program that just ends may go after it would be.
std::map<int, Alarm>& alarms() {
  static auto& all = *new std::map<int, Alarm>;
  return all;
}

std::function<void()> endAlarm(int number) {
  auto found = alarms().extract(number);
  if (!found) return {};
  timer_delete(found.mapped().timer);
  return std::move(found.mapped().then);
}

gboolean ring(gpointer number) noexcept {
  if (const auto then = endAlarm(GPOINTER_TO_INT(number))) then();
  return G_SOURCE_REMOVE;
}

void rang(sigval number) noexcept {
  g_idle_add_full(G_PRIORITY_DEFAULT, ring, GINT_TO_POINTER(number.sival_int), nullptr);
}

}  // namespace

WebPageUse useOf(pid_t process) {
  WebPageUse use;
  constexpr auto anonymous = "RssAnon", shared = "RssShmem", swapped = "VmSwap";
  auto memory = numbersIn(folderOf(process) + "/status", {anonymous, shared, swapped});
  if (memory.count(anonymous) == 0) return use;  // its end leaves a name behind for a while
  use.memoryBytes = (memory[anonymous] + memory[shared] + memory[swapped]) * 1024;
  use.processorSeconds = processorSecondsOf(process);
  use.mainThreadSeconds = mainThreadSecondsOf(process);
  use.wakeUps = wakeUpsOf(process);
  return use;
}

Handle afterProcessorTime(pid_t process, double seconds, std::function<void()> then) {
  static int numbers = 0;
  const int number = ++numbers;
  clockid_t clock = 0;
  if (clock_getcpuclockid(process, &clock) != 0) return {};
  sigevent event{};
  event.sigev_notify = SIGEV_THREAD;
  event.sigev_notify_function = rang;
  event.sigev_value.sival_int = number;
  timer_t timer{};
  if (timer_create(clock, &event, &timer) != 0) return {};
  double whole = 0;
  const double part = std::modf(seconds, &whole);
  itimerspec due{};
  due.it_value = {static_cast<time_t>(whole), static_cast<long>(part * 1e9)};
  if (timer_settime(timer, 0, &due, nullptr) != 0) {
    timer_delete(timer);
    return {};
  }
  alarms().emplace(number, Alarm{timer, std::move(then)});
  return Handle([number] { endAlarm(number); });
}

}  // namespace velto::gtk
