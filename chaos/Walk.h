// Walks, each in a process of its own, so that a crash or a loop without end is one more way to fail.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "World.h"

namespace velto::chaos {

struct Failure {
  std::string what;
  size_t step = 0;  // of the script, counted from 1; one more than it has: when all was let go of
};

// Plays it. What failed, or nothing.
std::optional<Failure> play(const Script& script, Fault fault);

// Takes out of a script that fails what is not needed for it to fail in the same way.
Script shrunk(Script script, const Failure& failure, Fault fault);

struct Walked {
  size_t steps = 0;
  Figures figures;
  std::optional<Failure> failure;
  Script script;  // that failed
};
// So many steps, in scripts of that length, each on an installation of its own. Their heap is compared, too.
Walked walk(uint64_t seed, size_t steps, size_t length, Fault fault);

}  // namespace velto::chaos
