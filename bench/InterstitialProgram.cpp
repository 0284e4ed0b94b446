// The rounds.
#include "InterstitialProgram.h"

#include <webkit/webkit.h>

#include <cstdio>
#include <cstdlib>

#include "Measure.h"

namespace velto::bench {
namespace {

constexpr guint longestStep = 30'000;  // milliseconds
constexpr guint waits = 400;           // between load and show: the ad is there ahead of time
constexpr guint settles = 100;

// The page of the benchmarks, loaded, in what the window shows.
bool showsPage(GtkWidget* widget) {
  if (WEBKIT_IS_WEB_VIEW(widget)) {
    auto* view = WEBKIT_WEB_VIEW(widget);
    const char* title = webkit_web_view_get_title(view);
    return gtk_widget_get_mapped(widget) && title && *title && !webkit_web_view_is_loading(view);
  }
  for (auto* child = gtk_widget_get_first_child(widget); child; child = gtk_widget_get_next_sibling(child))
    if (showsPage(child)) return true;
  return false;
}

struct Times {
  double done = 0;
  double page = 0;
};

// One step, timed until it says that it is done and, when that is wanted, until the page is there.
Times measure(GtkWindow* window, bool untilPage, const std::function<void(std::function<void()>)>& step) {
  const auto tooLong = [](gpointer) { giveUp("a step did not end"); };
  const guint watchdog = g_timeout_add_once(longestStep, tooLong, nullptr);
  const double before = wallMilliseconds();
  Times times;
  bool done = false;
  step([&] {
    done = true;
    times.done = wallMilliseconds() - before;
  });
  bool page = !untilPage;
  while (!done || !page) {
    g_main_context_iteration(nullptr, TRUE);
    if (page || !showsPage(GTK_WIDGET(window))) continue;
    page = true;
    times.page = wallMilliseconds() - before;
  }
  g_source_remove(watchdog);
  return times;
}

void runRound(Interstitial& interstitial, GtkWindow* window, int number) {
  const auto ready = measure(window, false, [&](auto done) { interstitial.load(std::move(done)); });
  runMainLoopFor(waits);
  const auto shown = measure(window, true, [&](auto done) { interstitial.show(std::move(done)); });
  runMainLoopFor(settles);
  measure(window, false, [&](auto done) { interstitial.close(std::move(done)); });
  runMainLoopFor(settles);
  std::printf("{\"round\": %d, \"readyMs\": %.3f, \"pageMs\": %.3f, \"shownMs\": %.3f}\n", number, ready.done,
              shown.page, shown.done - interstitial.uncountedOfShow());
  std::fflush(stdout);
}

}  // namespace

int runInterstitials(int count, char** words,
                     const std::function<std::unique_ptr<Interstitial>(const Server&, GtkWindow*)>& make) {
  const int rounds = count == 5 ? std::atoi(words[4]) : 0;
  if (rounds < 1) {
    std::fprintf(stderr, "usage: %s PORT CA_FILE KEY ROUNDS\n", words[0]);
    return 2;
  }
  GtkWindow* window = startWithWindow(words[0]);
  auto interstitial = make({words[1], words[2], words[3]}, window);
  for (int number = 1; number <= rounds; ++number) runRound(*interstitial, window, number);
  interstitial.reset();
  gtk_window_destroy(window);
  return 0;
}

}  // namespace velto::bench
