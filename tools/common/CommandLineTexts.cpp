// The manual page (roff, as groff_man(7) has it) and the completions of bash, zsh and fish.
#include <algorithm>
#include <sstream>

#include "common/CommandLine.h"

namespace velto::tools {
namespace {

std::string replaced(std::string text, const std::string& what, const std::string& by) {
  for (size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size())
    text.replace(at, what.size(), by);
  return text;
}

std::string roff(const std::string& text) {
  const std::string plain = replaced(replaced(text, "\\", "\\e"), "-", "\\-");
  return !plain.empty() && (plain[0] == '.' || plain[0] == '\'') ? "\\&" + plain : plain;
}

// Paragraphs; lines that begin with a blank as they are.
std::string roffSection(const std::string& text) {
  std::string result;
  bool isKept = false;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    const bool keep = !line.empty() && line[0] == ' ';
    if (keep != isKept && !line.empty()) {
      result += keep ? ".PP\n.nf\n" : ".fi\n.PP\n";
      isKept = keep;
    }
    result += line.empty() ? (isKept ? "\n" : ".PP\n") : roff(line) + "\n";
  }
  return result + (isKept ? ".fi\n" : "");
}

std::string joined(const std::vector<std::string>& words, const char* between = " ") {
  std::string text;
  for (const auto& word : words) text += (text.empty() ? "" : between) + word;
  return text;
}

// For a text between single quotes, of whatever shell.
std::string quoted(const std::string& text) {
  return replaced(text, "'", "\u2019");
}

}  // namespace

std::string CommandLine::manual() const {
  std::string text = ".TH " + program_ + " 1 \"\" \"Velto " VELTO_VERSION "\" \"User Commands\"\n.SH NAME\n" +
                     roff(program_) + " \\- " + roff(summary_) + "\n.SH SYNOPSIS\n.B " + roff(synopsis()) +
                     "\n.SH DESCRIPTION\n" + roff(program_ + " " + summary_ + ".") + "\n";
  for (const auto& note : notes_) text += ".PP\n" + roff(note) + "\n";
  const auto list = [&, words = all()](const char* title, std::vector<Word::Kind> kinds) {
    std::string entries;
    for (const Word& word : words)
      if (std::find(kinds.begin(), kinds.end(), word.kind) != kinds.end())
        entries += ".TP\n\\fB" + roff(word.name) + "\\fR" +
                   (word.value.empty() ? "" : " \\fI" + roff(word.value) + "\\fR") + "\n" + roff(word.help) +
                   ".\n";
    if (!entries.empty()) text += std::string(".SH ") + title + "\n" + entries;
  };
  list("COMMANDS", {Word::Kind::Command});
  list("ARGUMENTS", {Word::Kind::Argument});
  list("OPTIONS", {Word::Kind::Option, Word::Kind::Flag});
  for (const auto& [title, body] : sections_) text += ".SH \"" + title + "\"\n" + roffSection(body);
  return text + ".SH EXIT STATUS\n" + roff(exitCodes_) + ".\n";
}

std::string CommandLine::completion(const std::string& shell) const {
  const auto words = all();
  std::vector<std::string> starts, commands;
  bool takesFile = false;
  for (const Word& word : words) {
    if (word.kind == Word::Kind::Argument)
      takesFile = word.completes == Word::Value::File;
    else
      starts.push_back(word.name);
    if (word.kind == Word::Kind::Command) commands.push_back(word.name);
  }
  std::string text;
  if (shell == "bash") {
    const std::string function = "_" + replaced(program_, "-", "_");
    text = "# bash completion of " + program_ + "\n" + function +
           "() {\n  local word=${COMP_WORDS[COMP_CWORD]}\n  case ${COMP_WORDS[COMP_CWORD-1]} in\n";
    const auto fill = [](const std::string& source) {
      return "mapfile -t COMPREPLY < <(compgen " + source + " -- \"$word\")";
    };
    for (const Word& word : words) {
      if (word.kind != Word::Kind::Option) continue;
      text += "    " + word.name + ") ";
      if (!word.choices.empty())
        text += fill("-W '" + joined(word.choices) + "'") + "; return ;;\n";
      else if (word.completes == Word::Value::Text)
        text += "return ;;\n";
      else
        text += "compopt -o filenames; " + fill(word.completes == Word::Value::File ? "-f" : "-d") +
                "; return ;;\n";
    }
    text += "  esac\n  if [[ $word == -* ]] || " + std::string(takesFile ? "false" : "true") +
            "; then\n    " + fill("-W '" + joined(starts) + "'") + "\n  else\n    compopt -o filenames; " +
            fill("-f") + "\n  fi\n}\ncomplete -F " + function + " " + program_ + "\n";
    return text;
  }
  if (shell == "zsh") {
    text = "#compdef " + program_ + "\n_arguments";
    for (const Word& word : words) {
      const std::string help = replaced(replaced(quoted(word.help), "[", "("), "]", ")");
      const std::string action = !word.choices.empty()                   ? "(" + joined(word.choices) + ")"
                                 : word.completes == Word::Value::File   ? "_files"
                                 : word.completes == Word::Value::Folder ? "_files -/"
                                                                         : " ";
      if (word.kind == Word::Kind::Option)
        text += " \\\n  '*" + word.name + "[" + help + "]:" + word.value + ":" + action + "'";
      else if (word.kind == Word::Kind::Flag)
        text += " \\\n  '" + word.name + "[" + help + "]'";
      else if (word.kind == Word::Kind::Argument)
        text += std::string(" \\\n  '") + (word.repeats ? "*" : "1") + ":" + word.name + ":" + action + "'";
    }
    if (!commands.empty()) text += " \\\n  '1:command:(" + joined(commands) + ")'";
    return text + "\n";
  }
  if (shell == "fish") {
    if (!takesFile) text = "complete -c " + program_ + " -f\n";
    for (const Word& word : words) {
      if (word.kind == Word::Kind::Argument) continue;
      text += "complete -c " + program_;
      if (word.kind == Word::Kind::Command)
        text += " -n __fish_use_subcommand -a " + word.name;
      else
        text += " -l " + word.name.substr(2);
      if (word.kind == Word::Kind::Option)
        text += !word.choices.empty()                   ? " -x -a '" + joined(word.choices) + "'"
                : word.completes == Word::Value::File   ? " -r -F"
                : word.completes == Word::Value::Folder ? " -x -a '(__fish_complete_directories)'"
                                                        : " -x";
      text += " -d '" + quoted(word.help) + "'\n";
    }
    return text;
  }
  throw UsageError("--print-completion: \"" + shell + "\" is none of bash, zsh, fish");
}

}  // namespace velto::tools
