// velto-adid: how a person decides whether applications may tell them apart for advertisers.
#include "velto/gtk/store/AdvertisingFile.h"

#include <exception>
#include <iostream>
#include <string>

namespace {

using velto::gtk::AdvertisingFile;

constexpr char kHelp[] =
    R"(usage: velto-adid show|allow|deny|reset

Whether advertisers may recognise you by an identifier. It holds for all applications
with Velto that you run, from their next request on. Until you allow it there is none.

commands:
  show    what you decided, and the identifier
  allow   yes: makes an identifier, or keeps the one that there is
  deny    no: forgets the identifier
  reset   a new identifier in place of the old one, if you allowed one
  --help  this text
)";

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

}  // namespace

int main(int count, char** words) {
  try {
    const std::string command = count == 2 ? words[1] : "";
    const AdvertisingFile file;
    if (command == "--help" || command == "-h") {
      std::cout << kHelp;
    } else if (command == "show") {
      show(file.read());
    } else if (command == "allow") {
      show(file.allow());
    } else if (command == "deny") {
      show(file.deny());
    } else if (command == "reset") {
      const auto state = file.reset();
      show(state);
      if (!state.identifier) {
        std::cerr << "velto-adid: no identifier is allowed, so there is none to reset\n";
        return 1;
      }
    } else {
      std::cerr << "velto-adid: needs one command: show, allow, deny or reset (see --help)\n";
      return 2;
    }
    return std::cout.flush() ? 0 : 2;
  } catch (const std::exception& error) {
    std::cerr << "velto-adid: " << error.what() << '\n';
    return 2;
  }
}
