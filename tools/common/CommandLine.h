// What a program is called with, in one table: from it come the reading of a call, --help, --version, the manual page and
// the completions of shells, so that they say the same. Not for more than one thread.
#pragma once

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace velto::tools {

// Something given is wrong: one line, exit code 2.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A word that the program takes.
struct Word {
  enum class Kind { Command, Flag, Option, Argument };
  enum class Value { Text, File, Folder };  // what completes it

  Kind kind;
  std::string name;   // "list", "--port", "CREATIVE"
  std::string value;  // of an option: "N", "FILE"
  std::string help;   // without a full stop
  std::function<void(const std::string&)> take;
  Value completes;
  std::vector<std::string> choices;  // the only values of an option, where there are few
  bool repeats = false;              // of an argument: any number of them, none as well
  bool isRare = false;               // left to --help-all
};

class CommandLine {
 public:
  // The summary is what the program does, in the third person and without a full stop.
  CommandLine(std::string program, std::string summary)
      : program_(std::move(program)), summary_(std::move(summary)) {}

  using Take = std::function<void(const std::string&)>;
  using Value = Word::Value;
  void command(std::string name, std::string help, Take take);
  void argument(std::string name, std::string help, Take take, Value completes = Value::Text);
  void arguments(std::string name, std::string help, Take take, Value completes = Value::Text);
  void flag(std::string name, std::string help, std::function<void()> take);
  void option(std::string name, std::string value, std::string help, Take take, Value completes = Value::Text,
              std::vector<std::string> choices = {});
  // What comes behind this is left out by --help, which is one screen, and told by --help-all and the manual.
  void rest() { rest_ = words_.size(); }
  // A paragraph of --help behind the options.
  void note(std::string text) { notes_.push_back(std::move(text)); }
  // More for the manual page. Lines that begin with a blank stay as they are.
  void section(std::string title, std::string text) {
    sections_.emplace_back(std::move(title), std::move(text));
  }
  void exitCodes(std::string text) { exitCodes_ = std::move(text); }

  // Hands each word of the call to its place in the table, in the order of the call. A command and an argument are
  // needed, once, but of arguments() there may be any number; an option given twice is taken twice. False when the call
  // asked for a text of this table, which is on standard output then. The flags and options that were given are added to
  // `options`, a word each, for a call of this program with the same ones. Throws UsageError.
  bool read(const std::vector<std::string>& call, std::vector<std::string>* options = nullptr) const;

  std::string help(bool all = false) const;
  std::string manual() const;                              // roff, for man
  std::string completion(const std::string& shell) const;  // bash, zsh or fish; UsageError for others

 private:
  std::string synopsis() const;
  std::vector<Word> all() const;  // with --help and --version
  std::vector<const Word*> those(Word::Kind kind) const;
  const Word* find(const std::string& name) const;

  std::string program_;
  std::string summary_;
  std::vector<Word> words_;
  std::optional<size_t> rest_;
  std::vector<std::string> notes_;
  std::vector<std::pair<std::string, std::string>> sections_;
  std::string exitCodes_ = "0, or 2 when something given is wrong";
};

// The program's work, given the words of the call, with one line on standard error and exit code 2 for whatever it throws
// or cannot write.
int runTool(const std::string& program, int count, char** words,
            const std::function<int(const std::vector<std::string>&)>& work);

}  // namespace velto::tools
