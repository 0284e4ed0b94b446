// The frame of the two programs that show interstitials on a real display, with the library
// (Interstitial.cpp) and without (bare/Interstitial.cpp).
//
//   usage: <program> PORT CA_FILE KEY ROUNDS
//
// Each round loads an ad, lets it wait, shows it and closes it, and prints
//   {"round": 1, "readyMs": ..., "pageMs": ..., "shownMs": ...}
// the times from asking for the ad until it can be shown; from asking for it to be shown until its page is
// loaded in the window; and, from the same moment, until the program says that it is shown, less what
// a show takes by design.
#pragma once

#include "LoadProgram.h"

namespace velto::bench {

// Each step calls `done` once, from here or from the main loop.
class Interstitial {
 public:
  virtual ~Interstitial() = default;
  virtual void load(std::function<void()> done) = 0;
  virtual void show(std::function<void()> done) = 0;
  virtual void close(std::function<void()> done) = 0;
  virtual double uncountedOfShow() const { return 0; }  // milliseconds
};

// Exit codes as of runLoads().
int runInterstitials(int count, char** words,
                     const std::function<std::unique_ptr<Interstitial>(const Server&, GtkWindow*)>& make);

}  // namespace velto::bench
