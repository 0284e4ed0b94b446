// What each step does.
#include <velto/gtk/web/WebView.h>

#include <cmath>
#include <filesystem>

#include "preview/Compare.h"
#include "preview/Creative.h"
#include "preview/Device.h"
#include "preview/Element.h"
#include "preview/Hand.h"
#include "preview/Player.h"
#include "preview/Window.h"

namespace velto::preview {
namespace {

using namespace std::chrono_literals;

constexpr auto settles = 150ms;  // after a change of the window, until its parts have followed
constexpr auto networkWait = 10s;
constexpr double longPress = 800;       // milliseconds
constexpr double usualTolerance = 0.1;  // percent of a picture's points
constexpr ServingSpeed slow3G{400, 50'000}, slow2G{800, 15'000};

std::string textOf(const JSON::Object& entry, const std::string& key) {
  const auto found = entry.find(key);
  const auto* text = found == entry.end() ? nullptr : found->second.string();
  return text ? *text : std::string();
}

std::chrono::milliseconds milliseconds(double value) {
  return std::chrono::milliseconds(std::llround(value));
}

// The engine's network process hears of such settings from here, and of requests from the page: what it is asked here it answers
// when it has the settings.
bool networkAnswers(WebKitWebView* view) {
  auto* data = webkit_network_session_get_website_data_manager(webkit_web_view_get_network_session(view));
  const auto answered = std::make_shared<bool>(false);
  webkit_website_data_manager_fetch(
      data, WEBKIT_WEBSITE_DATA_COOKIES, nullptr,
      [](GObject* manager, GAsyncResult* result, gpointer flag) noexcept {
        const std::unique_ptr<std::shared_ptr<bool>> answer(static_cast<std::shared_ptr<bool>*>(flag));
        GList* found =
            webkit_website_data_manager_fetch_finish(WEBKIT_WEBSITE_DATA_MANAGER(manager), result, nullptr);
        g_list_free_full(
            found, [](gpointer one) { webkit_website_data_unref(static_cast<WebKitWebsiteData*>(one)); });
        **answer = true;
      },
      new std::shared_ptr(answered));
  return runUntil(networkWait, [&] { return *answered; });
}

std::optional<std::string> outcomeOf(const std::string& fault) {
  return fault.empty() ? std::nullopt : std::optional(fault);
}

}  // namespace

Player::Outcome Player::play(const Step& step) {
  const auto& words = step.words;
  if (step.verb == "wait") return runFor(milliseconds(numberOf(words[0]))), std::nullopt;
  if (step.verb == "wait-for state") return waitFor([&] { return journal_.state() == words[0]; }, step);
  if (step.verb == "wait-for event")
    return waitFor([&] { return journal_.countFromHere(words[0]) > 0; }, step);
  if (step.verb == "wait-for eval") return waitForEval(step.rest);
  if (step.verb == "from-here") return journal_.beginHere(), told_->clear(), std::nullopt;
  if (step.verb == "eval") return eval(step.rest, false);
  if (step.verb == "screenshot") return screenshot(words);
  if (step.verb == "press") return outcomeOf(window && window->press(words[0]) ? "" : "there is no window");
  if (step.verb == "picture") return pictureOfAll(step);
  if (step.verb.starts_with("expect")) return expect(step);
  for (const char* verb : {"tap", "tap-element", "long-press", "swipe", "scroll", "type"})
    if (step.verb == verb) return touch(step);
  return change(step);
}

// --- what a person does to the ad

Player::Outcome Player::touch(const Step& step) {
  if (step.verb == "tap-element") return tapElement(step.rest);
  if (step.verb == "type") return outcomeOf(type(screen_.content(), step.rest));
  std::vector<double> numbers;
  for (const auto& word : step.words) numbers.push_back(numberOf(word));
  const CGPoint point{numbers[0], numbers[1]};
  if (step.verb == "tap") return outcomeOf(tapAt(screen_.content(), point));
  if (step.verb == "long-press")
    return outcomeOf(
        pressAt(screen_.content(), point, milliseconds(numbers.size() > 2 ? numbers[2] : longPress)));
  if (step.verb == "scroll")
    return outcomeOf(scrollAt(screen_.content(), point, static_cast<int>(numbers[2])));
  return outcomeOf(swipe(screen_.content(), point, {numbers[2], numbers[3]}));
}

Player::Outcome Player::tapElement(const std::string& selector) {
  std::string error;
  const auto found = whereabouts(evaluate(scriptToFind(selector), &error));
  if (!error.empty()) return error;
  if (!found.point) return found.fault;
  runFor(20ms);  // it may have been scrolled into sight
  return tapOnAd(*found.point);
}

// Over the page may stand parts of the application's: a close button, another window's view.
Player::Outcome Player::tapOnAd(CGPoint inPage) {
  const auto frame = screen_.frame();
  const auto webView = screen_.webView();
  const auto* peer = webView ? dynamic_cast<gtk::WebView*>(&webView->webPeer()) : nullptr;
  if (!frame || !peer) return "there is no ad view";
  const CGPoint point{frame->origin.x + inPage.x, frame->origin.y + inPage.y};
  auto* page = GTK_WIDGET(peer->engine().view.get());
  auto* over = gtk_widget_pick(screen_.content(), point.x, point.y, GTK_PICK_DEFAULT);
  if (!over) return "it is outside of the screen";
  if (over != page && !gtk_widget_is_ancestor(over, page))
    return std::string("it is covered by ") +
           (GTK_IS_BUTTON(over) || gtk_widget_get_ancestor(over, GTK_TYPE_BUTTON) ? "the close button"
                                                                                  : "another view");
  return outcomeOf(tapAt(screen_.content(), point));
}

// --- what happens to the device

Player::Outcome Player::change(const Step& step) {
  const auto& words = step.words;
  if (step.verb == "rotate") return screen_.rotate(words[0] == "landscape"), runFor(settles), std::nullopt;
  if (step.verb == "hide" || step.verb == "show")
    return screen_.setShown(step.verb == "show"), runFor(settles), std::nullopt;
  if (step.verb == "volume") return screen_.setVolume(static_cast<float>(numberOf(words[0]))), std::nullopt;
  if (step.verb == "close") return screen_.pressClose() ? Outcome() : "there is no close button";
  if (step.verb == "skip") return screen_.skip() ? Outcome() : "it cannot be skipped now";
  if (step.verb == "clock") return moveClock(*durationOf(words[0]));
  if (step.verb == "slow") return setServingSpeed(words[0] == "3g" ? slow3G : slow2G), std::nullopt;
  if (step.verb == "online") setServingSpeed({});
  return setOffline(step.verb == "offline");
}

Player::Outcome Player::setOffline(bool offline) {
  const auto webView = screen_.webView();
  const auto* peer = webView ? dynamic_cast<gtk::WebView*>(&webView->webPeer()) : nullptr;
  if (!peer) return "there is no ad view";
  preview::setOffline(peer->engine().view, offline);
  return networkAnswers(peer->engine().view) ? Outcome() : "the engine's network process does not answer";
}

Player::Outcome Player::moveClock(std::chrono::milliseconds by) {
  std::string error;
  const auto moved = evaluate("window.__veltoClock(" + std::to_string(by.count()) + ")", &error);
  return moved && *moved == JSON(true) ? Outcome() : "the page's clock does not move: " + error;
}

// --- pictures

// With the findings that the window is about to tell.
Player::Outcome Player::pictureOfAll(const Step& step) {
  if (!window || !window->isOpen()) return "there is no window";
  runUntil(arguments_.timeout, [this] { return !window->isAwake(); });
  return screenshot(step.words, window->widget());
}

Player::Outcome Player::screenshot(const std::vector<std::string>& words, GtkWindow* beside) {
  runFor(settles);
  const auto folder = std::filesystem::path(arguments_.out.empty() ? "." : arguments_.out);
  std::error_code ignored;
  std::filesystem::create_directories(folder, ignored);
  const auto file = (folder / (words[0] + ".png")).string();
  // There is nothing to take a picture of while a frame is being drawn: then after the next.
  const auto taken = [&] {
    if (screen_.photograph(file, beside)) return true;
    gtk_widget_queue_draw(screen_.content());
    return false;
  };
  if (!runUntil(2s, taken)) return file + ": cannot be written";
  journal_.add("screenshot", {{"file", file}});
  if (words.size() < 3) return std::nullopt;
  const auto difference = (folder / (words[0] + "-difference.png")).string();
  return outcomeOf(
      compare(file, words[2], words.size() > 3 ? numberOf(words[3]) : usualTolerance, difference));
}

// --- what is expected

Player::Outcome Player::expect(const Step& step) {
  const auto& words = step.words;
  const auto now = [&](const std::string& is, const char* what) -> Outcome {
    if (is == words[0]) return std::nullopt;
    return std::string(what) + " is \"" + is + "\"";
  };
  if (step.verb == "expect state") return now(journal_.state(), "the state");
  if (step.verb == "expect placement") return now(journal_.placement(), "the placement");
  if (step.verb == "expect frame") return expectFrame(step);
  if (step.verb == "expect eval") return eval(step.rest, true);
  if (step.verb == "expect open")
    return expectEntry(
        "open", [&](const auto& entry) { return textOf(entry, "url") == words[0]; }, "url");
  if (step.verb == "expect command") {
    const auto args = step.rest.substr(std::min(step.rest.size(), step.rest.find_first_of(" \t")));
    const auto wanted = args.substr(std::min(args.size(), args.find_first_not_of(" \t")));
    const auto fits = [&](const auto& entry) {
      return textOf(entry, "name") == words[0] && (wanted.empty() || textOf(entry, "args") == wanted);
    };
    return expectEntry("command", fits, wanted.empty() ? "name" : "args");
  }
  if (step.verb == "expect no") {
    if (!hasFinding) return "nobody looks for findings";
    return hasFinding(words[1]) ? Outcome("there is one: " + words[1]) : Outcome();
  }
  const int count = journal_.countFromHere(words[0]);  // the one verb that is left: "expect count"
  if (count == numberOf(words[1])) return std::nullopt;
  return words[0] + " came " + std::to_string(count) + " times";
}

// The fault names what came instead.
Player::Outcome Player::expectEntry(const std::string& kind,
                                    const std::function<bool(const JSON::Object&)>& fits,
                                    const std::string& key) {
  std::string others;
  for (const auto& entry : *told_) {
    if (textOf(entry, "event") != kind) continue;
    if (fits(entry)) return std::nullopt;
    others += (others.empty() ? "" : ", ") + textOf(entry, key);
  }
  return "there was none" + (others.empty() ? "" : "; but " + others);
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
