// What there is to say about a creative, judged from what happened while it played. Each rule looks at a story and answers
// with its evidence, or with nothing; it asks nobody else, so stories that were written down are judged like those of now.
#pragma once

#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "preview/Story.h"

namespace velto::preview {

enum class Severity { Notice, Warning, Error };
const char* nameOf(Severity severity);  // "warning"
// Of such a name; nothing for others.
std::optional<Severity> severityNamed(const std::string& name);

using Evidence = std::optional<JSON::Object>;

struct Rule {
  const char* id;  // "too-heavy": stays as it is
  Severity severity;
  const char* text;  // what was found
  const char* why;   // what is bad about it
  const char* mend;
  const char* fine;                // what comes close and is no finding
  Evidence (*find)(const Story&);  // null: no story tells it (BatchReport.h)
};

struct Finding {
  const Rule* rule = nullptr;
  JSON::Object evidence;
  bool isKnown = false;  // the baseline has it
};

// By theme, each in a file of its own.
std::span<const Rule> weightRules();
std::span<const Rule> networkRules();
std::span<const Rule> behaviourRules();
std::span<const Rule> richMediaRules();
std::span<const Rule> viewabilityRules();
std::span<const Rule> videoAdRules();      // of documents of video ads
std::span<const Rule> videoAdPlayRules();  // and of what comes of them
std::span<const Rule> playRules();         // what only those can tell who started the play
std::vector<const Rule*> allRules();       // sorted by id
// Those that hold for what the story is about: a creative, or a video ad.
std::vector<const Rule*> rulesOf(const Story& story);

// What is not to be told, what is known already, and what lets the run fail.
struct Tolerance {
  std::set<std::string> allowed;
  std::set<std::string> known;
  std::optional<Severity> failsFrom;  // nothing: findings fail no run

  bool fails(const Finding& finding) const {
    return !finding.isKnown && failsFrom && finding.rule->severity >= *failsFrom;
  }
};

// What an earlier run has found (its findings.json), in whatever folder it was.
class Baseline {
 public:
  // Throws UsageError.
  explicit Baseline(const std::string& file);

  // The ids that were found of a creative: of many, those of that name, which is relative to the folder that was played,
  // or else of a path that goes on as this does; of one that is played by itself, of the file of that name.
  std::set<std::string> of(const std::string& creative, const std::string& name = {}) const;

 private:
  struct Known {
    std::string creative, name;
    std::set<std::string> ids;
  };
  std::vector<Known> all_;
};
// Throws UsageError for an id that no rule has.
void checkId(const std::string& id);

std::vector<Finding> judge(const Story& story, const Tolerance& tolerance);

JSON::Object jsonOf(const Finding& finding);
// One page about all rules, in Markdown: docs/findings.md.
std::string findingsGuide();

}  // namespace velto::preview
