// velto-soak: an application with ads in every place, in the real engine, at random for minutes, while processes
// die, servers lie and the desktop changes; then everything is let go, and what is left is compared with the start. scripts/soak runs
// it; docs/reliability.md is about it.
#include <gio/gio.h>
#include <gtk/gtk.h>

#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <thread>

#include "../examples/demo/LinkTrap.h"
#include "Account.h"
#include "Refreshes.h"
#include "Stage.h"
#include "Videos.h"

namespace {

using namespace velto::soak;

constexpr char usage[] =
    "usage: velto-soak --sandbox PROGRAM [--seconds N] [--round N] [--seed S] [--fault NAME]\n"
    "       velto-soak --sandbox PROGRAM --refreshes N [--fault leak]\n"
    "       velto-soak --sandbox PROGRAM --videos N [--fault leak]\n"
    "\n"
    "--sandbox    velto-sandbox\n"
    "--seconds    how long, without the round before that warms up (60)\n"
    "--round      after so many seconds everything is let go, and begins anew (60)\n"
    "--seed       of what is done (drawn)\n"
    "--refreshes  refreshes one banner so often instead, and compares with a bare program\n"
    "--videos     plays so many short video ads instead, one after another\n"
    "--fault      a fault from outside the library that has to be noticed: leak, wait (the main loop does), "
    "ill (no ads come)\n"
    "\n"
    "Exit code 0 when all is within its limits, 1 when something is over, 2 for a wrong call.\n";

struct Options {
  std::string sandbox, with, fault;
  int seconds = 60, round = 60, refreshes = 0, videos = 0;
  uint64_t seed = std::random_device()();
};

template <class Number>
void readNumber(const std::string& text, Number& number, Number least) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || number < least)
    throw std::invalid_argument("no such number: " + text);
}

Options optionsFrom(const std::vector<std::string>& words) {
  Options options;
  for (size_t at = 0; at < words.size(); at += 2) {
    const auto& name = words[at];
    if (at + 1 == words.size()) throw std::invalid_argument("without a value, or no option: " + name);
    const auto& value = words[at + 1];
    if (name == "--sandbox")
      options.sandbox = value;
    else if (name == "--seconds")
      readNumber(value, options.seconds, 1);
    else if (name == "--round")
      readNumber(value, options.round, 1);
    else if (name == "--refreshes")
      readNumber(value, options.refreshes, 10);
    else if (name == "--videos")
      readNumber(value, options.videos, 2);
    else if (name == "--seed")
      readNumber(value, options.seed, uint64_t{0});
    else if (name == "--with" && (value == "library" || value == "bare"))
      options.with = value;
    else if (name == "--fault" && (value == "leak" || value == "ill"))
      options.fault = value;
    else
      throw std::invalid_argument("no such option: " + name + " " + value);
  }
#ifndef SOAK_HAS_VIDEOS
  if (options.videos) throw std::invalid_argument("built without video ads, so without --videos");
#endif
  if (options.sandbox.empty()) throw std::invalid_argument("--sandbox is missing");
  return options;
}

constexpr int longestHealing = 180'000, longestSettling = 120'000, settled = 1'500;  // milliseconds
constexpr double longestWait = 20'000;  // of a turn, milliseconds

// More than its limit of everything that can be left behind, and a wait of the main loop.
void leakAll(const Sandbox& sandbox, Turns& turns) {
  constexpr size_t megabyte = 1 << 20;
  std::memset(std::malloc(20 * megabyte), 1, 20 * megabyte);  // NOLINT: on purpose
  for (int i = 0; i < 20; ++i) {
    if (dup(STDERR_FILENO) < 0) throw std::runtime_error("no descriptor to leave behind");
    std::thread([] { pause(); }).detach();
    const auto name = "left" + std::to_string(i);
    const char* words[] = {"setpriv", "--pdeathsig", "KILL", "sleep", "600", nullptr};
    g_spawn_async(nullptr, const_cast<char**>(words), nullptr,
                  static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_DO_NOT_REAP_CHILD), nullptr, nullptr,
                  nullptr, nullptr);
    for (const std::string& folder : {std::string(g_get_tmp_dir()), sandbox.store()})
      g_file_set_contents((folder + "/" + name).c_str(), std::string(megabyte, 'x').c_str(), megabyte,
                          nullptr);
    g_bus_own_name(G_BUS_TYPE_SESSION, ("org.example." + name).c_str(), G_BUS_NAME_OWNER_FLAGS_NONE, nullptr,
                   nullptr, nullptr, nullptr, nullptr);
  }
  turns.call("a wait on purpose", [] { g_usleep(21'000'000); });
}

// The system's certificates, 5 MiB that GIO reads for the first film over HTTPS and keeps, are there at the start.
void readCertificates() {
  GTlsDatabase* database = g_tls_backend_get_default_database(g_tls_backend_get_default());
  g_clear_object(&database);
}

class Soak {
 public:
  explicit Soak(Options options)
      : options_(std::move(options)),
        dice_(options_.seed),
        sandbox_(options_.sandbox),
        around_(dice_, sandbox_) {
    sandbox_.install();
  }
  ~Soak() { velto::gtk::uninstall(); }

  int run() {
    std::printf("seed %llu\n", static_cast<unsigned long long>(options_.seed));
    readCertificates();
    if (!round(std::min(options_.round, options_.seconds))) return 1;
    const Held before = tell("warm");
    const auto pagesBefore = counts_.loads;
    turns_.forget();
    std::string broken;
    for (int left = options_.seconds; left > 0; left -= options_.round) {
      if (!round(std::min(left, options_.round))) return 1;
      if (options_.fault == "leak") leakAll(sandbox_, turns_);
      tell(std::to_string(options_.seconds - std::max(0, left - options_.round)) + " s");
    }
    return verdict(before, settledNow(), counts_.loads - pagesBefore);
  }

 private:
  // False when an ad could not be shown at its end.
  bool round(int seconds) {
    using Clock = std::chrono::steady_clock;
    Stage::Healing healing;
    {
      Stage stage(dice_, around_, turns_, counts_);
      const auto until = Clock::now() + std::chrono::seconds(seconds);
      while (Clock::now() < until) stage.step();
      const bool isIll = options_.fault == "ill";
      healing = stage.heal(isIll ? 3000 : longestHealing, isIll ? "error" : "good");
    }
    slowestHealing_ = std::max(slowestHealing_, healing.milliseconds);
    if (healing.broken)
      std::printf("velto-soak: seed %llu: %s\n", static_cast<unsigned long long>(options_.seed),
                  healing.broken->c_str());
    return !healing.broken;
  }

  // Once no page's process is left, one that was brought up for a load to come included (it waits for half a minute), and
  // nothing changes any more of what comes and goes with processes.
  Held settledNow() {
    Held last = heldNow(sandbox_.store());
    for (int waited = 0, same = 0; waited < longestSettling && same < settled; waited += 250) {
      turns_.runFor(250);
      const Held held = heldNow(sandbox_.store());
      const bool isSame = !hasPages() && held.descriptors == last.descriptors &&
                          held.threads == last.threads && held.processes == last.processes &&
                          held.proxies == last.proxies && held.files == last.files &&
                          held.names == last.names;
      same = isSame ? same + 250 : 0;
      last = held;
    }
    return last;
  }

  static bool hasPages() {
    for (const auto& process : descendants())
      if (process.name.starts_with("WebKitWebProces")) return true;
    return false;
  }

  Held tell(const std::string& when) {
    const Held held = settledNow();
    const auto& [pages, hangs, networks, outages] = around_.deaths();
    const auto n = [](auto number) { return static_cast<unsigned long long>(number); };
    std::printf(
        "%s: %llu steps, %llu loads, %llu ads, %llu failures, %llu screens, %llu windows; killed %llu pages "
        "and %llu "
        "network processes, held up %llu pages and %llu times the server; heap %llu KiB, own %llu KiB, %llu "
        "descriptors, %llu threads, %llu processes; longest turn %.0f ms (%s), wait %.0f ms (%s)\n",
        when.c_str(), n(counts_.steps), n(counts_.loads), n(counts_.finished), n(counts_.failed),
        n(counts_.screens), n(counts_.windows), n(pages), n(networks), n(hangs), n(outages), n(held.heap),
        n(held.own), n(held.descriptors), n(held.threads), n(held.processes), turns_.mostUsed().used,
        turns_.mostUsed().in.c_str(), turns_.longestWait().waited, turns_.longestWait().in.c_str());
    std::fflush(stdout);
    return held;
  }

  int verdict(const Held& before, const Held& after, uint64_t loads) {
    // What caches of the toolkit and of fonts take in, and what lies in between.
    const auto perLoad = static_cast<int64_t>(loads);
    const auto deaths = around_.deaths().pages + around_.deaths().hangs;
    auto over = compare(before, after,
                        {{"heap, KiB", &Held::heap, 3072 + perLoad / 2},
                         {"own memory, KiB", &Held::own, 8192 + perLoad * 4},
                         {"descriptors", &Held::descriptors, 8 + static_cast<int64_t>(deaths) / 10},
                         {"threads", &Held::threads, 16},
                         {"processes", &Held::processes, 1},
                         {"processes of sandboxes", &Held::proxies, 6 + 3 * static_cast<int64_t>(deaths) / 5},
                         {"temporary files", &Held::files, 4},
                         {"files of the engine's sandboxes", &Held::sandboxes, 20 + perLoad * 8},
                         {"the library's folder, KiB", &Held::kept, 8192},
                         {"names on the bus", &Held::names, 2}});
    std::printf(
        "slowest healing %d ms (limit %d); longest turn %.0f ms of processor time (%s), longest wait %.0f ms "
        "(%s; limit %.0f)\n",
        slowestHealing_, longestHealing, turns_.mostUsed().used, turns_.mostUsed().in.c_str(),
        turns_.longestWait().waited, turns_.longestWait().in.c_str(), longestWait);
    if (turns_.longestWait().waited > longestWait) over.emplace_back("the main loop's wait");
    if (counts_.finished == 0) over.emplace_back("no ad was shown");
    if (over.empty()) return std::printf("All is within its limits.\n"), 0;
    std::printf("velto-soak: seed %llu: over the limit:", static_cast<unsigned long long>(options_.seed));
    for (size_t at = 0; at < over.size(); ++at) std::printf("%s %s", at ? "," : "", over[at].c_str());
    std::printf("\n");
    return 1;
  }

  const Options options_;
  Dice dice_;
  Turns turns_;
  Counts counts_;
  Sandbox sandbox_;
  Surroundings around_;
  int slowestHealing_ = 0;
};

int run(const std::string& program, Options options) {
  const auto leak = options.fault == "leak" ? Leak::All : Leak::None;
  if (options.refreshes && options.with.empty())
    return compareRefreshes(program, options.sandbox, options.refreshes, leak);
  if (options.refreshes) return refresh(options.sandbox, options.with == "library", options.refreshes, leak);
#ifdef SOAK_HAS_VIDEOS
  if (options.videos) return playVideos(options.sandbox, options.videos, leak == Leak::All);
#endif
  const demo::LinkTrap links;
  if (!gtk_init_check()) throw std::runtime_error("there is no display");
  return Soak(std::move(options)).run();
}

}  // namespace

int main(int count, char** arguments) {
  const std::vector<std::string> words(arguments + 1, arguments + count);
  if (words == std::vector<std::string>{"--help"}) return std::cout << usage, 0;
  try {
    return run("/proc/self/exe", optionsFrom(words));
  } catch (const std::invalid_argument& error) {
    std::cerr << "velto-soak: " << error.what() << '\n' << usage;
  } catch (const std::exception& error) {
    std::cerr << "velto-soak: " << error.what() << '\n';
  }
  return 2;
}
