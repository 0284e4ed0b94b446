// What an ad does that a person has not asked for, and what it fails to do.
#include <array>

#include "preview/Findings.h"

namespace velto::preview {
namespace {

// The particulars of such entries, without kind and time; at most ten.
JSON::Array particulars(const Story& story, const std::vector<const Entry*>& entries) {
  JSON::Array list;
  for (const auto* entry : entries) {
    if (list.size() == 10) break;
    auto told = *entry;
    told.erase("event");
    told.erase("t");
    for (const char* unknown : {"source", "line", "column"})  // which the engine keeps to itself
      if (textIn(told, unknown).empty() && numberIn(told, unknown) == 0) told.erase(unknown);
    for (const char* key : {"url", "source"})
      if (const auto url = textIn(told, key); !url.empty()) told[key] = story.shortAddress(url);
    list.emplace_back(std::move(told));
  }
  return list;
}

Evidence any(const Story& story, std::string_view kind, const char* name) {
  const auto entries = story.of(kind);
  if (entries.empty()) return std::nullopt;
  return JSON::Object{{name, particulars(story, entries)}};
}

bool leadsOut(const Entry& command) {
  const auto name = textIn(command, "name");
  return name == "open" || name == "playVideo" || name == "storePicture" || name == "createCalendarEvent" ||
         name == "expand";
}

Evidence openWithoutTouch(const Story& story) {
  std::vector<const Entry*> entries;
  for (const auto* open : story.of("open"))
    if (!isSetIn(*open, "opened") && !isSetIn(*open, "tapped")) entries.push_back(open);
  for (const auto* command : story.of("command"))
    if (command->contains("tapped") && !isSetIn(*command, "tapped") && leadsOut(*command))
      entries.push_back(command);
  if (entries.empty()) return std::nullopt;
  return JSON::Object{{"opened", particulars(story, entries)}};
}

Evidence noLoadFinished(const Story& story) {
  for (const auto* navigation : story.of("navigation"))
    if (textIn(*navigation, "url").starts_with("velto://loadFinished")) return std::nullopt;
  return JSON::Object{};
}

Evidence noClickThrough(const Story& story) {
  const auto pages = story.of("page");
  for (const auto* page : pages)
    if (numberIn(*page, "links") + numberIn(*page, "presses") > 0) return std::nullopt;
  return pages.empty() ? Evidence() : JSON::Object{};
}

Evidence scriptErrors(const Story& story) {
  return any(story, "script-error", "errors");
}

Evidence hangs(const Story& story) {
  return story.of("unresponsive").empty() ? Evidence() : JSON::Object{};
}

Evidence crashes(const Story& story) {
  return any(story, "crashed", "ends");
}

Evidence sounds(const Story& story) {
  return any(story, "sound", "sounds");
}

Evidence vibrates(const Story& story) {
  return any(story, "vibration", "calls");
}

Evidence dialogs(const Story& story) {
  return any(story, "dialog", "dialogs");
}

Evidence refused(const Story& story) {
  return any(story, "refused", "calls");
}

Evidence policyRefuses(const Story& story) {
  return any(story, "content-policy", "refused");
}

Evidence noisyConsole(const Story& story) {
  const auto lines = story.of("console").size();
  constexpr size_t most = 100;
  if (lines <= most) return std::nullopt;
  return JSON::Object{{"most", static_cast<int>(most)}};
}

constexpr std::array behaviourTable{
    Rule{"sound-without-touch", Severity::Error, "The ad plays sound, or tries to, that nobody asked for.",
         "People close such ads and the application with them; engines refuse it.",
         "Begin muted, and let a touch turn the sound on.",
         "A muted film that plays by itself; sound after a touch.", sounds},
    Rule{"vibration", Severity::Warning, "The ad lets the device vibrate.", "People take it for a message.",
         "Do without.", "Looking whether the device could.", vibrates},
    Rule{"dialog", Severity::Error, "The ad opens a dialog (alert, confirm, prompt).",
         "It stops the page, and covers what the person wanted to see.", "Say it in the ad itself.",
         "A layer of the page's own.", dialogs},
    Rule{"open-without-touch", Severity::Error, "The ad opens or expands something that nobody has touched.",
         "It is refused, and reviewers refuse the ad.", "Call it from the handler of a click.",
         "The same from a click.", openWithoutTouch},
    Rule{"no-load-finished", Severity::Error, "The ad never says that it has loaded.",
         "The application is never told, and the banner stays out of sight.",
         "Go to velto://loadFinished once what matters is there.",
         "Saying so late, within the time of a load.", noLoadFinished},
    Rule{"no-click-through", Severity::Warning, "Nothing in the ad can be clicked.",
         "Nobody gets from it to what it is about.", "Put a link around it, or call mraid.open() on a click.",
         "A link, or a listener for clicks or touches anywhere.", noClickThrough},
    Rule{"script-error", Severity::Error, "A script of the ad fails.",
         "What stands behind the error is never done.",
         "Look at the line that is named. Where none is, the web inspector (F12 in the window) names it.",
         "An error that the script catches.", scriptErrors},
    Rule{"call-refused", Severity::Warning, "A call of mraid or of the engine was refused.",
         "What it should have done did not happen.",
         "Look at the reason; mraid tells it to listeners of \"error\" as well.",
         "Calls that state and arguments allow.", refused},
    Rule{"policy-refuses", Severity::Error, "The page's own content policy keeps out what the page asks for.",
         "What is kept out is missing.", "Name its source in the policy, or leave it away.",
         "A strict policy that the page keeps to.", policyRefuses},
    Rule{"unresponsive", Severity::Error, "The page does not answer any more.",
         "An endless loop: nothing can be touched, and the device gets hot.",
         "Split long work into parts, with setTimeout() between them.", "Work of less than two seconds.",
         hangs},
    Rule{"crash", Severity::Error, "The page's process ended while the ad was shown.",
         "The ad goes, and with it what it would have earned.", "Look at memory first.",
         "Ending with the ad.", crashes},
    Rule{"noisy-console", Severity::Notice, "The ad writes more than 100 lines to the console.",
         "It costs time, and hides what others write.", "Take the logging out.", "100 lines.", noisyConsole},
};

}  // namespace

std::span<const Rule> behaviourRules() {
  return behaviourTable;
}

}  // namespace velto::preview
