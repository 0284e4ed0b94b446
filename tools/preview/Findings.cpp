// Judging, baselines, the guide.
#include "preview/Findings.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <sstream>
#include <utility>

#include "preview/Arguments.h"

namespace velto::preview {
namespace {

constexpr std::array severityNames{"notice", "warning", "error"};

enum class About { Creatives, VideoAds, Plays };

struct Theme {
  const char* name;
  std::span<const Rule> (*rules)();
  About about = About::Creatives;
};

constexpr std::array themes{Theme{"Weight", weightRules},
                            Theme{"Network", networkRules},
                            Theme{"Behaviour", behaviourRules},
                            Theme{"Rich media", richMediaRules},
                            Theme{"Viewability and measurement", viewabilityRules},
                            Theme{"Video ads: the document", videoAdRules, About::VideoAds},
                            Theme{"Video ads: what comes of it", videoAdPlayRules, About::VideoAds},
                            Theme{"Plays of many creatives", playRules, About::Plays}};

std::vector<const Rule*> sortedRules(const std::function<bool(About)>& wants) {
  std::vector<const Rule*> rules;
  for (const auto& theme : themes)
    if (wants(theme.about))
      for (const auto& rule : theme.rules()) rules.push_back(&rule);
  std::sort(rules.begin(), rules.end(),
            [](const Rule* a, const Rule* b) { return std::string_view(a->id) < b->id; });
  return rules;
}

std::set<std::string> idsIn(const Entry& report) {
  std::set<std::string> ids;
  for (const auto& finding : listIn(report, "findings"))
    if (const auto* object = finding.object()) ids.insert(textIn(*object, "id"));
  return ids;
}

// How many of the last parts of two paths are equal, and whether these are all of the shorter.
std::pair<int, bool> alike(const std::filesystem::path& one, const std::filesystem::path& other) {
  auto a = one.end(), b = other.end();
  int parts = 0;
  for (; a != one.begin() && b != other.begin() && *std::prev(a) == *std::prev(b); --a, --b) ++parts;
  return {parts, a == one.begin() || b == other.begin()};
}

}  // namespace

const char* nameOf(Severity severity) {
  return severityNames[static_cast<size_t>(severity)];
}

std::optional<Severity> severityNamed(const std::string& name) {
  const auto found = std::find(severityNames.begin(), severityNames.end(), name);
  if (found == severityNames.end()) return std::nullopt;
  return static_cast<Severity>(found - severityNames.begin());
}

std::vector<const Rule*> allRules() {
  return sortedRules([](About) { return true; });
}

std::vector<const Rule*> rulesOf(const Story& story) {
  const auto other = story.isOfVideoAd() ? About::Creatives : About::VideoAds;
  return sortedRules([other](About about) { return about != other; });
}

void checkId(const std::string& id) {
  const auto rules = allRules();
  if (std::none_of(rules.begin(), rules.end(), [&](const Rule* rule) { return rule->id == id; }))
    throw UsageError("\"" + id + "\" is no finding (--explain lists them)");
}

Baseline::Baseline(const std::string& file) {
  std::ifstream in(file);
  std::ostringstream text;
  if (!in || !(text << in.rdbuf())) throw UsageError(file + ": cannot be read");
  const auto json = readJSON(text.str());
  const auto* report = json ? json->object() : nullptr;
  if (!report || !(report->contains("findings") || report->contains("creatives")))
    throw UsageError(file + ": is no findings.json");
  if (report->contains("findings")) all_.push_back({textIn(*report, "creative"), {}, idsIn(*report)});
  for (const auto& one : listIn(*report, "creatives"))
    if (const auto* object = one.object())
      all_.push_back({textIn(*object, "creative"), textIn(*object, "name"), idsIn(*object)});
}

std::set<std::string> Baseline::of(const std::string& creative, const std::string& name) const {
  const std::set<std::string>* best = nullptr;
  int most = 0;
  for (const auto& known : all_) {
    if (!name.empty() && known.name == name) return known.ids;
    const auto [parts, isWhole] = alike(std::filesystem::path(known.creative).lexically_normal(),
                                        std::filesystem::path(creative).lexically_normal());
    // Among many, index.html of another folder is another creative.
    if (parts <= most || !(isWhole || name.empty())) continue;
    most = parts;
    best = &known.ids;
  }
  return best ? *best : std::set<std::string>();
}

std::vector<Finding> judge(const Story& story, const Tolerance& tolerance) {
  std::vector<Finding> findings;
  for (const auto* rule : rulesOf(story)) {
    if (!rule->find || tolerance.allowed.contains(rule->id)) continue;
    if (auto evidence = rule->find(story))
      findings.push_back({rule, std::move(*evidence), tolerance.known.contains(rule->id)});
  }
  return findings;
}

JSON::Object jsonOf(const Finding& finding) {
  const auto& rule = *finding.rule;
  JSON::Object object{{"id", rule.id},
                      {"severity", nameOf(rule.severity)},
                      {"text", rule.text},
                      {"why", rule.why},
                      {"mend", rule.mend},
                      {"help", std::string("docs/findings.md#") + rule.id},
                      {"evidence", finding.evidence}};
  if (finding.isKnown) object["known"] = true;
  return object;
}

std::string findingsGuide() {
  std::ostringstream page;
  page << "# What velto-preview finds\n\n"
          "Each finding has a name that stays as it is, for `--allow NAME` and `expect no finding NAME`. "
          "`--fail-on` says from which\n"
          "severity on a run fails; `--strict` is `--fail-on warning`. This page is what `velto-preview "
          "--explain` writes.\n";
  for (const auto& theme : themes) {
    page << "\n## " << theme.name << "\n";
    for (const auto& rule : theme.rules())
      page << "\n### " << rule.id << "\n\n"
           << rule.text << " (" << nameOf(rule.severity) << ")\n\n"
           << "- **Why.** " << rule.why << "\n- **Mend.** " << rule.mend << "\n- **Fine.** " << rule.fine
           << "\n";
  }
  return page.str();
}

}  // namespace velto::preview
