// Asking, and writing down.
#include "preview/Probe.h"

#include <velto/timeline/TimelineHub.h>

#include <mutex>
#include <utility>

#include "preview/Player.h"

namespace velto::preview {
namespace {

constexpr guint interval = 250;  // milliseconds
constexpr int ticksOfAWeighing = 4;
// The page's own time counts: on a machine that is busy with others everything takes longer, and what the engine looks
// for when a page first plays something most of all.
constexpr double longestWork = 2;  // seconds of the page's main thread
constexpr std::chrono::milliseconds longestSilence{30'000};
constexpr int restingAnswersWanted = 2;

}  // namespace

// What the library's timelines say, on whatever thread they do.
class Probe::LibraryEars final : public TimelineSink, public std::enable_shared_from_this<LibraryEars> {
 public:
  explicit LibraryEars(Journal& journal) : journal_(&journal) {}
  void close() { journal_ = nullptr; }

 private:
  void added(const std::string&, uint64_t, const VeltoTimelineEntry& entry) override {
    auto details = entry.fields();
    details["name"] = std::string(nameOf(entry.kind));
    tell(std::move(details));
  }
  void ended(const VeltoAdTimeline& timeline) override {
    if (timeline.end) tell({{"name", "ended"}, {"reason", std::string(wordsOf(*timeline.end).name)}});
  }
  void tell(JSON::Object details) {
    struct Word {
      std::weak_ptr<LibraryEars> ears;
      JSON::Object details;
    };
    const auto told = +[](gpointer data) {
      const std::unique_ptr<Word> word(static_cast<Word*>(data));
      const auto ears = word->ears.lock();
      if (ears && ears->journal_) ears->journal_->add("library", std::move(word->details));
      return G_SOURCE_REMOVE;
    };
    g_idle_add_full(G_PRIORITY_DEFAULT, told, new Word{weak_from_this(), std::move(details)}, nullptr);
  }

  Journal* journal_;  // main thread
};

struct Probe::Question {
  Probe* probe;  // null once that does not wait any more
  std::weak_ptr<WKWebView> page;
  double askedAt;  // milliseconds
  double workBefore;
};

Probe::Probe(Screen& screen, Journal& journal, Network& network)
    : screen_(screen), journal_(journal), network_(network), ears_(std::make_shared<LibraryEars>(journal)) {
  TimelineHub::shared()->add(ears_);
  timer_ = g_timeout_add(interval, ticked, this);
}

Probe::~Probe() {
  g_source_remove(timer_);
  ears_->close();
  if (question_) question_->probe = nullptr;
}

gboolean Probe::ticked(gpointer self) noexcept {
  auto* probe = static_cast<Probe*>(self);
  // What stands in a page differs from state to state.
  if (!probe->isAsking())
    probe->ask(std::exchange(probe->askedIn_, probe->journal_.state()) != probe->journal_.state());
  if (++probe->ticks_ % ticksOfAWeighing == 0) probe->weigh();
  return G_SOURCE_CONTINUE;
}

bool Probe::rests() const {
  return restingAnswers_ >= restingAnswersWanted && network_.pending() == 0;
}

// A page that has gone answers no more.
bool Probe::isAsking() const {
  return question_ && !question_->page.expired() && question_->page.lock() == screen_.webView();
}

double Probe::work() const {
  const auto weight = screen_.weight();
  return weight ? weight->mainThreadSeconds.value_or(0) : 0;
}

bool Probe::hangs() const {
  if (!isAsking()) return false;
  return work() - question_->workBefore > longestWork ||
         journal_.milliseconds() - question_->askedAt > static_cast<double>(longestSilence.count());
}

void Probe::ask(bool wholly) {
  const auto webView = screen_.webView();
  if (!webView) return;
  question_ = std::make_shared<Question>(Question{this, webView, journal_.milliseconds(), work()});
  const char* script =
      wholly ? "window.__veltoProbe && __veltoProbe(true)" : "window.__veltoProbe && __veltoProbe()";
  webView->evaluateJavaScript(script, [question = question_](const std::optional<JSON>& value, const auto&) {
    auto* probe = question->probe;
    if (!probe || probe->question_ != question) return;
    probe->question_.reset();
    if (value && value->object()) probe->hear(*value->object());
  });
}

void Probe::hear(const Entry& answer) {
  for (const auto& note : listIn(answer, "notes")) {
    if (!note.object()) continue;
    auto details = *note.object();
    const auto event = textIn(details, "event");
    details.erase("event");
    if (heard_.insert(event + writeJSON(JSON(details), false).value_or("")).second)
      journal_.add(event, std::move(details));
  }
  if (isSetIn(answer, "touched")) isTouched_ = true;
  restingAnswers_ = isSetIn(answer, "rests") ? restingAnswers_ + 1 : 0;
  if (!answer.contains("page")) return;
  auto page = objectIn(answer, "page");
  if (page.contains("sincePaint")) page["painted"] = journal_.milliseconds() - numberIn(page, "sincePaint");
  page.erase("sincePaint");
  journal_.add("page", std::move(page));
}

void Probe::weigh() {
  const auto weight = screen_.weight();
  if (!weight) return;
  JSON::Object details;
  if (weight->processorSeconds) details["processor"] = *weight->processorSeconds;
  if (weight->mainThreadSeconds) details["mainThread"] = *weight->mainThreadSeconds;
  if (weight->networkBytes) details["bytes"] = static_cast<int64_t>(*weight->networkBytes);
  if (weight->memoryBytes) details["memory"] = static_cast<int64_t>(*weight->memoryBytes);
  journal_.add("weight", std::move(details));
}

void Probe::examine(const std::function<bool()>& isGivenUp) {
  // Its timer sees to it that this is looked at again.
  const auto isOver = [&] { return isGivenUp() || !isAsking() || hangs(); };
  runUntil(longestSilence, isOver);
  if (isGivenUp()) return;
  if (!isAsking() && screen_.webView()) {
    ask(true);
    runUntil(longestSilence, isOver);
    if (isGivenUp()) return;
  }
  if (isAsking() && !isToldHanging_) {
    isToldHanging_ = true;
    journal_.add("unresponsive", {});
  }
  weigh();
}

}  // namespace velto::preview
