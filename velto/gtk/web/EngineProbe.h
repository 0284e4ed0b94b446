// Whether the web engine can start its processes on this machine. Where it cannot (no bubblewrap, a container without user
// namespaces) it ends the application, so no page is begun before it is known. Found out once for a process, when an ad
// has become probable, on a thread of its own, in some 6 ms, or half a one where an earlier run has found it out under the
// same circumstances (EngineMemory). Main thread.
#pragma once

#include "velto/platform/Handle.h"

#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velto::gtk {

class EngineProbe {
 public:
  using Look = std::function<std::optional<std::string>()>;  // what hinders it

  // Begins with the first call.
  static EngineProbe& shared();
  // Calls what starts a process of the engine. If the application is still there afterwards, later runs need not try.
  static void starting(const std::function<void()>& process);
  // Nobody waits longer than that for what is looked at on the thread; null: nothing is. Stays until the calls were made.
  EngineProbe(const Look& look, std::chrono::milliseconds patience);
  EngineProbe(const EngineProbe&) = delete;
  EngineProbe& operator=(const EngineProbe&) = delete;

  bool isOver() const;
  // What hinders the engine, in the words of the program that failed; nothing: it can start. Waits for the end, but not
  // for ever: what hangs here would hang the application. If it ends after all, it hinders no longer.
  std::optional<std::string> hindrance() const;
  // Calls in a turn of the main loop after the end, unless the handle goes before.
  Handle whenOver(std::function<void()> call);

 private:
  static int over(void* self) noexcept;

  const std::chrono::steady_clock::time_point patientUntil_;
  std::shared_future<std::optional<std::string>> answer_;
  std::vector<std::weak_ptr<std::function<void()>>> calls_;
};

// It is switched off, or the engine looks itself whether there can be one.
bool isEngineWithoutSandbox();

// What keeps a program from running to a good end, in its own words or the system's; nothing: it does.
std::optional<std::string> hindranceOf(const std::vector<std::string>& command);

}  // namespace velto::gtk
