// Where an ad's page goes on the network, and what it leaves behind.
#include <algorithm>
#include <array>
#include <map>
#include <set>

#include "preview/Findings.h"

namespace velto::preview {
namespace {

constexpr double longestRequest = 5000;  // milliseconds

JSON::Array listOf(const std::set<std::string>& texts) {
  return {texts.begin(), texts.end()};
}

// Nothing where there are none.
Evidence addresses(const std::set<std::string>& found) {
  if (found.empty()) return std::nullopt;
  return JSON::Object{{"addresses", listOf(found)}};
}

Evidence plainHttp(const Story& story) {
  std::set<std::string> found;
  for (const auto* request : story.of("resource"))
    for (const auto& url : addressesOf(*request))
      if (url.starts_with("http://") && !isLocal(hostOf(url))) found.insert(story.shortAddress(url));
  return addresses(found);
}

Evidence thirdParties(const Story& story) {
  std::set<std::string> hosts;
  for (const auto* request : story.of("resource"))
    for (const auto& url : addressesOf(*request))
      if (story.isElsewhere(url)) hosts.insert(hostOf(url));
  if (hosts.empty()) return std::nullopt;
  return JSON::Object{{"hosts", listOf(hosts)}};
}

bool goesTo(const Entry& entry, const std::string& url) {
  const auto addresses = addressesOf(entry);
  return std::ranges::find(addresses, url) != addresses.end();
}

bool names(const Story& story, std::string_view kind, const std::string& url) {
  return std::ranges::any_of(story.of(kind), [&](const Entry* entry) { return goesTo(*entry, url); });
}

// The library gives it to the page, whether that came for it or not.
bool isContainerScript(const std::string& url) {
  return url.substr(0, url.find_first_of("?#")).ends_with("/mraid.js");
}

Evidence requestFailed(const Story& story) {
  std::multimap<std::string, JSON::Object> requests;  // by address: several fail in any order
  std::set<std::string> known;
  for (const auto* request : story.of("resource")) {
    const double status = numberIn(*request, "status");
    const auto error = textIn(*request, "error");
    const bool isLate = error == "not finished" && numberIn(*request, "duration") < longestRequest;
    if (status < 400 && (error.empty() || isLate)) continue;  // which came too late for this play only
    if (isContainerScript(textIn(*request, "url"))) continue;
    const auto address = story.shortAddress(textIn(*request, "url"));
    JSON::Object told{{"url", address}};
    if (status != 0) told["status"] = status;
    if (!error.empty()) told["error"] = error;
    requests.emplace(address, std::move(told));
    for (auto& passed : addressesOf(*request)) known.insert(std::move(passed));
  }
  // What came, and cannot be used, and what was not even asked for; a film's next source may do.
  for (const auto* fault : story.of("resource-error")) {
    const auto url = textIn(*fault, "url"), address = story.shortAddress(url);
    auto reason = textIn(*fault, "reason");
    if (reason.empty()) {
      const bool isKnown = known.contains(url) || names(story, "content-policy", url);
      if (url.empty() || isKnown || textIn(*fault, "element") == "source") continue;
      reason =
          names(story, "resource", url) ? "It came, and cannot be used." : "The engine asked nobody for it.";
    }
    requests.emplace(address, JSON::Object{{"url", address}, {"error", reason}});
  }
  if (requests.empty()) return std::nullopt;
  JSON::Array told;
  for (auto& [address, request] : requests) told.emplace_back(std::move(request));
  return JSON::Object{{"requests", std::move(told)}};
}

Evidence navigationFailed(const Story& story) {
  std::set<std::string> found;
  for (const auto* entry : story.of("navigation-failed"))
    found.insert(story.shortAddress(textIn(*entry, "url")));
  return addresses(found);
}

Evidence cookies(const Story& story) {
  std::set<std::string> names;
  for (const auto* entry : story.of("storage"))
    if (textIn(*entry, "kind") == "cookie") names.insert(textIn(*entry, "key"));
  if (names.empty()) return std::nullopt;
  return JSON::Object{{"names", listOf(names)}};
}

Evidence storage(const Story& story) {
  std::set<std::string> kinds;
  for (const auto* entry : story.of("storage"))
    if (const auto kind = textIn(*entry, "kind"); kind != "cookie") kinds.insert(kind);
  if (kinds.empty()) return std::nullopt;
  return JSON::Object{{"kinds", listOf(kinds)}};
}

constexpr std::array networkTable{
    Rule{"plain-http", Severity::Error, "Something is loaded by plain http.",
         "Anybody on the way can read and change it; most applications refuse it.", "Use https addresses.",
         "https, and addresses of this machine while you build the ad.", plainHttp},
    Rule{"third-party", Severity::Notice, "The ad loads from other hosts than its own.",
         "Each learns who sees the ad, and each can make it slow.",
         "Keep what you can beside the creative, and name the others to whoever reviews the ad.",
         "Whatever lies beside the creative.", thirdParties},
    Rule{"request-failed", Severity::Error, "Something that the ad needs could not be loaded.",
         "A picture is missing, or a script that others rely on.", "Check address, type and server.",
         "An answer below 400, within 5 s; \"mraid.js\", which is always there.", requestFailed},
    Rule{"navigation-failed", Severity::Error, "The ad went to an address that cannot be reached.",
         "A page that does so is removed with its banner.", "Open other pages by a link or mraid.open().",
         "velto:// and mraid:// addresses.", navigationFailed},
    Rule{"cookies", Severity::Warning, "The ad sets cookies.",
         "In many countries that needs consent, and applications clear them before each ad.",
         "Do without, or ask for consent first.", "Reading cookies.", cookies},
    Rule{"storage", Severity::Notice, "The ad stores data, or tries to, on the device.",
         "In many countries that needs consent. An ad's page has no address of its own, so localStorage "
         "fails in many.",
         "Do without, and catch the error of what is refused.", "Looking whether there is such a thing.",
         storage},
};

}  // namespace

std::span<const Rule> networkRules() {
  return networkTable;
}

}  // namespace velto::preview
