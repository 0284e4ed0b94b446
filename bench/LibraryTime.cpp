// The library's own time in a load, engine excluded: a banner on the headless platform, where the server
// answers from memory and the page finishes by itself. Measured is the processor time from load() until
// everything that the load caused has run: request built, answer classified and resolved, view placed and
// laid out, markup prepared, delegate told. Everything runs on one thread here, also what the real platform
// does on its transport's thread, and the headless platform's own work counts; so the main thread's real
// share is smaller.
//
//   usage: velto-bench-library-time AD_FILE LOADS
//
// Prints {"firstMs": ..., "laterMs": [...]}.
#include "velto/headless/VeltoHeadless.h"
#include "velto/resources/Resources.h"
#include "velto/velto.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "Measure.h"

namespace {

using namespace velto;

struct Delegate : VeltoBannerViewControllerDelegate {
  explicit Delegate(std::shared_ptr<UIViewController> controller) : host(std::move(controller)) {}
  std::shared_ptr<UIViewController> presentViewController() override { return host; }
  void veltoBannerViewControllerDidFinishLoad(VeltoBannerViewControllerPrivate&) override { ++finished; }

  std::shared_ptr<UIViewController> host;
  int finished = 0;
};

int run(const char* program, const std::string& adFile, int loads) {
  std::ifstream file(adFile, std::ios::binary);
  const std::string ad{std::istreambuf_iterator<char>(file), {}};
  auto platform = headless::Platform::install();
  platform->veltoBundle().files["omsdk-v1.js"] = resourceText("omsdk-v1.js").value();
  platform->setPagesFinishByThemselves(true);
  platform->urlSession().respond("", {.headers = {{"Content-Type", "text/html"},
                                                  {"x-content", "html"},
                                                  {"x-width", "320"},
                                                  {"x-height", "50"}},
                                      .body = ad});
  VeltoFramework::addVeltoKey("bench");
  headless::HostWindow window;
  auto delegate = std::make_shared<Delegate>(window.controller());
  auto banner =
      VeltoBannerViewController::initWithDelegate(delegate, VeltoBannerSize320x50, VeltoBannerPositionBottom);
  platform->runUntilIdle();

  for (int load = 1; load <= loads; ++load) {
    const double before = bench::threadMilliseconds();
    banner->load();
    platform->runUntilIdle();
    const double spent = bench::threadMilliseconds() - before;
    if (delegate->finished != load) {
      std::fprintf(stderr, "%s: load %d did not finish (is there an ad in %s?)\n", program, load,
                   adFile.c_str());
      return 1;
    }
    if (load == 1)
      std::printf("{\"firstMs\": %.4f, \"laterMs\": [", spent);
    else
      std::printf("%s%.4f", load == 2 ? "" : ", ", spent);
  }
  std::printf("]}\n");
  banner.reset();
  headless::Platform::uninstall();
  return 0;
}

}  // namespace

int main(int count, char** words) {
  const int loads = count == 3 ? std::atoi(words[2]) : 0;
  if (loads < 2) {
    std::fprintf(stderr, "usage: %s AD_FILE LOADS (two or more)\n", words[0]);
    return 2;
  }
  return run(words[0], words[1], loads);
}
