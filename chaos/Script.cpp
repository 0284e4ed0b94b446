// Drawing, writing and reading scripts.
#include "Script.h"

#include <algorithm>
#include <istream>
#include <ostream>
#include <random>
#include <sstream>
#include <stdexcept>

namespace velto::chaos {

const std::vector<Action>& actions() {
  static const std::vector<Action> all = [] {
    std::vector<Action> joined;
    for (const auto& some : {hostActions(), pageActions(), serverActions(), systemActions()})
      joined.insert(joined.end(), some.begin(), some.end());
    return joined;
  }();
  return all;
}

// The generator's own bits are used: the standard's distributions differ from library to library.
Script drawn(uint64_t seed, size_t steps) {
  std::mt19937_64 random(seed);
  const auto below = [&](int limit) { return static_cast<int>(random() % static_cast<uint64_t>(limit)); };
  int weights = 0;
  for (const auto& action : actions()) weights += action.weight;
  Script script;
  while (script.size() < steps) {
    int at = below(weights);
    const auto action = std::find_if(actions().begin(), actions().end(),
                                     [&](const Action& one) { return (at -= one.weight) < 0; });
    Step step{&*action, {}};
    for (const int limit : action->limits) step.numbers.push_back(below(limit));
    script.push_back(std::move(step));
  }
  return script;
}

std::string text(const Step& step) {
  std::string line = step.action->name;
  for (const int number : step.numbers) line += " " + std::to_string(number);
  return line;
}

void write(std::ostream& out, const Script& script) {
  for (const auto& step : script) out << text(step) << '\n';
}

Script read(std::istream& in) {
  Script script;
  for (std::string line; std::getline(in, line);) {
    std::istringstream words(line);
    std::string name;
    if (!(words >> name) || name.starts_with('#')) continue;
    const auto action =
        std::find_if(actions().begin(), actions().end(), [&](const Action& one) { return one.name == name; });
    if (action == actions().end()) throw std::invalid_argument("no such action: " + line);
    Step step{&*action, {}};
    for (int number; words >> number;) step.numbers.push_back(number);
    const bool fits =
        words.eof() &&
        std::equal(step.numbers.begin(), step.numbers.end(), action->limits.begin(), action->limits.end(),
                   [](int number, int limit) { return number >= 0 && number < limit; });
    if (!fits) throw std::invalid_argument("the numbers do not fit the action: " + line);
    script.push_back(std::move(step));
  }
  return script;
}

}  // namespace velto::chaos
