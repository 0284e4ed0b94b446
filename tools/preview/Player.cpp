// What each step does.
#include "preview/Player.h"

#include <cmath>

namespace velto::preview {
namespace {

using namespace std::chrono_literals;

constexpr size_t mostTold = 10'000;
constexpr auto untilAskedAgain = 50ms;
constexpr auto untilToldLate = 2s;

}  // namespace

void runFor(std::chrono::milliseconds time) {
  runUntil(time, [] { return false; });
}

// What is waited for comes by the main loop, so nothing wakes in between.
bool runUntil(std::chrono::milliseconds atMost, const std::function<bool()>& condition) {
  bool over = false;
  const auto end = +[](gpointer isOver) -> gboolean {
    *static_cast<bool*>(isOver) = true;
    return G_SOURCE_REMOVE;
  };
  const guint timer = g_timeout_add(static_cast<guint>(atMost.count()), end, &over);
  bool holds = condition();
  while (!holds && !over) {
    g_main_context_iteration(nullptr, TRUE);
    holds = condition();
  }
  if (!over) g_source_remove(timer);
  return holds;
}

Player::Player(Screen& screen, Journal& journal, const Arguments& arguments)
    : screen_(screen),
      journal_(journal),
      arguments_(arguments),
      told_(std::make_shared<std::vector<JSON::Object>>()) {
  journal.observe([told = std::weak_ptr(told_)](const JSON::Object& entry) {
    const auto& kind = *entry.at("event").string();
    const auto kept = told.lock();
    if (kept && kept->size() < mostTold && (kind == "open" || kind == "command")) kept->push_back(entry);
  });
}

bool Player::awaitLoad() {
  // A video ad that is late is to say so itself.
  const bool loaded = runUntil(arguments_.timeout + (arguments_.hasTimeout ? untilToldLate : 0s), [this] {
    return screen_.hasLoaded() || screen_.hasFailed() || !screen_.isOpen();
  });
  if (loaded && screen_.hasLoaded()) return true;
  journal_.add("failure", {{"text", "the ad did not load"}});
  return false;
}

bool Player::play(const std::vector<Step>& steps) {
  for (const auto& step : steps) {
    if (!screen_.isOpen()) return false;
    JSON::Object place{{"line", step.line}, {"text", step.text}};
    if (!step.file.empty()) place["file"] = step.file;
    journal_.add("step", place);
    if (const auto fault = play(step)) {
      place["text"] = *fault;
      journal_.add("failure", std::move(place));
      if (!arguments_.out.empty()) screenshot({"failure-line-" + std::to_string(step.line)});
      return false;
    }
  }
  return true;
}

Player::Outcome Player::waitFor(const std::function<bool()>& condition, const Step& step) {
  auto time = arguments_.timeout;
  if (step.words.size() > 1) time = std::chrono::milliseconds(std::llround(numberOf(step.words[1])));
  if (runUntil(time, [&] { return condition() || !screen_.isOpen(); }) && condition()) return std::nullopt;
  return "it did not come within " + std::to_string(time.count()) + " ms";
}

std::optional<JSON> Player::evaluate(const std::string& script, std::string* error) {
  const auto webView = screen_.webView();
  if (!webView) {
    *error = "there is no page";
    return std::nullopt;
  }
  struct Answer {
    std::optional<JSON> value;
    std::string error;
    bool came = false;
  };
  const auto answer = std::make_shared<Answer>();
  webView->evaluateJavaScript(script, [answer](std::optional<JSON> value, std::optional<NSError> fault) {
    *answer = {std::move(value), fault ? fault->localizedDescription : "", true};
  });
  if (!runUntil(arguments_.timeout, [&] { return answer->came; })) {
    *error = "the page does not answer";
    return std::nullopt;
  }
  *error = answer->error;
  return answer->value;
}

// Asked again and again, as a page tells nobody that it has changed.
Player::Outcome Player::waitForEval(const std::string& script) {
  const double end = journal_.milliseconds() + static_cast<double>(arguments_.timeout.count());
  std::string error;
  for (;;) {
    const auto value = evaluate(script, &error);
    if (value && *value == JSON(true)) return std::nullopt;
    if (!screen_.isOpen() || journal_.milliseconds() > end)
      return "it was not true within " + std::to_string(arguments_.timeout.count()) + " ms" +
             (error.empty() ? "" : ": " + error);
    runFor(untilAskedAgain);
  }
}

Player::Outcome Player::eval(const std::string& script, bool mustBeTrue) {
  std::string error;
  const auto value = evaluate(script, &error);
  JSON::Object details{{"script", script}};
  if (value) details["value"] = *value;
  if (!error.empty()) details["error"] = error;
  journal_.add("eval", std::move(details));
  if (!mustBeTrue) return std::nullopt;
  if (value && *value == JSON(true)) return std::nullopt;
  return "it is not true" + (error.empty() ? "" : ": " + error);
}

}  // namespace velto::preview
