// How an ad speaks to its container (MRAID 3.0).
#include <array>
#include <set>

#include "preview/Findings.h"

namespace velto::preview {
namespace {

constexpr double mostListeners = 10;
constexpr double leastContrast = 3;  // of what is no text, WCAG 2.1 1.4.11

bool isRichMedia(const Story& story) {
  return story.timeOf("statement", "ready").has_value();
}

Evidence beforeReady(const Story& story) {
  std::set<std::string> names;
  for (const auto* call : story.of("early")) names.insert(textIn(*call, "name"));
  if (names.empty()) return std::nullopt;
  return JSON::Object{{"calls", JSON::Array(names.begin(), names.end())}};
}

Evidence listenersPileUp(const Story& story) {
  std::set<std::string> events;
  for (const auto* page : story.of("page"))
    for (const auto& [event, count] : objectIn(*page, "listeners"))
      if (count.number().value_or(0) > mostListeners) events.insert(event);
  if (events.empty()) return std::nullopt;
  return JSON::Object{{"events", JSON::Array(events.begin(), events.end())}, {"most", mostListeners}};
}

Evidence faintClose(const Story& story) {
  for (const auto* paint : story.of("paint"))
    if (const double contrast = numberIn(*paint, "closeContrast", leastContrast); contrast < leastContrast)
      return JSON::Object{{"contrast", contrast}, {"least", leastContrast}};
  return std::nullopt;
}

Evidence unloadedScript(const Story& story) {
  const auto* page = story.last("page");
  if (!page || isRichMedia(story) || !isSetIn(*page, "asksForMraid")) return std::nullopt;
  return JSON::Object{};
}

constexpr std::array richMediaTable{
    Rule{"mraid-before-ready", Severity::Warning, "mraid is used before it is ready.",
         "Sizes and features are not known by then, and other containers drop such commands.",
         "Wait for \"ready\" unless getState() is past \"loading\".",
         "getState(), addEventListener() and properties, which may come before.", beforeReady},
    Rule{"listeners-pile-up", Severity::Notice, "More than 10 listeners of one mraid event are left.",
         "One is added again and again, and each is called.",
         "Add it once, or remove it by removeEventListener().", "10 of one event, or as many as are removed.",
         listenersPileUp},
    Rule{"faint-close", Severity::Warning, "The close region can hardly be told from what is around it.",
         "People who cannot close an ad leave the application.",
         "Draw a mark with a contrast of 3 to 1 in the 50 by 50 points at the top right, or leave it to the "
         "container.",
         "A contrast of 3 to 1, such as a mid grey on white.", faintClose},
    Rule{"mraid-missing", Severity::Error, "The page looks for mraid, which is not there.",
         "The container gives it to pages that name \"mraid.js\" in their markup.",
         "Put <script src=\"mraid.js\"></script> into the head.",
         "A page that names it, however late it uses it.", unloadedScript},
};

}  // namespace

std::span<const Rule> richMediaRules() {
  return richMediaTable;
}

}  // namespace velto::preview
