// What a walk does: a list of steps, each an action with its numbers. As text it is one step a line, so that a walk that
// failed can be kept, cut down and played again.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace velto::chaos {

class World;
using Numbers = std::vector<int>;

struct Action {
  const char* name;
  int weight;               // how often it is drawn, beside the others
  std::vector<int> limits;  // of its numbers: each is at least 0 and below its limit
  const char* what;         // for people
  void (*run)(World& world, const Numbers& numbers);
};

// All of them; each file of actions has some.
const std::vector<Action>& actions();
std::vector<Action> hostActions();
std::vector<Action> pageActions();
std::vector<Action> serverActions();
std::vector<Action> systemActions();

struct Step {
  const Action* action;
  Numbers numbers;
};
using Script = std::vector<Step>;

// The same for the same seed, on every machine, whatever comes of the steps.
Script drawn(uint64_t seed, size_t steps);

std::string text(const Step& step);
void write(std::ostream& out, const Script& script);
// Empty lines and those that begin with "#" are left out. Throws std::invalid_argument for what is no step.
Script read(std::istream& in);

}  // namespace velto::chaos
