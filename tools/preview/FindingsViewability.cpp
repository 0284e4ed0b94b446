// Whether an ad can be seen, and whether that is measured (Open Measurement).
#include <array>
#include <set>

#include "preview/Findings.h"

namespace velto::preview {
namespace {

Evidence neverInView(const Story& story) {
  bool measured = false;
  for (const auto* event : story.of("measurement")) {
    if (textIn(*event, "type") != "geometryChange") continue;
    measured = true;
    if (numberIn(objectIn(objectIn(*event, "data"), "adView"), "percentageInView") > 0) return std::nullopt;
  }
  return measured ? JSON::Object{} : Evidence();
}

Evidence nothingPainted(const Story& story) {
  const auto paints = story.of("paint");
  if (paints.empty()) return std::nullopt;
  for (const auto* paint : paints)
    if (numberIn(*paint, "colours") > 1) return std::nullopt;
  return JSON::Object{};
}

Evidence notMeasured(const Story& story) {
  const auto* page = story.last("page");
  if (!page || numberIn(*page, "listening") > 0 || !listIn(*page, "verification").empty())
    return std::nullopt;
  return JSON::Object{};
}

// Those that the measurement service was to run: they did not come, or fail.
Evidence verificationFailed(const Story& story) {
  std::set<std::string> scripts;
  for (const auto& url : story.inPages("verification"))
    if (url.string()) scripts.insert(*url.string());
  std::set<std::string> failed;
  for (const auto* request : story.of("resource"))
    if (const auto asked = addressesOf(*request).front();
        scripts.contains(asked) && (numberIn(*request, "status") >= 400 || request->contains("error")))
      failed.insert(story.shortAddress(asked));
  for (const auto* error : story.of("script-error"))
    if (const auto source = textIn(*error, "source"); scripts.contains(source))
      failed.insert(story.shortAddress(source));
  if (failed.empty()) return std::nullopt;
  return JSON::Object{{"scripts", JSON::Array(failed.begin(), failed.end())}};
}

Evidence sessionErrors(const Story& story) {
  std::set<std::string> messages;
  for (const auto* event : story.of("measurement"))
    if (textIn(*event, "type") == "sessionError")
      messages.insert(textIn(objectIn(*event, "data"), "message"));
  if (messages.empty()) return std::nullopt;
  return JSON::Object{{"messages", JSON::Array(messages.begin(), messages.end())}};
}

constexpr std::array viewabilityTable{
    Rule{"never-in-view", Severity::Error, "Nothing of the ad was ever in view.",
         "Nobody saw it, and nobody pays for it.", "Check its size and what stands over it.",
         "One point of it, for a moment.", neverInView},
    Rule{"nothing-painted", Severity::Error, "The ad shows a single colour and nothing else.",
         "It takes its place, and there is nothing to be seen.",
         "Look at the console and at failed requests: what should be painted did not come.",
         "A dot in another colour.", nothingPainted},
    Rule{"not-measured", Severity::Notice, "Nobody measures the ad by Open Measurement.",
         "What is not measured is counted as not seen by many buyers.",
         "Name a verification script, or report the impression from the page.",
         "A script that listens, in the page or in a frame.", notMeasured},
    Rule{"verification-failed", Severity::Error, "A verification script did not come, or fails.",
         "The ad is shown, and nobody learns of it.", "Check address and script with its vendor.",
         "A script that comes and says nothing.", verificationFailed},
    Rule{"session-error", Severity::Error, "The measurement session reports an error.",
         "What is measured from there on is worth nothing.", "Look at the message.", "A session that ends.",
         sessionErrors},
};

}  // namespace

std::span<const Rule> viewabilityRules() {
  return viewabilityTable;
}

}  // namespace velto::preview
