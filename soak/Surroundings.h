// What is around an application and changes under it: the engine's processes, the desktop's settings, a person's hand.
// Main thread.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <random>
#include <vector>

#include "Sandbox.h"

namespace velto::soak {

using Dice = std::mt19937_64;
inline int drawn(Dice& dice, int below) {
  return static_cast<int>(dice() % static_cast<uint64_t>(below));
}

struct Deaths {
  uint64_t pages = 0, hangs = 0, networks = 0, outages = 0;
};

class Surroundings {
 public:
  Surroundings(Dice& dice, const Sandbox& sandbox) : dice_(dice), sandbox_(sandbox) {}
  ~Surroundings() { settle(); }
  Surroundings(const Surroundings&) = delete;
  Surroundings& operator=(const Surroundings&) = delete;

  void killPage();
  void hangPage();  // for some steps
  void killNetwork();
  void stopServer();
  void changeLook();
  void click();
  // After each step: what was stopped goes on in time.
  void step();
  // All goes on, and the desktop looks as at the start.
  void settle();

  const Deaths& deaths() const { return deaths_; }

 private:
  struct Stopped {
    pid_t process;  // 0: the server
    int steps;
  };
  void goOn(const Stopped& stopped) const;

  Dice& dice_;
  const Sandbox& sandbox_;
  Deaths deaths_;
  std::vector<Stopped> stopped_;
};

}  // namespace velto::soak
