// Reading steps, and judging them before anything is played.
#include "preview/Steps.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "preview/Arguments.h"
#include "preview/Findings.h"

namespace velto::preview {
namespace {

constexpr int deepestInclude = 8;
constexpr double largest = 1e8;  // of any number: as milliseconds more than a day
constexpr double mostClicks = 1000;
constexpr double longestMove = 366 * 24 * 3600e3;  // milliseconds that a clock is put forward by

// What may follow a verb: w a word, n a number, N a number that may be left out, r the rest of the line, R the same that
// may be left out.
const std::map<std::string, std::string> grammar{{"wait", "n"},
                                                 {"wait-for state", "wN"},
                                                 {"wait-for event", "wN"},
                                                 {"wait-for eval", "r"},
                                                 {"from-here", ""},
                                                 {"tap", "nn"},
                                                 {"tap-element", "r"},
                                                 {"long-press", "nnN"},
                                                 {"swipe", "nnnn"},
                                                 {"scroll", "nnn"},
                                                 {"type", "r"},
                                                 {"eval", "r"},
                                                 {"rotate", "w"},
                                                 {"hide", ""},
                                                 {"show", ""},
                                                 {"volume", "n"},
                                                 {"close", ""},
                                                 {"skip", ""},
                                                 {"offline", ""},
                                                 {"online", ""},
                                                 {"slow", "w"},
                                                 {"clock", "w"},
                                                 {"screenshot", "wR"},
                                                 {"press", "w"},
                                                 {"picture", "w"},
                                                 {"expect state", "w"},
                                                 {"expect placement", "w"},
                                                 {"expect frame", "nnnn"},
                                                 {"expect count", "wn"},
                                                 {"expect eval", "r"},
                                                 {"expect open", "w"},
                                                 {"expect command", "wR"},
                                                 {"expect no", "ww"}};

std::optional<double> parsed(const std::string& word) {
  double value = 0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
  if (error != std::errc{} || end != word.data() + word.size()) return std::nullopt;
  return std::abs(value) <= largest ? std::optional(value) : std::nullopt;  // neither "nan" nor "inf"
}

bool fits(const std::string& form, const Step& step) {
  size_t words = form.size(), least = words;
  const bool endsInRest = !form.empty() && (form.back() == 'r' || form.back() == 'R');
  if (endsInRest) --words;
  if (!form.empty() && (form.back() == 'N' || form.back() == 'R')) --least;
  if (step.words.size() < least || (!endsInRest && step.words.size() > words)) return false;
  for (size_t i = 0; i < std::min(words, step.words.size()); ++i)
    if (form[i] != 'w' && !parsed(step.words[i])) return false;
  return true;
}

// Points, times and counts are not below zero; a frame may be, and a wheel turns both ways.
bool numbersFit(const Step& step, const std::string& form) {
  if (step.verb == "expect frame") return true;
  for (size_t i = 0; i < step.words.size() && i < form.size(); ++i) {
    const bool isNumber = form[i] == 'n' || form[i] == 'N';
    const bool isWheel = step.verb == "scroll" && i == 2;
    const double value = isNumber ? numberOf(step.words[i]) : 0;
    if (isWheel ? std::abs(value) < 1 || std::abs(value) > mostClicks : value < 0) return false;
  }
  return true;
}

bool isRule(const std::string& id) {
  const auto rules = allRules();
  return std::any_of(rules.begin(), rules.end(), [&](const Rule* rule) { return rule->id == id; });
}

// "NAME" or "NAME compare FILE [PERCENT]".
bool isPicture(const std::vector<std::string>& words) {
  if (words[0].find('/') != std::string::npos) return false;
  if (words.size() == 1) return true;
  return words[1] == "compare" && (words.size() == 3 || (words.size() == 4 && parsed(words[3])));
}

// Of the window; what opens others is left to people.
bool isButton(const std::string& name) {
  const auto names = {"reload", "rotate",   "hide",    "cover",   "mute",     "offline", "dark",
                      "close",  "timeline", "console", "network", "findings", "loads"};
  return std::find(names.begin(), names.end(), name) != names.end();
}

bool valuesFit(const Step& step) {
  const auto& words = step.words;
  if (step.verb == "rotate") return words[0] == "portrait" || words[0] == "landscape";
  if (step.verb == "volume") return numberOf(words[0]) <= 1;
  if (step.verb == "screenshot" || step.verb == "picture") return isPicture(words);
  if (step.verb == "press") return isButton(words[0]);
  if (step.verb == "slow") return words[0] == "3g" || words[0] == "2g";
  if (step.verb == "clock") return durationOf(words[0]).has_value();
  if (step.verb == "expect no") return words[0] == "finding" && isRule(words[1]);
  return true;
}

std::string afterWords(const std::string& line, int count) {
  size_t at = 0;
  for (int i = 0; i < count; ++i) {
    at = line.find_first_not_of(" \t", at);
    at = line.find_first_of(" \t", at);
    if (at == std::string::npos) return {};
  }
  at = line.find_first_not_of(" \t", at);
  return at == std::string::npos ? std::string() : line.substr(at, line.find_last_not_of(" \t\r") + 1 - at);
}

Step read(const std::string& line, int number) {
  Step step{.file = {}, .line = number, .text = line, .verb = {}, .words = {}, .rest = {}};
  std::istringstream in(line);
  in >> step.verb;
  int taken = 1;
  if (step.verb == "wait-for" || step.verb == "expect") {
    std::string about;
    in >> about;
    step.verb += " " + about;
    ++taken;
  }
  for (std::string word; in >> word;) step.words.push_back(word);
  step.rest = afterWords(line, taken);
  return step;
}

// What has no such name stays: scripts have dollar signs and braces, too.
std::string withValues(std::string line, const Variables& variables) {
  for (size_t at = line.find("${"); at != std::string::npos; at = line.find("${", at + 1)) {
    const auto end = line.find('}', at);
    if (end == std::string::npos) break;
    const auto found = variables.find(line.substr(at + 2, end - at - 2));
    if (found == variables.end()) continue;
    line.replace(at, end + 1 - at, found->second);
    at += found->second.size();
    if (at > 0) --at;
  }
  return line;
}

// `where` is the line that wants it.
void readInto(std::vector<Step>& steps, const std::filesystem::path& file, Variables& variables, int depth,
              const std::string& where = {}) {
  std::ifstream in(file);
  if (!in || !std::filesystem::is_regular_file(file))
    throw UsageError(where + file.string() + ": cannot be read");
  int number = 0;
  for (std::string line; std::getline(in, line);) {
    ++number;
    const auto first = line.find_first_not_of(" \t\r");
    if (first == std::string::npos || line[first] == '#') continue;
    Step step = read(withValues(line, variables), number);
    const auto here = file.string() + ":" + std::to_string(number) + ": ";
    if (step.verb == "include" && !step.rest.empty()) {
      if (depth == deepestInclude) throw UsageError(here + "files include each other too deeply");
      readInto(steps, file.parent_path() / step.rest, variables, depth + 1, here);
      continue;
    }
    if (step.verb == "set" && step.words.size() > 1) {
      variables[step.words[0]] = afterWords(step.text, 2);
      continue;
    }
    const auto form = grammar.find(step.verb);
    if (form == grammar.end()) throw UsageError(here + "no such step: " + step.text.substr(first));
    if (!fits(form->second, step) || !numbersFit(step, form->second) || !valuesFit(step))
      throw UsageError(here + "\"" + step.verb +
                       "\" takes other words (see --help-all): " + step.text.substr(first));
    if (step.verb == "screenshot" && step.words.size() > 1)
      step.words[2] = (file.parent_path() / step.words[2]).string();
    if (depth > 0) step.file = file.string();
    steps.push_back(std::move(step));
  }
}

}  // namespace

double numberOf(const std::string& word) {
  return parsed(word).value_or(0);
}

std::optional<std::chrono::milliseconds> durationOf(const std::string& word) {
  static const std::map<std::string, double> units{{"ms", 1}, {"s", 1e3}, {"m", 60e3}, {"h", 3600e3}};
  const auto end = word.find_last_of("0123456789.");
  if (word.empty() || word[0] != '+' || end == std::string::npos) return std::nullopt;
  const auto unit = units.find(word.substr(end + 1));
  const auto value = parsed(word.substr(1, end));
  if (unit == units.end() || !value || *value < 0 || *value * unit->second > longestMove) return std::nullopt;
  return std::chrono::milliseconds(static_cast<int64_t>(*value * unit->second));
}

void refuseStepsOfPages(const std::vector<Step>& steps, const std::string& file) {
  for (const auto& step : steps)
    for (const char* verb :
         {"wait-for state", "wait-for eval", "tap-element", "eval", "clock", "offline", "online", "slow",
          "expect state", "expect placement", "expect eval", "expect command"})
      if (step.verb == verb)
        throw UsageError((step.file.empty() ? file : step.file) + ":" + std::to_string(step.line) + ": \"" +
                         verb + "\" is for pages, and a video ad is none");
}

std::vector<Step> readSteps(const std::string& file, Variables variables) {
  std::vector<Step> steps;
  readInto(steps, file, variables, 0);
  return steps;
}

}  // namespace velto::preview
