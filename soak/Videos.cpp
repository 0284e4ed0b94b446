// The loop, and its account.
#include "Videos.h"

#include "velto/gtk/VeltoGtk.h"
#include "velto/velto.h"
#include "velto/video/VeltoVideoAd.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <thread>

#include "Account.h"
#include "Sandbox.h"
#include "Turns.h"

namespace velto::soak {
namespace {

constexpr int longestAd = 60'000, settles = 1'000;  // milliseconds
constexpr int warmUp = 50;                          // ads
constexpr char film[] = "film.webm";

// A fifth of a second, without sound: what ends soon shows most of coming and going.
void makeFilm(const std::string& folder) {
  const auto line =
      "gst-launch-1.0 -q videotestsrc num-buffers=5 ! video/x-raw,width=160,height=90,framerate=25/1 ! "
      "vp8enc deadline=1 ! webmmux ! filesink location=" +
      folder + "/" + film;
  if (test::run({"sh", "-c", line}).code != 0) throw std::runtime_error("no film can be made: " + line);
}

std::string document() {
  const std::string server = "https://ads.velto.example/";
  std::string trackings;
  for (const char* event : {"start", "firstQuartile", "midpoint", "thirdQuartile", "complete"})
    trackings +=
        "<Tracking event=\"" + std::string(event) + "\">" + server + "landing?" + event + "</Tracking>";
  return "<VAST version=\"4.2\"><Ad><InLine><AdSystem>soak</AdSystem><Impression>" + server +
         "landing?impression</Impression><Creatives><Creative><Linear><Duration>00:00:00.200</Duration>"
         "<TrackingEvents>" +
         trackings +
         "</TrackingEvents><MediaFiles><MediaFile type=\"video/webm\" width=\"160\" height=\"90\">" + server +
         film + "</MediaFile></MediaFiles></Linear></Creative></Creatives></InLine></Ad></VAST>";
}

class Player final : public VeltoVideoAdDelegate {
 public:
  explicit Player(GtkWidget* place) : place_(place) {}

  bool isOver = false;
  int completed = 0, failed = 0;

  void veltoVideoAdDidLoad(VeltoVideoAd& ad) override {
    if (!ad.playIn(gtk::hostView(place_))) fail("has no place");
  }
  void veltoVideoAdDidFail(VeltoVideoAd&, const VeltoVideoAdError& error) override {
    fail(error.explanation.c_str());
  }
  void veltoVideoAdDidComplete(VeltoVideoAd&) override { ++completed; }
  void veltoVideoAdDidEndAll(VeltoVideoAd&) override { isOver = true; }

 private:
  void fail(const char* why) {
    if (++failed <= 3) std::printf("an ad %s\n", why);
    isOver = true;
  }

  GtkWidget* const place_;
};

void leak() {
  g_strnfill(65536, 'x');
  if (dup(STDERR_FILENO) < 0) throw std::runtime_error("no descriptor to leave behind");
  std::thread([] { pause(); }).detach();
}

}  // namespace

int playVideos(const std::string& program, int times, bool leaks) {
  if (!gtk_init_check()) throw std::runtime_error("there is no display");
  const test::TemporaryFolder films;
  makeFilm(films.path());
  const Sandbox sandbox(program, films.path());
  sandbox.install();
  auto* window = GTK_WINDOW(gtk_window_new());
  auto* place = gtk_drawing_area_new();
  gtk_window_set_default_size(window, 400, 300);
  gtk_window_set_child(window, place);
  gtk_window_present(window);
  auto controller = gtk::hostViewController(window);
  Turns turns;
  const auto player = std::make_shared<Player>(place);
  const auto text = document();
  const auto look = [&](int at) {
    turns.runFor(settles);
    const auto held = heldNow(sandbox.store());
    const auto n = [](int64_t number) { return static_cast<long long>(number); };
    std::printf(
        "%d videos: heap %lld KiB, own memory %lld KiB, %lld descriptors, %lld threads, %lld processes\n", at,
        n(held.heap), n(held.own), n(held.descriptors), n(held.threads), n(held.processes));
    std::fflush(stdout);
    return held;
  };
  const int warm = std::min(warmUp, std::max(1, times / 4)), tenth = std::max(1, (times - warm) / 10);
  Held before, after;
  for (int at = 1; at <= times && player->failed == 0; ++at) {
    player->isOver = false;
    auto ad = VeltoVideoAd::make(player);
    turns.call("video", [&] { ad->loadDocument(text); });
    if (!turns.runUntil([&] { return player->isOver; }, longestAd)) {
      std::printf("video %d does not end\n", at);
      player->failed = 1;
    }
    if (leaks) leak();
    ad.reset();
    if (at == warm) before = look(at);
    if (at == times || (at > warm && (at - warm) % tenth == 0)) after = look(at);
  }
  controller.reset();
  gtk::uninstall();
  gtk_window_destroy(window);
  if (player->failed > 0 || player->completed != times) {
    std::printf("velto-soak: %d of %d videos played to their end\n", player->completed, times);
    return 1;
  }
  const auto over = compare(before, after,
                            {{"heap, KiB", &Held::heap, 512 + times / 4},
                             {"own memory, KiB", &Held::own, 8192 + times},
                             {"descriptors", &Held::descriptors, 2},
                             {"threads", &Held::threads, 2},
                             {"processes", &Held::processes, 0},
                             {"temporary files", &Held::files, 1}});
  std::printf("longest turn %.1f ms of processor time, longest wait %.1f ms\n", turns.mostUsed().used,
              turns.longestWait().waited);
  if (over.empty()) return std::printf("%d videos leave nothing.\n", times), 0;
  std::printf("velto-soak: %d videos leave:", times);
  for (size_t at = 0; at < over.size(); ++at) std::printf("%s %s", at ? "," : "", over[at].c_str());
  std::printf("\n");
  return 1;
}

}  // namespace velto::soak
