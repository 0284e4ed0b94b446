// Reading a call, and --help.
#include "common/CommandLine.h"

#include <algorithm>
#include <iostream>
#include <set>
#include <sstream>

namespace velto::tools {
namespace {

constexpr size_t screenWidth = 80;

// Broken between words so that no line is longer than the screen; later lines begin with blanks.
std::string wrapped(const std::string& text, size_t column, size_t indent) {
  std::string result;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    if (column + 1 + word.size() > screenWidth && column > indent) {
      result += "\n" + std::string(indent, ' ');
      column = indent;
    } else if (!result.empty()) {
      result += ' ';
      ++column;
    }
    result += word;
    column += word.size();
  }
  return result;
}

bool startsWith(const std::string& text, const char* start) {
  return text.rfind(start, 0) == 0;
}

}  // namespace

void CommandLine::command(std::string name, std::string help, Take take) {
  words_.push_back(
      {Word::Kind::Command, std::move(name), "", std::move(help), std::move(take), Value::Text, {}});
}

void CommandLine::arguments(std::string name, std::string help, Take take, Value completes) {
  argument(std::move(name), std::move(help), std::move(take), completes);
  words_.back().repeats = true;
}

void CommandLine::argument(std::string name, std::string help, Take take, Value completes) {
  words_.push_back(
      {Word::Kind::Argument, std::move(name), "", std::move(help), std::move(take), completes, {}});
}

void CommandLine::flag(std::string name, std::string help, std::function<void()> take) {
  words_.push_back({Word::Kind::Flag,
                    std::move(name),
                    "",
                    std::move(help),
                    [take = std::move(take)](const std::string&) { take(); },
                    Value::Text,
                    {}});
}

void CommandLine::option(std::string name, std::string value, std::string help, Take take, Value completes,
                         std::vector<std::string> choices) {
  words_.push_back({Word::Kind::Option, std::move(name), std::move(value), std::move(help), std::move(take),
                    completes, std::move(choices)});
}

std::vector<const Word*> CommandLine::those(Word::Kind kind) const {
  std::vector<const Word*> found;
  for (const Word& word : words_)
    if (word.kind == kind) found.push_back(&word);
  return found;
}

const Word* CommandLine::find(const std::string& name) const {
  const auto found = std::find_if(words_.begin(), words_.end(), [&](const Word& word) {
    return word.kind != Word::Kind::Argument && word.name == name;
  });
  return found == words_.end() ? nullptr : &*found;
}

bool CommandLine::read(const std::vector<std::string>& call, std::vector<std::string>* options) const {
  const auto commands = those(Word::Kind::Command);
  const auto arguments = those(Word::Kind::Argument);
  std::set<Word::Kind> given;
  const auto takeOnce = [&](const Word& word, const std::string& text) {
    if (!given.insert(word.kind).second && !word.repeats)
      throw UsageError("unknown argument \"" + text + "\" (see --help)");
    word.take(text);
  };
  bool onlyArguments = false;  // behind "--"
  for (size_t i = 0; i < call.size(); ++i) {
    const std::string& text = call[i];
    const auto equals = startsWith(text, "--") ? text.find('=') : std::string::npos;
    const std::string name = text.substr(0, equals);
    if (onlyArguments || !startsWith(text, "-") || text == "-") {
      if (const Word* word = onlyArguments ? nullptr : find(text); word && word->kind == Word::Kind::Command)
        takeOnce(*word, text);
      else if (!arguments.empty())
        takeOnce(*arguments.front(), text);
      else
        throw UsageError("unknown argument \"" + text + "\" (see --help)");
      continue;
    }
    if (text == "--") {
      onlyArguments = true;
      continue;
    }
    if (text == "--help" || text == "-h") return std::cout << help(), false;
    if (text == "--help-all" && rest_) return std::cout << help(true), false;
    if (text == "--version") return std::cout << program_ << " " VELTO_VERSION "\n", false;
    if (text == "--print-manual") return std::cout << manual(), false;
    if (name == "--print-completion" && equals != std::string::npos)
      return std::cout << completion(text.substr(equals + 1)), false;
    const Word* word = find(name);
    if (!word) throw UsageError("unknown option \"" + name + "\" (see --help)");
    std::string value;
    if (word->kind == Word::Kind::Option) {
      if (equals != std::string::npos)
        value = text.substr(equals + 1);
      else if (i + 1 < call.size())
        value = call[++i];
      if (value.empty()) throw UsageError(name + ": needs a value (see --help)");
      const auto& choices = word->choices;
      if (!choices.empty() && std::find(choices.begin(), choices.end(), value) == choices.end()) {
        std::string names;
        for (const auto& choice : choices) names += (names.empty() ? "" : ", ") + choice;
        throw UsageError(name + ": \"" + value + "\" is none of " + names);
      }
    } else if (equals != std::string::npos) {
      throw UsageError(name + ": takes no value (see --help)");
    }
    word->take(value);
    if (options) options->push_back(word->kind == Word::Kind::Option ? name + "=" + value : name);
  }
  if (!commands.empty() && !given.count(Word::Kind::Command)) {
    std::string names;
    for (const Word* command : commands) names += (names.empty() ? "" : ", ") + command->name;
    throw UsageError("needs a command: " + names + " (see --help)");
  }
  if (!arguments.empty() && !arguments.front()->repeats && !given.count(Word::Kind::Argument))
    throw UsageError("needs " + arguments.front()->name + " (see --help)");
  return true;
}

std::vector<Word> CommandLine::all() const {
  std::vector<Word> words = words_;
  for (size_t i = rest_.value_or(words.size()); i < words.size(); ++i) words[i].isRare = true;
  words.push_back({Word::Kind::Flag, "--help", "", "prints this text, and ends", {}, Value::Text, {}});
  if (rest_)
    words.push_back(
        {Word::Kind::Flag, "--help-all", "", "prints all options, and ends", {}, Value::Text, {}});
  words.push_back({Word::Kind::Flag, "--version", "", "prints the version, and ends", {}, Value::Text, {}});
  return words;
}

std::string CommandLine::synopsis() const {
  std::string text = program_;
  if (!those(Word::Kind::Flag).empty() || !those(Word::Kind::Option).empty()) text += " [OPTION]...";
  if (!those(Word::Kind::Command).empty()) text += " COMMAND";
  for (const Word* argument : those(Word::Kind::Argument))
    text += argument->repeats ? " [" + argument->name + "]..." : " " + argument->name;
  return text;
}

std::string CommandLine::help(bool withRest) const {
  auto words = all();
  if (!withRest) std::erase_if(words, [](const Word& word) { return word.isRare; });
  const auto left = [](const Word& word) { return word.name + (word.value.empty() ? "" : " " + word.value); };
  size_t width = 0;
  for (const Word& word : words) width = std::max(width, left(word).size());
  std::string text = "Usage: " + synopsis() + "\n" + wrapped(program_ + " " + summary_ + ".", 0, 0) + "\n\n";
  for (size_t i = 0; i < words.size(); ++i) {
    const Word& word = words[i];
    if (i && words[i - 1].kind == Word::Kind::Command && word.kind != Word::Kind::Command) text += "\n";
    const std::string start = "  " + left(word) + std::string(width - left(word).size() + 2, ' ');
    text += start + wrapped(word.help, start.size(), start.size()) + "\n";
  }
  for (const auto& note : notes_) text += "\n" + wrapped(note, 0, 0) + "\n";
  return text + "\n" + wrapped("Exit codes: " + exitCodes_ + ".", 0, 0) + "\n";
}

int runTool(const std::string& program, int count, char** words,
            const std::function<int(const std::vector<std::string>&)>& work) {
  try {
    const int code = work({words + std::min(count, 1), words + count});
    if (!std::cout.flush()) throw std::runtime_error("the output cannot be written");
    return code;
  } catch (const std::exception& error) {
    std::cerr << program << ": " << error.what() << '\n';
    return 2;
  }
}

}  // namespace velto::tools
