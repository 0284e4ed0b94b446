// The first registration on an installation, in a fresh process over a fresh folder: the store's file is made
// and the key, the defaults and the install are written. Compared with bare/Registration.cpp, which makes the
// same promise about its writes (none that returned is lost when the process is killed) with nothing but
// SQLite. Also prints what installing the platform costs.
//
//   usage: velto-bench-registration FOLDER
#include "velto/gtk/VeltoGtk.h"
#include "velto/velto.h"

#include <cstdio>

#include "Measure.h"

int main(int count, char** words) {
  using namespace velto;
  if (count != 2) {
    std::fprintf(stderr, "usage: %s FOLDER\n", words[0]);
    return 2;
  }
  if (!gtk_init_check()) {
    std::fprintf(stderr, "%s: no display\n", words[0]);
    return 1;
  }
  const double start = bench::wallMilliseconds();
  gtk::install({.applicationIdentifier = "org.example.bench", .dataFolder = words[1]});
  const double installed = bench::wallMilliseconds();
  const double cpuBefore = bench::threadMilliseconds();
  VeltoFramework::addVeltoKey("bench");
  std::printf("{\"ms\": %.3f, \"cpuMs\": %.3f, \"installMs\": %.3f}\n", bench::wallMilliseconds() - installed,
              bench::threadMilliseconds() - cpuBefore, installed - start);
  gtk::uninstall();
}
