// Reading steps, and judging them before anything is played.
#include "preview/Steps.h"

#include <charconv>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>

#include "preview/Arguments.h"

namespace velto::preview {
namespace {

// What may follow a verb: w a word, n a number, N a number that may be left out, r the rest of the line.
const std::map<std::string, std::string> grammar{{"wait", "n"},
                                                 {"wait-for state", "wN"},
                                                 {"wait-for event", "wN"},
                                                 {"tap", "nn"},
                                                 {"tap-element", "r"},
                                                 {"eval", "r"},
                                                 {"rotate", "w"},
                                                 {"hide", ""},
                                                 {"show", ""},
                                                 {"volume", "n"},
                                                 {"close", ""},
                                                 {"screenshot", "w"},
                                                 {"expect state", "w"},
                                                 {"expect placement", "w"},
                                                 {"expect frame", "nnnn"},
                                                 {"expect count", "wn"},
                                                 {"expect eval", "r"}};

std::optional<double> parsed(const std::string& word) {
  double value = 0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
  if (error != std::errc{} || end != word.data() + word.size()) return std::nullopt;
  return value;
}

bool fits(const std::string& form, const Step& step) {
  if (form == "r") return !step.rest.empty();
  size_t least = form.size();
  if (!form.empty() && form.back() == 'N') --least;
  if (step.words.size() < least || step.words.size() > form.size()) return false;
  for (size_t i = 0; i < step.words.size(); ++i)
    if (form[i] != 'w' && !parsed(step.words[i])) return false;
  return true;
}

bool valuesFit(const Step& step) {
  if (step.verb == "rotate") return step.words[0] == "portrait" || step.words[0] == "landscape";
  if (step.verb == "volume") return numberOf(step.words[0]) >= 0 && numberOf(step.words[0]) <= 1;
  if (step.verb == "screenshot") return step.words[0].find('/') == std::string::npos;
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
  Step step{.line = number, .text = line, .verb = {}, .words = {}, .rest = {}};
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

}  // namespace

double numberOf(const std::string& word) {
  return parsed(word).value_or(0);
}

std::vector<Step> readSteps(const std::string& file) {
  std::ifstream in(file);
  if (!in) throw UsageError(file + ": cannot be read");
  std::vector<Step> steps;
  int number = 0;
  for (std::string line; std::getline(in, line);) {
    ++number;
    const auto first = line.find_first_not_of(" \t\r");
    if (first == std::string::npos || line[first] == '#') continue;
    const Step step = read(line, number);
    const auto form = grammar.find(step.verb);
    if (form == grammar.end() || !fits(form->second, step) || !valuesFit(step))
      throw UsageError(file + ":" + std::to_string(number) + ": no such step: " + line.substr(first));
    steps.push_back(step);
  }
  return steps;
}

}  // namespace velto::preview
