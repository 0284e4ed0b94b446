// Starting it.
#include "Sandbox.h"

#include "velto/gtk/VeltoGtk.h"

#include <cstdlib>
#include <stdexcept>

namespace velto::soak {

Sandbox::Sandbox(const std::string& program, const std::string& served) {
  const auto builtIn = test::run({program, "--print-scenario"});
  if (builtIn.code != 0) throw std::runtime_error(program + " does not run");
  // It goes when this process does, also while it is held up.
  std::vector<std::string> words{"setpriv", "--pdeathsig",          "KILL",  program,
                                 "--data",  folder_.path("server"), "--log", "/dev/null"};
  const std::string scenarios = SOAK_SCENARIOS;  // the examples' folder
  for (const std::string& file :
       {std::string(SOAK_RULES), scenarios + "/heavy.json", scenarios + "/waterfalls.json",
        folder_.write("default.json", builtIn.output), scenarios + "/bad-network.json"}) {
    words.emplace_back("--scenario");
    words.push_back(file);
  }
  if (!served.empty()) words.insert(words.end(), {"--serve", served});
  process_ = std::make_unique<test::Process>(words);
  const auto line = process_->line();
  const auto at = line ? line->find("\"port\":") : std::string::npos;
  if (at == std::string::npos) throw std::runtime_error(program + " does not listen");
  address_ = "127.0.0.1:" + std::to_string(std::atoi(line->c_str() + at + 7));
}

void Sandbox::install() const {
  gtk::install({.applicationIdentifier = "org.example.soak",
                .dataFolder = store(),
                .caFile = folder_.path("server/ca.pem"),
                .hostMap = {{"ads.velto.example", address_},
                            {"track.velto.example", address_},
                            {"*.publishers.velto.example", address_}},
                .requestTimeout = std::chrono::seconds(10),
                .opensOnlyAfterTouch = true});
}

}  // namespace velto::soak
