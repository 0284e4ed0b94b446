// What a rich-media page with many listeners costs: so many are added, hear of ten changes, and are removed one by
// one. Measured in the page, whose process does all of the work, in the engine that applications have.
//
//   usage: velto-bench-listeners ROUNDS SIZE...
//
// Prints {"size": ..., "ms": [...]} for each size.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "LibraryPage.h"

namespace {

// The page's clock is coarse, so that small sizes are done again and again for a sample.
constexpr char page[] = R"(<html><head><script src="mraid.js"></script></head><body>ad<script>
  var samples = {}, done = false;
  async function work(size) {
    var heard = 0, listeners = [];
    for (var i = 0; i < size; ++i) listeners.push(function () { ++heard; });
    listeners.forEach(function (one) { mraid.addEventListener('audioVolumeChange', one); });
    for (var change = 1; change <= 10; ++change) {
      mraid.fireEvent('audioVolumeChange', {volumePercentage: change});
      await null;
    }
    listeners.forEach(function (one) { mraid.removeEventListener('audioVolumeChange', one); });
    if (heard !== 10 * size) throw new Error('not all were told');
  }
  async function run(rounds, sizes) {
    for (var round = 0; round <= rounds; ++round) {
      for (var size of sizes) {
        var times = 0, began = performance.now(), spent = 0;
        while (spent < 30) { await work(size); ++times; spent = performance.now() - began; }
        if (round) (samples[size] = samples[size] || []).push(spent / times);
      }
      await new Promise(function (next) { setTimeout(next, 0); });
    }
    done = true;
  }
</script></body></html>)";

}  // namespace

int main(int count, char** words) {
  const int rounds = count > 2 ? std::atoi(words[1]) : 0;
  if (rounds < 1) {
    std::fprintf(stderr, "usage: %s ROUNDS SIZE...\n", words[0]);
    return 2;
  }
  if (!gtk_init_check()) {
    std::fprintf(stderr, "%s: no display\n", words[0]);
    return 1;
  }
  const velto::bench::LibraryPage ad(page);
  std::string sizes;
  for (int i = 2; i < count; ++i) sizes += (i > 2 ? ", " : "") + std::to_string(std::atoi(words[i]));
  ad.evaluate("run(" + std::to_string(rounds) + ", [" + sizes +
              "]).catch(function (error) { done = error; })");
  std::string done;
  while ((done = ad.evaluate("done")) == "false") velto::bench::wait(200);
  if (done != "true") {
    std::fprintf(stderr, "%s: %s\n", words[0], done.c_str());
    return 1;
  }
  std::puts(ad.evaluate("Object.keys(samples).map(function (size) { return JSON.stringify("
                        "{size: Number(size), ms: samples[size]}); }).join('\\n')")
                .c_str());
}
