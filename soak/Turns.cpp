// Watching polls.
#include "Turns.h"

#include <fcntl.h>
#include <glib.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <stdexcept>

namespace velto::soak {
namespace {

double clockMilliseconds(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

}  // namespace

Turns* Turns::watched = nullptr;

Turns::Turns() : account_(open("/proc/thread-self/schedstat", O_RDONLY | O_CLOEXEC)) {
  if (account_ < 0) throw std::runtime_error("the kernel keeps no account of threads (schedstat)");
  watched = this;
  begin();
  g_main_context_set_poll_func(nullptr, poll);
}

Turns::~Turns() {
  g_main_context_set_poll_func(nullptr, g_poll);
  watched = nullptr;
  close(account_);
}

Turns::Times Turns::now() const {
  char text[96] = {};
  unsigned long long used = 0, inLine = 0;
  if (pread(account_, text, sizeof text - 1, 0) > 0) std::sscanf(text, "%llu %llu", &used, &inLine);
  return {clockMilliseconds(CLOCK_MONOTONIC), clockMilliseconds(CLOCK_THREAD_CPUTIME_ID),
          static_cast<double>(inLine) / 1e6};
}

void Turns::end() {
  const auto [wall, used, inLine] = now();
  const double turnUsed = used - began_.used;
  const double waited = wall - began_.wall - turnUsed - (inLine - began_.inLine);
  if (turnUsed > mostUsed_.used) mostUsed_ = {turnUsed, waited, step_};
  if (waited > longestWait_.waited) longestWait_ = {turnUsed, waited, step_};
}

gint Turns::poll(GPollFD* sources, guint count, gint timeout) {
  watched->end();
  const gint ready = g_poll(sources, count, timeout);
  watched->begin();
  return ready;
}

bool Turns::runUntil(const std::function<bool()>& condition, int milliseconds) {
  const auto look = [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; };
  const guint looks = g_timeout_add_full(G_PRIORITY_LOW, static_cast<guint>(std::clamp(milliseconds, 1, 20)),
                                         look, nullptr, nullptr);
  const double until = clockMilliseconds(CLOCK_MONOTONIC) + milliseconds;
  bool holds = false;
  while (!(holds = condition()) && clockMilliseconds(CLOCK_MONOTONIC) < until) {
    begin();
    g_main_context_iteration(nullptr, TRUE);
    end();
  }
  g_source_remove(looks);
  return holds;
}

void Turns::runFor(int milliseconds) {
  runUntil([] { return false; }, milliseconds);
}

void Turns::call(const std::string& step, const std::function<void()>& what) {
  step_ = step;
  begin();
  what();
  end();
}

}  // namespace velto::soak
