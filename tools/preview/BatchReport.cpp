// What the plays have left, joined.
#include "preview/BatchReport.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <set>
#include <stdexcept>

#include "preview/Arguments.h"
#include "preview/BatchPage.h"
#include "preview/ReportFiles.h"

namespace velto::preview {
namespace {

namespace fs = std::filesystem;
using End = BatchResult::End;

constexpr char findingsFile[] = "findings.json";

std::optional<JSON::Object> objectOf(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  const std::string text((std::istreambuf_iterator<char>(in)), {});
  const auto json = in.is_open() ? readJSON(text) : std::nullopt;
  if (!json || !json->object()) return std::nullopt;
  return *json->object();
}

void save(const fs::path& file, const std::string& text) {
  std::ofstream out(file, std::ios::binary);
  if (!(out << text) || !out.flush()) throw std::runtime_error(file.string() + ": cannot be written");
}

void save(const fs::path& file, const JSON::Object& object) {
  save(file, writeJSON(JSON(object), true).value_or("{}") + "\n");
}

// A folder that a play has written to, or nothing yet.
bool isReport(const fs::path& folder) {
  if (!fs::is_directory(fs::symlink_status(folder))) return false;
  return fs::is_empty(folder) || fs::exists(folder / findingsFile) || fs::exists(folder / "output.jsonl") ||
         fs::exists(folder / "events.jsonl");
}

// The page that a process which has ended so could not write any more, from the events that it told.
void writePage(const fs::path& folder, const std::string& creative, int code, const Finding& finding) {
  if (fs::exists(folder / "report.html")) return;
  Story story;
  std::ifstream in(folder / "events.jsonl");
  for (std::string line; std::getline(in, line);)
    if (const auto entry = readJSON(line); entry && entry->object()) story.add(*entry->object());
  save(folder / "report.html", htmlOf({.creative = creative,
                                       .device = "",
                                       .code = code,
                                       .startedAt = 0,
                                       .story = story,
                                       .findings = {finding},
                                       .tolerance = {},
                                       .requests = {},
                                       .folder = folder}));
}

// Of what a process that has ended so cannot write into its report any more.
const Rule& ruleOf(End end) {
  return playRules()[end == End::Hung ? 0 : end == End::Crashed ? 1 : 2];
}

// Why the play itself failed, in the words of its last event of that kind.
std::string failureIn(const fs::path& events) {
  std::ifstream in(events);
  std::string text;
  for (std::string line; std::getline(in, line);) {
    if (line.find("\"event\":\"failure\"") == std::string::npos) continue;
    if (const auto entry = readJSON(line)) text = textOfMember(*entry, "text");
  }
  return text;
}

const JSON::Array& findingsOf(const JSON::Object& document) {
  static const JSON::Array none;
  const auto found = document.find("findings");
  const auto* array = found == document.end() ? nullptr : found->second.array();
  return array ? *array : none;
}

}  // namespace

std::string textOfMember(const JSON& json, const char* key) {
  const auto* object = json.object();
  const auto found = object ? object->find(key) : JSON::Object::const_iterator{};
  const auto* text = object && found != object->end() ? found->second.string() : nullptr;
  return text ? *text : std::string();
}

const JSON::Array& findingsOf(const BatchResult& result) {
  return findingsOf(result.document);
}

std::vector<std::string> idsOf(const BatchResult& result) {
  std::vector<std::string> ids;
  for (const auto& finding : findingsOf(result)) ids.push_back(textOfMember(finding, "id"));
  return ids;
}

int countOf(const BatchResult& result, const std::string& severity) {
  const auto& all = findingsOf(result);
  return static_cast<int>(std::count_if(all.begin(), all.end(), [&](const JSON& finding) {
    return textOfMember(finding, "severity") == severity;
  }));
}

BatchResult resultOf(const fs::path& folder, const std::string& creative, End end, int code,
                     const std::string& words, const Tolerance& tolerance) {
  BatchResult result{.name = folder.filename(), .code = code, .document = {}};
  auto& document = result.document;
  document = objectOf(folder / findingsFile).value_or(JSON::Object{{"creative", creative}});
  if (const auto text = failureIn(folder / "events.jsonl"); !text.empty()) document["failure"] = text;
  if (end != End::Played) {
    Finding finding{&ruleOf(end), {{"code", code}, {"said", words}}};
    finding.isKnown = tolerance.known.contains(finding.rule->id);
    const bool isAllowed = tolerance.allowed.contains(finding.rule->id);
    // What it has said of itself before then holds.
    if (finding.isKnown || isAllowed) result.code = static_cast<int>(numberIn(document, "code"));
    auto findings = findingsOf(document);
    if (!isAllowed) {
      findings.push_back(jsonOf(finding));
      if (end != End::Refused) writePage(folder, creative, result.code, finding);
    }
    std::sort(findings.begin(), findings.end(),
              [](const JSON& a, const JSON& b) { return textOfMember(a, "id") < textOfMember(b, "id"); });
    document["findings"] = std::move(findings);
  }
  document["code"] = result.code;
  if (end != End::Played) save(folder / findingsFile, document);
  return result;
}

void makeRoom(const fs::path& folder, const std::set<std::string>& names) {
  for (const auto& name : names)
    if (std::error_code none; fs::exists(fs::symlink_status(folder / name, none)) && !isReport(folder / name))
      throw UsageError((folder / name).string() + ": is there, and no report: it would be lost");
  for (const auto& name : names) fs::remove_all(folder / name);
}

int codeOf(const std::vector<BatchResult>& results) {
  if (std::all_of(results.begin(), results.end(), [](const auto& result) { return result.code == 0; }))
    return 0;
  return std::all_of(results.begin(), results.end(),
                     [](const auto& result) { return result.code == refusedCode; })
             ? refusedCode
             : 1;
}

void writeReport(const fs::path& folder, const std::vector<BatchResult>& results) {
  fs::create_directories(folder);
  JSON::Array creatives;
  for (const auto& result : results) {
    auto document = result.document;
    document["name"] = result.name;
    creatives.emplace_back(std::move(document));
  }
  save(folder / findingsFile, JSON::Object{{"creatives", std::move(creatives)}});
  save(folder / "junit.xml", junitOf(results));
  save(folder / "index.html", pageOf(results, folder));
}

int mergeReports(const std::vector<std::string>& shards, const std::string& folder) {
  std::vector<BatchResult> results;
  std::set<std::string> names;
  std::vector<std::pair<fs::path, std::string>> parts;
  for (const auto& shard : shards) {
    const auto report = objectOf(fs::path(shard) / findingsFile);
    const auto found = report ? report->find("creatives") : JSON::Object::const_iterator{};
    if (!report || found == report->end() || !found->second.array())
      throw UsageError(shard + ": is no report over many creatives");
    std::error_code none;
    if (fs::equivalent(shard, folder, none))
      throw UsageError(shard + ": the joined report needs a folder of its own");
    for (const auto& creative : *found->second.array()) {
      const auto name = textOfMember(creative, "name");
      // It becomes a path.
      if (name.empty() || name.find('/') != std::string::npos || name[0] == '.' || !creative.object())
        throw UsageError(shard + ": is no report over many creatives");
      if (!names.insert(name).second) throw UsageError(shard + ": has " + name + ", as one before it has");
      auto document = *creative.object();
      document.erase("name");
      const auto code = document.find("code");
      const auto number = code == document.end() ? std::nullopt : code->second.number();
      results.push_back({name, static_cast<int>(number.value_or(refusedCode)), std::move(document)});
      parts.emplace_back(shard, name);
    }
  }
  std::sort(results.begin(), results.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
  makeRoom(folder, names);
  fs::create_directories(folder);
  for (const auto& [shard, name] : parts) {
    if (fs::is_directory(shard / name))
      fs::copy(shard / name, fs::path(folder) / name, fs::copy_options::recursive);
  }
  writeReport(folder, results);
  return codeOf(results);
}

}  // namespace velto::preview
