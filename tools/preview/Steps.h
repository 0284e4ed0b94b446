// The steps of a steps file: what velto-preview does to an ad, and what it expects of it.
#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace velto::preview {

struct Step {
  std::string file = {};  // where the line stands; empty: in the one that was given
  int line = 0;
  std::string text;  // the line as it stands
  std::string verb;  // "wait", "wait-for" …; for the latter and for "expect" with what it is about
  std::vector<std::string> words;  // what follows
  std::string rest;                // the same as it stands, for scripts and selectors
};

using Variables = std::map<std::string, std::string>;

// With those that other files hold (include), and with the variables' values (set) for ${NAME}. Empty lines and those that
// begin with # are passed over. Throws UsageError with the number of the line.
std::vector<Step> readSteps(const std::string& file, Variables variables = {});

// Throws UsageError for a step that a video ad cannot be played with.
void refuseStepsOfPages(const std::vector<Step>& steps, const std::string& file);

// "+1.5s" and the like, as a step says it.
std::optional<std::chrono::milliseconds> durationOf(const std::string& word);

// A number of a step that was read; readSteps() has seen to it that it is one.
double numberOf(const std::string& word);

}  // namespace velto::preview
