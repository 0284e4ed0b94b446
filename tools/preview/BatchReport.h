// The report over many creatives: findings.json, junit.xml and index.html in one folder, beside a folder for each of them
// that holds its own report. Any thread.
#pragma once

#include <velto/platform/foundation/JSON.h>

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "preview/Findings.h"

namespace velto::preview {

inline constexpr int refusedCode = 2;  // of a process that could not play

// How one play of many ended.
struct BatchResult {
  enum class End { Played, Hung, Crashed, Refused };

  std::string name;       // of its folder
  int code = 0;           // as its process would have left it
  JSON::Object document;  // its findings.json
};

// What a play left in its folder, with what its process itself could not tell: findings play-hangs, play-crashes and
// play-refused. `words` say more of that. The folder's findings.json has them, too. Those that are allowed are left out,
// and neither they nor what is known fail the play.
BatchResult resultOf(const std::filesystem::path& folder, const std::string& creative, BatchResult::End end,
                     int code, const std::string& words, const Tolerance& tolerance);

// Takes the reports of those names away, that an earlier run has left there. Throws UsageError, and takes nothing away, when
// one of them is something else: a creative, say, beside which its report would stand.
void makeRoom(const std::filesystem::path& folder, const std::set<std::string>& names);

// Writes the three files. Throws std::runtime_error when they cannot be written.
void writeReport(const std::filesystem::path& folder, const std::vector<BatchResult>& results);

// Joins the reports of shards in a folder of its own; returns the exit code as if all had been played at once. Throws
// UsageError when one of them is no such report, or two have played the same.
int mergeReports(const std::vector<std::string>& shards, const std::string& folder);

// The exit code of a batch: 0; 1 when something failed; 2 when nothing could be played.
int codeOf(const std::vector<BatchResult>& results);

std::vector<std::string> idsOf(const BatchResult& result);
int countOf(const BatchResult& result, const std::string& severity);

}  // namespace velto::preview
