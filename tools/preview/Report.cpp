// Listening, looking, writing files.
#include "preview/Report.h"

#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <utility>

#include "preview/Hand.h"
#include "preview/Look.h"
#include "preview/ReportFiles.h"
#include "preview/vast/Watch.h"

namespace velto::preview {
namespace {

using namespace std::chrono_literals;

constexpr auto longestLook = 8s;   // of the ten seconds; the rest is for a touch and what comes of it
constexpr auto longestTouch = 3s;  // until a busy machine has brought it to the page
constexpr auto afterTouch = 500ms;
constexpr auto afterExpand = 1s;
constexpr auto longestFilm = 90s;
constexpr auto untilPainted = 300ms;

std::string bytesOf(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

// A file may have any bytes for a name.
std::string readable(const std::string& name) {
  char* made = g_utf8_make_valid(name.c_str(), static_cast<gssize>(name.size()));
  std::string text(made);
  g_free(made);
  return text;
}

void write(const std::filesystem::path& file, const std::string& text) {
  std::ofstream out(file, std::ios::binary);
  out << text;
  out.close();
  if (!out) throw UsageError(file.string() + ": cannot be written");
}

std::string written(JSON::Object object) {
  return writeJSON(JSON(std::move(object)), true).value_or("{}") + "\n";
}

}  // namespace

Report::Report(const Arguments& arguments, const std::string& base, Screen& screen, Journal& journal)
    : arguments_(arguments),
      screen_(screen),
      journal_(journal),
      network_(journal),
      probe_(screen, journal, network_),
      startedAt_(static_cast<double>(g_get_real_time()) / 1e6 - journal.milliseconds() / 1e3) {
  tolerance_.allowed = arguments.allowed;
  tolerance_.failsFrom = severityNamed(arguments.failOn);
  if (!arguments.baseline.empty()) tolerance_.known = Baseline(arguments.baseline).of(arguments.creative);
  if (!arguments.report.empty()) {
    std::error_code fault;
    std::filesystem::create_directories(pictureFolder(), fault);
    if (fault) throw UsageError(pictureFolder() + ": cannot be made");
  }
  journal.observe([this, lives = std::weak_ptr(lives_)](const Entry& entry) {
    if (!lives.expired()) heard(entry);  // the journal outlives this
  });
  journal.add("creative", {{"source", readable(arguments.creative)}, {"base", base}});
}

std::string Report::pictureFolder() const {
  return (std::filesystem::path(arguments_.report) / "pictures").string();
}

void Report::heard(const Entry& entry) {
  if (isOver_) return;
  story_.add(entry);
  const auto event = textIn(entry, "event");
  if (event == "state") stateSince_ = journal_.milliseconds();
  if (event == "measurement" && numberIn(objectIn(objectIn(entry, "data"), "adView"), "percentageInView") > 0)
    wasInView_ = true;
  if (event == "screenshot") {
    const auto file = textIn(entry, "file");
    lastPicture_ = bytesOf(file);
    paint(file);
  }
  if (event != "step") return;
  // A step is told before it is played: that is what the one before has left.
  if (!lastStep_.empty() && !lastStep_.starts_with("expect") && !lastStep_.starts_with("screenshot"))
    photograph("step-" + std::to_string(pictures_ + 1));
  lastStep_ = textIn(entry, "text");
}

// Until then the close button may be still to be drawn.
bool Report::hasSettled() const {
  return journal_.milliseconds() - stateSince_ >= static_cast<double>(afterExpand.count()) * 1000;
}

// What looks as the picture before is none of its own, unless that came too early to be judged.
void Report::photograph(const std::string& name) {
  if (arguments_.report.empty() || !screen_.isOpen()) return;
  const auto file = pictureFolder() + "/" + name + ".png";
  if (!screen_.photograph(file)) return;
  if (wasJudged_ && bytesOf(file) == lastPicture_) {
    std::filesystem::remove(file);
    return;
  }
  ++pictures_;
  JSON::Object details{{"file", file}};
  if (name != "end") details["after"] = lastStep_;
  journal_.add("screenshot", std::move(details));
}

void Report::paint(const std::string& file) {
  const auto frame = screen_.frame();
  if (!frame || !screen_.isOpen()) return;
  const bool isExpanded = journal_.state() == "expanded";
  wasJudged_ = !isExpanded || hasSettled();
  const auto look = lookAt(file, *frame, gtk_widget_get_width(screen_.content()));
  if (!look) return;
  JSON::Object details{{"file", file}, {"colours", look->colours}};
  if ((isExpanded && wasJudged_) || (arguments_.interstitial && journal_.count("DidAppear") > 0))
    details["closeContrast"] = look->closeContrast;
  journal_.add("paint", std::move(details));
}

// A banner whose page has failed is removed.
bool Report::hasGone() const {
  return !screen_.isOpen() || (!arguments_.interstitial && !screen_.frame());
}

void awaitEnd(Screen& screen) {
  runUntil(longestFilm, [&] { return screen.hasEnded() || !screen.isOpen(); });
}

// With a picture of its beginning, of its midst, and of each film of a pod that follows.
void Report::showVideoAd() {
  const auto end =
      journal_.milliseconds() + static_cast<double>(std::chrono::milliseconds(longestFilm).count());
  const auto isOver = [&] {
    return screen_.hasEnded() || !screen_.isOpen() || journal_.milliseconds() > end;
  };
  int films = 0, halves = 0;
  while (!isOver()) {
    const auto isNews = [&] {
      return journal_.count("DidStart") > films || journal_.count("callback/midpoint") > halves;
    };
    runUntil(longestFilm, [&] { return isOver() || isNews(); });
    if (isOver() || !isNews()) break;
    runFor(untilPainted);
    const bool isFilm = std::exchange(films, journal_.count("DidStart")) != films;
    halves = journal_.count("callback/midpoint");
    if (!isOver()) photograph(isFilm ? "film-" + std::to_string(films) : "midst-" + std::to_string(films));
  }
}

void Report::show(Player& player) {
  if (arguments_.isVideoAd) return showVideoAd();
  const auto picture = [&](const char* name) {
    const std::string text = std::string("screenshot ") + name;
    const std::vector<Step> steps{
        {.line = 0, .text = text, .verb = "screenshot", .words = {name}, .rest = name}};
    player.play(steps);
  };
  runUntil(longestLook, [this] { return (probe_.rests() && wasInView_) || probe_.hangs() || hasGone(); });
  if (!screen_.isOpen()) return;
  picture("loaded");
  const auto frame = screen_.frame();
  if (arguments_.interstitial || !frame || probe_.hangs()) return;
  probe_.examine();
  const CGPoint middle{frame->origin.x + frame->size.width / 2, frame->origin.y + frame->size.height / 2};
  if (const auto fault = tapAt(screen_.content(), middle); !fault.empty())
    return journal_.add("console", {{"level", "info"}, {"text", "velto-preview touched nothing: " + fault}});
  const auto isLarge = [this] { return journal_.state() == "expanded" || journal_.state() == "resized"; };
  runUntil(longestTouch, [&] { return isLarge() || probe_.isTouched() || probe_.hangs(); });
  if (!runUntil(afterTouch, isLarge)) return;
  settle();
  picture(journal_.state().c_str());
}

void Report::settle() {
  runUntil(afterExpand + 1ms, [this] { return hasSettled() || !screen_.isOpen(); });
}

bool Report::hasFinding(const std::string& id) {
  probe_.examine();
  if (videoAd) videoAd->settle();  // what is not known yet could be that
  for (const auto& finding : judge(story_, {}))
    if (finding.rule->id == id) return true;
  return false;
}

int Report::finish(bool fine) {
  probe_.examine();
  network_.finish();
  if (videoAd) videoAd->finish();
  if (journal_.state() == "expanded") settle();
  photograph("end");
  const auto findings = judge(story_, tolerance_);
  int code = fine ? 0 : 1;
  for (const auto& finding : findings) {
    if (tolerance_.fails(finding)) code = 1;
    journal_.add("finding", jsonOf(finding));
  }
  journal_.add("end", {{"code", code}});
  isOver_ = true;
  if (arguments_.report.empty()) return code;
  const auto size = [](double value) { return std::to_string(std::lround(value)); };
  auto requests = network_.requests();
  if (videoAd) requests.insert(requests.end(), videoAd->requests().begin(), videoAd->requests().end());
  const ReportMatter matter{.creative = readable(arguments_.creative),
                            .device = size(arguments_.screen.width) + "x" + size(arguments_.screen.height),
                            .code = code,
                            .startedAt = startedAt_,
                            .story = story_,
                            .findings = findings,
                            .tolerance = tolerance_,
                            .requests = requests,
                            .folder = arguments_.report};
  const std::filesystem::path folder(arguments_.report);
  std::string events;
  for (const auto& entry : story_.entries()) events += writeJSON(JSON(entry), false).value_or("{}") + "\n";
  write(folder / "events.jsonl", events);
  write(folder / "findings.json", written(findingsJSON(matter)));
  write(folder / "requests.har", written(harOf(matter)));
  write(folder / "junit.xml", junitOf(matter));
  write(folder / "report.html", htmlOf(matter));
  return code;
}

}  // namespace velto::preview
