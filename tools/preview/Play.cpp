// Server, library, screen, steps.
#include "preview/Play.h"

#include <velto/gtk/VeltoGtk.h>
#include <velto/platform/Platform.h>
#include <velto/platform/ViewSystem.h>
#include <velto/vast/VASTMacros.h>

#include <algorithm>
#include <string>
#include <utility>

#include "preview/ClockScript.h"
#include "preview/Player.h"
#include "preview/RecordedAnswer.h"
#include "preview/Recorder.h"
#include "preview/Report.h"
#include "preview/Window.h"
#include "preview/vast/Watch.h"
#include "sandbox/Server.h"

namespace velto::preview {
namespace {

// What a page does right after it has loaded is told, too.
constexpr std::chrono::milliseconds afterLoad{500};
constexpr std::chrono::seconds longestFileLook{10};  // into a video ad's file

}  // namespace

Play::Play(const Arguments& arguments, const std::vector<Step>& steps, const Surroundings& surroundings)
    : arguments_(arguments), steps_(steps), surroundings_(surroundings) {
  if (arguments.isVideoAd)
    document_ = fetch(arguments.creative);
  else
    creative_ = std::make_unique<Creative>(arguments.creative);
}

Play::~Play() = default;

Play::Document Play::fetch(const std::string& source) const {
  const auto begun = g_get_monotonic_time();
  auto text = readSource(VASTMacros().expanded(source), arguments_.caFile);
  return {source, std::move(text), static_cast<double>((g_get_monotonic_time() - begun) / 100) / 10};
}

int Play::run() {
  if (!gtk_init_check()) throw UsageError("the display cannot be opened");
  if (creative_) serve();
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

void Play::install() {
  if (!creative_) {
    platform_ = &ListeningPlatform::install({.applicationIdentifier = "org.example.velto.preview",
                                             .dataFolder = surroundings_.folder() / "store",
                                             .caFile = arguments_.caFile,
                                             .leastTimeUnderTouch = {},
                                             .mayReachLocalNetwork = true});
    return;
  }
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

// Where what is beside it is served.
std::string Play::change(Screen& screen, const std::string& creative) {
  if (!creative_) {
    document_ = fetch(creative);
    screen.setDocument(document_.text);
    return {};
  }
  auto read = std::make_unique<Creative>(creative);
  offer(*read);
  creative_.swap(read);
  // The engine holds connections to the old one's folder for a second, which nobody is to wait for.
  leaving_ = std::async(std::launch::async, [old = std::move(read)]() mutable { old.reset(); });
  return creative_->base();
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
  std::unique_ptr<VideoAdWatch> videoAd;
  if (platform_) videoAd = std::make_unique<VideoAdWatch>(journal, *platform_);
  if (videoAd && (isWatched || arguments_.examines()))
    videoAd->lookIntoFiles(arguments_.hasTimeout ? arguments_.timeout : longestFileLook);
  Screen screen(arguments_, journal, isWatched);
  screen.setDocument(document_.text);
  if (videoAd)
    screen.willLoad = [&] { videoAd->begin(document_.source, document_.text, document_.duration); };
  const auto base = creative_ ? creative_->base() : std::string();
  std::unique_ptr<Window> window;
  if (isWatched)
    window = std::make_unique<Window>(screen, journal, arguments_.creative, base,
                                      [&](const std::string& creative) { return change(screen, creative); });
  if (isWatched || arguments_.examines()) journal.prepares = Probe::prepare;
  std::unique_ptr<Report> report;
  if (arguments_.examines()) {
    report = std::make_unique<Report>(arguments_, base, screen, journal);
    report->videoAd = videoAd.get();
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
  if (videoAd) {
    if (steps_.empty() && fine) awaitEnd(screen);
    videoAd->finish();
  } else if (steps_.empty()) {
    runFor(afterLoad);
  }
  return fine ? 0 : 1;
}

}  // namespace velto::preview
