// The window, the loop over the loads, the reports.
#include "LoadProgram.h"

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <vector>

#include "Measure.h"

namespace velto::bench {
namespace {

constexpr guint longestLoad = 30'000;  // milliseconds
constexpr guint loadSettles = 20;  // an ad stands for half a minute; its last events belong to no later load
constexpr guint memorySettles = 2000;  // an ad comes in 0.9 s, and those before it stay until then

struct Arguments {
  Server server;
  int loads = 0;
  std::vector<int> pauses;
};

std::optional<int> positive(const char* word) {
  const std::string text(word);
  int number = 0;
  const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (fault != std::errc() || end != text.data() + text.size() || number < 1) return std::nullopt;
  return number;
}

std::optional<Arguments> parse(int count, char** words) {
  if (count < 5) return std::nullopt;
  Arguments arguments{{words[1], words[2], words[3]}, 0, {}};
  std::vector<int> numbers;
  for (int i = 4; i < count; ++i) {
    const auto number = positive(words[i]);
    if (!number) return std::nullopt;
    numbers.push_back(*number);
  }
  arguments.loads = numbers.front();
  arguments.pauses.assign(numbers.begin() + 1, numbers.end());
  return arguments;
}

// The main loop's turns: what a turn uses of the processor, an application's own work in the next has to wait for.
struct Turns {
  double longest = 0;         // of the load that is measured
  double longestToFirst = 0;  // from the window's first frame to the first ad
  double began = threadMilliseconds();
  void end() {
    const double now = threadMilliseconds();
    longest = std::max(longest, now - began);
    longestToFirst = std::max(longestToFirst, now - began);
    began = now;
  }
};
Turns turns;

gint pollBetweenTurns(GPollFD* sources, guint count, gint timeout) {
  turns.end();
  const gint ready = g_poll(sources, count, timeout);
  turns.began = threadMilliseconds();
  return ready;
}

// An animation of the application's own: it draws something in each frame, and counts those that did not come.
struct Animation {
  gint64 last = 0;  // microseconds
  int missed = 0;
};
Animation animation;

gboolean animate(GtkWidget* widget, GdkFrameClock* frames, gpointer) {
  constexpr gint64 frame = 16'667;
  const gint64 now = gdk_frame_clock_get_frame_time(frames);
  if (animation.last) animation.missed += static_cast<int>((now - animation.last + frame / 2) / frame) - 1;
  animation.last = now;
  gtk_widget_queue_draw(widget);
  return G_SOURCE_CONTINUE;
}

// The time that all processors of the machine have worked, in steps of some milliseconds (proc_stat(5)).
double machineMilliseconds() {
  double user = 0, nice = 0, system = 0;
  std::FILE* counters = std::fopen("/proc/stat", "re");
  const bool isThere = counters && std::fscanf(counters, "cpu %lf %lf %lf", &user, &nice, &system) == 3;
  if (counters) std::fclose(counters);
  return isThere ? 1e3 * (user + nice + system) / static_cast<double>(sysconf(_SC_CLK_TCK)) : 0;
}

void measureLoad(Loader& loader, int number) {
  bool loaded = false;
  double wall = 0;
  double cpu = 0;
  const auto tooLong = [](gpointer) { giveUp("a load did not end"); };
  const guint watchdog = g_timeout_add_once(longestLoad, tooLong, nullptr);
  turns.longest = 0;
  animation.missed = 0;
  turns.began = threadMilliseconds();
  double busy = machineMilliseconds();
  const double wallBefore = wallMilliseconds();
  const double cpuBefore = threadMilliseconds();
  loader.load([&] {
    if (loaded) giveUp("a load ended twice");
    wall = wallMilliseconds() - wallBefore;
    cpu = threadMilliseconds() - cpuBefore;
    busy = machineMilliseconds() - busy;
    loaded = true;
    turns.end();
  });
  while (!loaded) g_main_context_iteration(nullptr, TRUE);
  g_source_remove(watchdog);
  const double longest = turns.longest;
  const int missed = animation.missed;
  runMainLoopFor(loadSettles);
  std::printf(
      "{\"load\": %d, \"ms\": %.3f, \"cpuMs\": %.3f, \"turnMs\": %.3f, \"turnToFirstMs\": %.3f, "
      "\"missedFrames\": %d, \"requestMs\": %.3f, \"busyMs\": %.0f}\n",
      number, wall, cpu - loader.uncountedMilliseconds(), longest - loader.uncountedMilliseconds(),
      turns.longestToFirst, missed, loader.requestMilliseconds(), busy);
  std::fflush(stdout);
}

void showFirstFrame(GtkWindow* window, guint andWait) {
  bool isPainted = false;
  const auto painted = +[](GdkFrameClock*, bool* flag) { *flag = true; };
  gtk_widget_realize(GTK_WIDGET(window));
  GdkFrameClock* frames = gtk_widget_get_frame_clock(GTK_WIDGET(window));
  const gulong handler = g_signal_connect(frames, "after-paint", G_CALLBACK(painted), &isPainted);
  gtk_window_present(window);
  while (!isPainted) g_main_context_iteration(nullptr, TRUE);
  g_signal_handler_disconnect(frames, handler);
  std::printf("{\"firstFrameAt\": %.3f}\n", wallMilliseconds());
  turns = {};
  if (andWait > 0) runMainLoopFor(andWait);
}

void pause(int number) {
  runMainLoopFor(memorySettles);
  std::printf("{\"pause\": %d}\n", number);
  std::fflush(stdout);
  while (true) {
    const int read = std::getchar();
    if (read == '\n' || read == EOF) return;
  }
}

}  // namespace

void giveUp(const std::string& reason) {
  std::fprintf(stderr, "%s: %s\n", g_get_prgname(), reason.c_str());
  std::_Exit(1);
}

void runMainLoopFor(guint duration) {
  bool over = false;
  const auto end = [](gpointer flag) { *static_cast<bool*>(flag) = true; };
  g_timeout_add_once(duration, end, &over);
  while (!over) g_main_context_iteration(nullptr, TRUE);
}

GtkWindow* makeWindow(const char* program) {
  g_set_prgname(g_path_get_basename(program));
  if (!gtk_init_check()) giveUp("no display");
  auto* window = GTK_WINDOW(gtk_window_new());
  gtk_window_set_default_size(window, 400, 300);
  gtk_window_set_child(window, gtk_overlay_new());
  return window;
}

GtkWindow* startWithWindow(const char* program) {
  GtkWindow* window = makeWindow(program);
  gtk_window_present(window);
  while (!gtk_widget_get_mapped(GTK_WIDGET(window))) g_main_context_iteration(nullptr, TRUE);
  runMainLoopFor(windowSettles);
  return window;
}

int runLoads(int count, char** words,
             const std::function<std::unique_ptr<Loader>(const Server&, GtkWindow*)>& make) {
  const auto arguments = parse(count, words);
  if (!arguments) {
    std::fprintf(stderr, "usage: %s PORT CA_FILE KEY LOADS [PAUSE_AFTER...]\n", words[0]);
    return 2;
  }
  const char* after = std::getenv("VELTO_BENCH_AFTER");
  GtkWindow* window = after ? makeWindow(words[0]) : startWithWindow(words[0]);
  auto loader = make(arguments->server, window);
  g_main_context_set_poll_func(nullptr, pollBetweenTurns);
  if (std::getenv("VELTO_BENCH_ANIMATED"))
    gtk_widget_add_tick_callback(gtk_window_get_child(window), animate, nullptr, nullptr);
  if (after) showFirstFrame(window, static_cast<guint>(std::atoi(after)));
  const auto& pauses = arguments->pauses;
  for (int number = 1; number <= arguments->loads; ++number) {
    measureLoad(*loader, number);
    if (std::find(pauses.begin(), pauses.end(), number) != pauses.end()) pause(number);
  }
  loader.reset();
  gtk_window_destroy(window);
  return 0;
}

}  // namespace velto::bench
