// velto-adid: how a person decides whether applications may tell them apart for advertisers.
#include "velto/gtk/store/AdvertisingFile.h"

#include <iostream>
#include <string>
#include <vector>

#include "common/CommandLine.h"

namespace {

using velto::gtk::AdvertisingFile;

velto::tools::CommandLine commandLine(std::string& command) {
  velto::tools::CommandLine line("velto-adid",
                                 "decides whether advertisers may recognise you by an identifier");
  const auto take = [&command](const std::string& name) { command = name; };
  line.command("show", "what you decided, and the identifier", take);
  line.command("allow", "yes: makes an identifier, or keeps the one that there is", take);
  line.command("deny", "no: forgets the identifier", take);
  line.command("reset", "a new identifier in place of the old one, if you allowed one", take);
  line.note(
      "It holds for all applications with Velto that you run, from their next request on. Until you allow it "
      "there is none.");
  line.exitCodes("0; 1 when there is no identifier to reset; 2 when something given is wrong");
  return line;
}

void show(const AdvertisingFile::State& state) {
  switch (state.decision) {
    case AdvertisingFile::Decision::Allowed:
      std::cout << "allowed " << *state.identifier << '\n';
      break;
    case AdvertisingFile::Decision::Denied:
      std::cout << "denied\n";
      break;
    default:
      std::cout << "undecided\n";
  }
}

int run(const std::vector<std::string>& words) {
  std::string command;
  if (!commandLine(command).read(words)) return 0;
  const AdvertisingFile file;
  if (command == "reset") {
    const auto state = file.reset();
    show(state);
    if (state.identifier) return 0;
    std::cerr << "velto-adid: no identifier is allowed, so there is none to reset\n";
    return 1;
  }
  show(command == "show" ? file.read() : command == "allow" ? file.allow() : file.deny());
  return 0;
}

}  // namespace

int main(int count, char** words) {
  return velto::tools::runTool("velto-adid", count, words, run);
}
