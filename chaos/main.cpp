// velto-chaos: walks at random through everything that can happen to an application with the library in it, and looks
// after each step whether the library keeps its promises. scripts/chaos runs it; docs/reliability.md is about it.
#include <glib.h>

#include <charconv>
#include <chrono>
#include <fstream>
#include <iostream>
#include <random>
#include <stdexcept>

#include "Walk.h"

namespace {

using namespace velto::chaos;

constexpr char usage[] =
    "usage: velto-chaos [--steps N] [--seed S] [--length N] [--fault NAME] [--keep FILE]\n"
    "       velto-chaos --script FILE [--fault NAME]\n"
    "       velto-chaos --actions | --faults\n"
    "\n"
    "--steps    how many steps (10000)\n"
    "--seed     a walk is the same for the same seed (drawn)\n"
    "--length   steps on one installation (5000)\n"
    "--script   plays the steps in a file, one a line\n"
    "--keep     where a walk that failed is kept, as few steps as it needs (chaos.script)\n"
    "--fault    breaks one promise from outside the library, which the walk has to notice\n"
    "--actions  lists what steps there are, --faults what faults\n"
    "\n"
    "Exit code 0 when all promises were kept, 1 when one was broken, 2 for a wrong call.\n";

struct Options {
  size_t steps = 10'000, length = 5'000;
  uint64_t seed = std::random_device()();
  std::string script, keep = "chaos.script";
  Fault fault = Fault::None;
};

template <class Number>
void readNumber(const std::string& text, Number& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size())
    throw std::invalid_argument("no number: " + text);
}

void readFault(const std::string& name, Fault& fault) {
  const auto found = std::find(faultNames.begin(), faultNames.end(), name);
  if (found == faultNames.end()) throw std::invalid_argument("no such fault: " + name);
  fault = static_cast<Fault>(found - faultNames.begin());
}

Options optionsFrom(const std::vector<std::string>& words) {
  Options options;
  for (size_t at = 0; at < words.size(); at += 2) {
    const auto& name = words[at];
    if (at + 1 == words.size()) throw std::invalid_argument("without a value, or no option: " + name);
    const auto& value = words[at + 1];
    if (name == "--steps")
      readNumber(value, options.steps);
    else if (name == "--seed")
      readNumber(value, options.seed);
    else if (name == "--length")
      readNumber(value, options.length);
    else if (name == "--script")
      options.script = value;
    else if (name == "--keep")
      options.keep = value;
    else if (name == "--fault")
      readFault(value, options.fault);
    else
      throw std::invalid_argument("no such option: " + name);
  }
  if (options.length == 0) throw std::invalid_argument("--length 0");
  return options;
}

int playFile(const Options& options) {
  std::ifstream file(options.script);
  if (!file) throw std::invalid_argument("cannot be read: " + options.script);
  const auto failure = play(read(file), options.fault);
  if (!failure)
    std::cout << "All promises were kept.\n";
  else
    std::cout << "Broken at step " << failure->step << ": " << failure->what << '\n';
  return failure ? 1 : 0;
}

int walkAtRandom(const Options& options) {
  const auto begin = std::chrono::steady_clock::now();
  const auto walked = walk(options.seed, options.steps, options.length, options.fault);
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
  if (!walked.failure) {
    const auto& most = walked.figures;
    std::cout << "seed " << options.seed << ": " << walked.steps << " steps in " << took.count()
              << " s, all promises were kept; at most " << most.timers << " timers, " << most.tasks
              << " tasks, " << most.webViews << " web views, " << most.tracks << " tracks that wait, "
              << (most.bytes >> 10) << " KiB of heap; " << most.loads << " loads, which met "
              << most.ends.count() << " of " << velto::veltoAdEndReasons().size() << " ends and "
              << most.entries.count() << " kinds of entries; not met:";
    for (const auto& words : velto::veltoAdEndReasons())
      if (!most.ends.test(static_cast<size_t>(words.reason))) std::cout << ' ' << words.name;
    std::cout << '\n';
    return 0;
  }
  std::cout << "seed " << options.seed << ": broken: " << walked.failure->what << '\n';
  auto script = walked.script;
  const auto again = play(script, options.fault);
  if (again)
    script = shrunk(script, *again, options.fault);
  else
    std::cout << "It does not fail by itself, only after the scripts before it.\n";
  std::ofstream kept(options.keep);
  kept << "# seed " << options.seed << ": " << walked.failure->what << '\n';
  write(kept, script);
  std::cout << script.size() << " steps are enough, in " << options.keep << "; again with --script "
            << options.keep << '\n';
  if (script.size() <= 30) write(std::cout, script);
  return 1;
}

}  // namespace

int main(int count, char** arguments) {
  const std::vector<std::string> words(arguments + 1, arguments + count);
  g_random_set_seed(1);  // identifiers are drawn with it
  try {
    if (words == std::vector<std::string>{"--help"}) return std::cout << usage, 0;
    if (words == std::vector<std::string>{"--actions"}) {
      for (const auto& action : actions()) {
        std::cout << action.name;
        for (const int limit : action.limits) std::cout << " 0-" << limit - 1;
        std::cout << "\n    " << action.what << '\n';
      }
      return 0;
    }
    if (words == std::vector<std::string>{"--faults"}) {
      for (const auto& name : faultNames) std::cout << name << '\n';
      return 0;
    }
    const auto options = optionsFrom(words);
    return options.script.empty() ? walkAtRandom(options) : playFile(options);
  } catch (const std::invalid_argument& error) {
    std::cerr << "velto-chaos: " << error.what() << '\n' << usage;
    return 2;
  }
}
