// Server, library, screen, steps.
#include "preview/Play.h"

#include <velto/gtk/VeltoGtk.h>
#include <velto/platform/Platform.h>
#include <velto/platform/ViewSystem.h>

#include <algorithm>
#include <string>
#include <utility>

#include "preview/ClockScript.h"
#include "preview/Player.h"
#include "preview/RecordedAnswer.h"
#include "preview/Recorder.h"
#include "preview/Report.h"
#include "preview/Window.h"
#include "sandbox/Server.h"

namespace velto::preview {
namespace {

// What a page does right after it has loaded is told, too.
constexpr std::chrono::milliseconds afterLoad{500};

}  // namespace

Play::Play(const Arguments& arguments, const std::vector<Step>& steps, const Surroundings& surroundings)
    : arguments_(arguments),
      steps_(steps),
      surroundings_(surroundings),
      creative_(std::make_unique<Creative>(arguments.creative)) {}

Play::~Play() = default;

int Play::run() {
  if (!gtk_init_check()) throw UsageError("the display cannot be opened");
  serve();
  install();
  const int code = watch();
  gtk::uninstall();
  return code;
}

void Play::serve() {
  sandbox::Options options;
  options.dataFolder = (surroundings_.folder() / "server").string();
  server_ = std::make_unique<sandbox::Server>(options);
  server_->start();
  offer(*creative_);
}

void Play::offer(const Creative& creative) {
  const int width = arguments_.interstitial ? 0 : static_cast<int>(arguments_.size.width);
  const int height = arguments_.interstitial ? 0 : static_cast<int>(arguments_.size.height);
  sandbox::Rule rule;
  rule.name = "creative";
  rule.when.kind = sandbox::Kind::Ad;
  if (arguments_.isAnswer)
    rule.answers = readAnswers(creative.source());
  else
    rule.answers = {sandbox::Answer::markup(creative.markup(), width, height)};
  server_->addRule(std::move(rule));
}

void Play::install() const {
  const std::string address = "127.0.0.1:" + std::to_string(server_->port());
  gtk::install({.applicationIdentifier = "org.example.velto.preview",
                .dataFolder = surroundings_.folder() / "store",
                .caFile = server_->caFile(),
                .hostMap = {{server_->names().adServer, address}, {server_->names().tracking, address}},
                .leastTimeUnderTouch = {},     // a script's hand is as quick as it is told to be
                .mayReachLocalNetwork = true,  // as the creative's own folder is served from here
                .mayAddCalendarEvents = true,
                .mayStorePictures = true});
  const auto failure = Platform::current().views().webContentFailure();
  if (!failure) return;
  gtk::uninstall();
  const auto& words = wordsOf(VeltoAdEndReason::EngineUnavailable);
  throw UsageError(std::string(words.sentence) + " (" + failure->localizedDescription + ") " +
                   std::string(words.advice) + " Who trusts the ad may leave the sandbox out: --no-sandbox.");
}

int Play::watch() {
  Journal journal;
  VeltoFramework::addVeltoKey("preview");
  // Beside a window that real events are meant for stands nothing that could cover it.
  const bool isPressed = std::any_of(steps_.begin(), steps_.end(), [](const Step& step) {
    return step.verb == "press" || step.verb == "picture";
  });
  const bool isWatched =
      isPressed || (!surroundings_.hasOwnDisplay() && steps_.empty() && !arguments_.examines());
  Screen screen(arguments_, journal, isWatched);
  std::unique_ptr<Window> window;
  if (isWatched)
    window = std::make_unique<Window>(
        screen, journal, arguments_.creative, creative_->base(), [this](const std::string& creative) {
          auto read = std::make_unique<Creative>(creative);
          offer(*read);
          creative_.swap(read);
          // The engine holds connections to the old one's folder for a second, which nobody is to wait for.
          leaving_ = std::async(std::launch::async, [old = std::move(read)]() mutable { old.reset(); });
          return creative_->base();
        });
  if (isWatched || arguments_.examines()) journal.prepares = Probe::prepare;
  std::unique_ptr<Report> report;
  if (arguments_.examines()) {
    report = std::make_unique<Report>(arguments_, creative_->base(), screen, journal);
  }
  if (std::any_of(steps_.begin(), steps_.end(), [](const Step& step) { return step.verb == "clock"; }))
    journal.ears().putFirst(clockScript);
  std::unique_ptr<Recorder> recorder;
  if (!arguments_.recordFile.empty()) recorder = std::make_unique<Recorder>(screen, arguments_.recordFile);
  screen.load();
  Player player(screen, journal, arguments_);
  if (report) player.hasFinding = [&](const std::string& id) { return report->hasFinding(id); };
  player.window = window.get();
  const bool fine = player.awaitLoad() && player.play(steps_);
  while (window && !isPressed && window->isOpen() && screen.isOpen()) g_main_context_iteration(nullptr, TRUE);
  if (report) {
    if (steps_.empty() && fine) report->show(player);
    return report->finish(fine);
  }
  if (steps_.empty()) runFor(afterLoad);
  return fine ? 0 : 1;
}

}  // namespace velto::preview
