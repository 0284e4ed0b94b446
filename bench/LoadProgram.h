// The frame of the two programs that show ads on a real display, with the library (Load.cpp) and without
// (bare/Load.cpp): the same window, the same order of steps, the same clocks, so that only the way an ad gets
// on the screen differs.
//
//   usage: <program> PORT CA_FILE KEY LOADS [PAUSE_AFTER...]
//
// For each load it prints {"load": 1, "ms": ..., "cpuMs": ...}: the time from asking for an ad until its page
// says velto://loadFinished, and the main thread's processor time in it; further the main loop's longest turn in it (turnMs)
// and since the window's first frame (turnToFirstMs), as processor time, how many frames an animation missed, the time
// until the server had answered (requestMs), and how long the machine's processors worked, for whomever (busyMs).
// After the loads named last it prints {"pause": n} and waits for a line of input, so that run.py can look at its memory.
//
// With VELTO_BENCH_AFTER in the environment the way to ads is opened before the window is shown, as an application does
// that starts, and the first load comes so many milliseconds after the window's first frame; else when all is at rest.
// With VELTO_BENCH_ANIMATED the application draws in each frame.
#pragma once

#include <gtk/gtk.h>

#include <functional>
#include <memory>
#include <string>

namespace velto::bench {

struct Server {
  std::string port;    // of the sandbox server, on 127.0.0.1
  std::string caFile;  // to trust
  std::string key;     // chooses the answer
};

class Loader {
 public:
  virtual ~Loader() = default;
  // Asks for the next ad, which replaces the one that is shown. Calls `loaded` once, from here or from the
  // main loop.
  virtual void load(std::function<void()> loaded) = 0;
  // Main-thread time of the last load that does not count: a bare program's wait for the server.
  virtual double uncountedMilliseconds() const { return 0; }
  // From asking for the last ad until the server had answered, if that is measured.
  virtual double requestMilliseconds() const { return 0; }
};

// Exit code: 0; 1 when a load failed or did not end; 2 for a wrong command line.
int runLoads(int count, char** words,
             const std::function<std::unique_ptr<Loader>(const Server&, GtkWindow*)>& make);

constexpr guint windowSettles = 300;  // milliseconds

// Says why and ends the process with 1: a benchmark of ads that do not load measures nothing.
[[noreturn]] void giveUp(const std::string& reason);

// Starts GTK, and returns the window of all these programs, which is not shown yet.
GtkWindow* makeWindow(const char* program);
// The same, once it is shown and has come to rest.
GtkWindow* startWithWindow(const char* program);
void runMainLoopFor(guint milliseconds);

}  // namespace velto::bench
