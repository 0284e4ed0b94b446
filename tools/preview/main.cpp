// velto-preview: plays one creative through the library's whole road, from a server in this process to the
// web view.
#include <velto/gtk/VeltoGtk.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "common/Supervise.h"
#include "preview/Arguments.h"
#include "preview/Creative.h"
#include "preview/InspectorWindow.h"
#include "preview/Player.h"
#include "preview/Surroundings.h"
#include "sandbox/Server.h"

namespace velto::preview {
namespace {

std::unique_ptr<sandbox::Server> serve(const Creative& creative, const Arguments& arguments,
                                       const Surroundings& surroundings) {
  sandbox::Options options;
  options.dataFolder = (surroundings.folder() / "server").string();
  auto server = std::make_unique<sandbox::Server>(options);
  const int width = arguments.interstitial ? 0 : static_cast<int>(arguments.size.width);
  const int height = arguments.interstitial ? 0 : static_cast<int>(arguments.size.height);
  sandbox::Rule rule;
  rule.name = "creative";
  rule.when.kind = sandbox::Kind::Ad;
  rule.answers = {sandbox::Answer::markup(creative.markup(), width, height)};
  server->addRule(std::move(rule));
  server->start();
  return server;
}

int run(const Arguments& arguments) {
  const auto steps = arguments.stepsFile.empty() ? std::vector<Step>() : readSteps(arguments.stepsFile);
  const bool taps = std::any_of(steps.begin(), steps.end(), [](const Step& step) {
    return step.verb == "tap" || step.verb == "tap-element";
  });
  const Surroundings surroundings(arguments.out, taps);
  tools::supervise([&surroundings] { surroundings.remove(); });
  const Creative creative(arguments.creative);
  if (!gtk_init_check()) throw UsageError("the display cannot be opened");
  const auto server = serve(creative, arguments, surroundings);
  const std::string address = "127.0.0.1:" + std::to_string(server->port());
  gtk::install({.applicationIdentifier = "org.example.velto.preview",
                .dataFolder = surroundings.folder() / "store",
                .caFile = server->caFile(),
                .hostMap = {{server->names().adServer, address}, {server->names().tracking, address}},
                .mayAddCalendarEvents = true,
                .mayStorePictures = true});
  bool fine = false;
  {
    Journal journal;
    VeltoFramework::addVeltoKey("preview");
    Screen screen(arguments, journal);
    std::unique_ptr<InspectorWindow> inspector;
    // Beside a window that real events are meant for stands nothing that could cover it.
    if (!surroundings.hasOwnDisplay() && steps.empty())
      inspector = std::make_unique<InspectorWindow>(screen, journal);
    screen.load();
    Player player(screen, journal, arguments);
    fine = player.awaitLoad() && player.play(steps);
    while (inspector && screen.isOpen()) g_main_context_iteration(nullptr, TRUE);
    if (steps.empty()) runFor(std::chrono::milliseconds(500));  // what a page does right after it has loaded
  }
  gtk::uninstall();
  return fine ? 0 : 1;
}

}  // namespace
}  // namespace velto::preview

int main(int count, char** words) {
  return velto::tools::runTool("velto-preview", count, words, [](const std::vector<std::string>& call) {
    const auto arguments = velto::preview::parseArguments(call);
    return arguments ? velto::preview::run(*arguments) : 0;
  });
}
