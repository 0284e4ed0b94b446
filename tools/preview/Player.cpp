// What each step does.
#include "preview/Player.h"

#include <cmath>
#include <filesystem>

#include "preview/Hand.h"

namespace velto::preview {
namespace {

using namespace std::chrono_literals;

constexpr auto settles = 150ms;  // after a change of the window, until its parts have followed

std::string quoted(const std::string& text) {
  return writeJSON(JSON(text), false).value_or("\"\"");
}

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
    : screen_(screen), journal_(journal), arguments_(arguments) {}

bool Player::awaitLoad() {
  const bool loaded = runUntil(
      arguments_.timeout, [this] { return screen_.hasLoaded() || screen_.hasFailed() || !screen_.isOpen(); });
  if (loaded && screen_.hasLoaded()) return true;
  journal_.add("failure", {{"text", "the ad did not load"}});
  return false;
}

bool Player::play(const std::vector<Step>& steps) {
  for (const auto& step : steps) {
    if (!screen_.isOpen()) return false;
    journal_.add("step", {{"line", step.line}, {"text", step.text}});
    if (const auto fault = play(step)) {
      journal_.add("failure", {{"line", step.line}, {"text", *fault}});
      return false;
    }
  }
  return true;
}

Player::Outcome Player::play(const Step& step) {
  const auto& words = step.words;
  const auto now = [&](const std::string& is, const char* what) -> Outcome {
    if (is == words[0]) return std::nullopt;
    return std::string(what) + " is \"" + is + "\"";
  };
  if (step.verb == "wait")
    return runFor(std::chrono::milliseconds(std::llround(numberOf(words[0])))), std::nullopt;
  if (step.verb == "wait-for state") return waitFor([&] { return journal_.state() == words[0]; }, step);
  if (step.verb == "wait-for event") return waitFor([&] { return journal_.count(words[0]) > 0; }, step);
  if (step.verb == "tap") {
    const auto fault = tapAt(screen_.content(), {numberOf(words[0]), numberOf(words[1])});
    return fault.empty() ? Outcome() : fault;
  }
  if (step.verb == "tap-element") return tapElement(step.rest);
  if (step.verb == "eval") return eval(step.rest, false);
  if (step.verb == "expect eval") return eval(step.rest, true);
  if (step.verb == "rotate") return screen_.rotate(words[0] == "landscape"), runFor(settles), std::nullopt;
  if (step.verb == "hide" || step.verb == "show")
    return screen_.setShown(step.verb == "show"), runFor(settles), std::nullopt;
  if (step.verb == "volume") return screen_.setVolume(static_cast<float>(numberOf(words[0]))), std::nullopt;
  if (step.verb == "close") return screen_.pressClose() ? Outcome() : "there is no close button";
  if (step.verb == "screenshot") return screenshot(words[0]);
  if (step.verb == "expect state") return now(journal_.state(), "the state");
  if (step.verb == "expect placement") return now(journal_.placement(), "the placement");
  if (step.verb == "expect frame") return expectFrame(step);
  const int count = journal_.count(words[0]);  // the one verb that is left: "expect count"
  if (count == numberOf(words[1])) return std::nullopt;
  return words[0] + " came " + std::to_string(count) + " times";
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

Player::Outcome Player::tapElement(const std::string& selector) {
  std::string error;
  const auto place = evaluate("(function () { var e = document.querySelector(" + quoted(selector) +
                                  "); if (!e) return null; var r = e.getBoundingClientRect();"
                                  " return [r.left + r.width / 2, r.top + r.height / 2]; })()",
                              &error);
  const auto* numbers = place ? place->array() : nullptr;
  const auto frame = screen_.frame();
  if (!numbers || numbers->size() != 2 || !frame)
    return "no such element" + (error.empty() ? "" : ": " + error);
  const auto fault = tapAt(screen_.content(), {frame->origin.x + (*numbers)[0].number().value_or(0),
                                               frame->origin.y + (*numbers)[1].number().value_or(0)});
  return fault.empty() ? Outcome() : fault;
}

Player::Outcome Player::screenshot(const std::string& name) {
  runFor(settles);
  const auto folder = std::filesystem::path(arguments_.out.empty() ? "." : arguments_.out);
  std::error_code ignored;
  std::filesystem::create_directories(folder, ignored);
  const auto file = (folder / (name + ".png")).string();
  // There is nothing to take a picture of while a frame is being drawn: then after the next.
  const auto taken = [&] {
    if (screen_.photograph(file)) return true;
    gtk_widget_queue_draw(screen_.content());
    return false;
  };
  if (!runUntil(2s, taken)) return file + ": cannot be written";
  journal_.add("screenshot", {{"file", file}});
  return std::nullopt;
}

Player::Outcome Player::expectFrame(const Step& step) {
  const CGRect wanted{{numberOf(step.words[0]), numberOf(step.words[1])},
                      {numberOf(step.words[2]), numberOf(step.words[3])}};
  const auto frame = screen_.frame();
  if (frame == wanted) return std::nullopt;
  if (!frame) return "there is no ad view";
  const auto text = [](double value) { return writeJSON(JSON(value), false).value_or("?"); };
  return "the frame is " + text(frame->origin.x) + " " + text(frame->origin.y) + " " +
         text(frame->size.width) + " " + text(frame->size.height);
}

}  // namespace velto::preview
