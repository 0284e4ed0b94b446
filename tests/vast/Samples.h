// The samples of tests/vast/samples, and what expected.txt says of each: its name, and below it what is `read` of it, what servers are
// `told` when it is played, and where presses have `led`.
#pragma once

#include <map>
#include <sstream>
#include <string>

#include "../support/Folder.h"

namespace velto::test {

inline std::string sampleText(const std::string& file) {
  return textOf(std::filesystem::path(VAST_SAMPLES) / file);
}

using SampleFacts = std::map<std::string, std::string>;

inline std::map<std::string, SampleFacts> expectedOfSamples() {
  std::map<std::string, SampleFacts> all;
  std::istringstream lines(sampleText("expected.txt"));
  std::string name, key;
  for (std::string line; std::getline(lines, line);) {
    const auto indent = line.find_first_not_of(' ');
    if (indent == 0) name = line;
    if (indent == 2) key = line.substr(2, line.find(':') - 2);
    if (indent == 2) all[name][key] = line.substr(std::min(line.size(), line.find(':') + 2));
    if (indent == 4) all[name][key] += " " + line.substr(4);  // goes on
  }
  return all;
}

}  // namespace velto::test
