// Tables and test cases.
#include "preview/BatchPage.h"

#include <glib.h>

#include <algorithm>
#include <map>

#include "preview/ReportFiles.h"

namespace velto::preview {
namespace {

namespace fs = std::filesystem;

constexpr char head[] = R"(<!DOCTYPE html>
<html lang="en"><head><meta charset="utf-8"><meta name="viewport" content="width=device-width">
<title>velto-preview: %s</title><style>
:root { color-scheme: light dark; --line: #8884; --soft: #8881; --error: #c01c28; --warning: #9a6700; --fine: #1a7f37;
  --link: #0b57d0 }
@media (prefers-color-scheme: dark) {
  :root { --error: #ff7b72; --warning: #e3b341; --fine: #56d364; --link: #8ab4f8 }
}
body { font: 15px/1.45 system-ui, sans-serif; margin: 0 auto; padding: 1rem; max-width: 72rem }
h1 { font-size: 1.5rem; margin: .2em 0 } h2 { font-size: 1.1rem; margin: 1.6em 0 .4em }
a { color: var(--link) } table { border-collapse: collapse; width: 100%% }
th, td { padding: .45rem .6rem; border-bottom: 1px solid var(--line); text-align: left; vertical-align: top }
th { font-weight: 600; white-space: nowrap } tbody tr:hover { background: var(--soft) }
td.name { overflow-wrap: anywhere; min-width: 9rem } td.number { text-align: right; font-variant-numeric: tabular-nums }
td img { width: 96px; height: 64px; object-fit: cover; object-position: bottom; background: #fff; border: 1px solid var(--line); border-radius: 4px; display: block }
.fine { color: var(--fine) } .error { color: var(--error) } .warning { color: var(--warning) }
.tag { white-space: nowrap; display: inline-block; margin-right: .6em }
@media (max-width: 40rem) {
  table.plays, .plays tbody, .plays tr, .plays td { display: block } .plays thead { display: none }
  .plays tr { border-bottom: 1px solid var(--line); padding: .6rem 0 }
  .plays td { border: 0; padding: .1rem 0 }
}
</style></head><body>
)";

bool has(const BatchResult& result, const std::string& id) {
  const auto ids = idsOf(result);
  return std::find(ids.begin(), ids.end(), id) != ids.end();
}

bool isBroken(const BatchResult& result) {
  return has(result, "play-hangs") || has(result, "play-crashes") || has(result, "play-refused");
}

std::string wordOf(const BatchResult& result) {
  for (const char* word : {"hangs", "crashes", "refused"})
    if (has(result, std::string("play-") + word)) return word;
  if (result.code != 0) return "failed";
  return countOf(result, "error") > 0 ? "played" : "passed";  // nobody asked that errors fail it
}

std::string counted(size_t number, const std::string& what) {
  return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
}

std::string pictureOf(const fs::path& folder, const std::string& name) {
  std::vector<std::string> pictures;
  std::error_code none;
  const auto first = name + "/pictures/loaded.png";  // of a play without steps
  if (fs::exists(folder / first, none)) return first;
  for (const auto& entry : fs::directory_iterator(folder / name / "pictures", none))
    if (entry.path().extension() == ".png") pictures.push_back(entry.path().filename());
  if (pictures.empty()) return {};
  return name + "/pictures/" + *std::min_element(pictures.begin(), pictures.end());
}

std::string rowOf(const BatchResult& result, const fs::path& folder) {
  const auto picture = pictureOf(folder, result.name);
  std::string row = "<tr><td>";
  if (!picture.empty()) row += "<img loading=\"lazy\" alt=\"\" src=\"" + escapedMarkup(picture) + "\">";
  row += "</td><td class=\"name\">";
  const auto name = escapedMarkup(result.name);
  const bool hasPage = fs::exists(folder / result.name / "report.html");
  row += hasPage ? "<a href=\"" + name + "/report.html\">" + name + "</a>" : name;
  row += std::string("</td><td class=\"") + (result.code == 0 ? "fine" : "error") + "\">" + wordOf(result) +
         "</td><td>";
  if (const auto why = textOfMember(result.document, "failure"); !why.empty())
    row += "<div>" + escapedMarkup(why) + "</div>";
  for (const auto& finding : findingsOf(result))
    row += "<span class=\"tag " + escapedMarkup(textOfMember(finding, "severity")) + "\" title=\"" +
           escapedMarkup(textOfMember(finding, "text")) + "\">" + escapedMarkup(textOfMember(finding, "id")) +
           "</span>";
  return row + "</td></tr>\n";
}

}  // namespace

std::string pageOf(const std::vector<BatchResult>& results, const fs::path& folder) {
  const auto failed = static_cast<size_t>(
      std::count_if(results.begin(), results.end(), [](const auto& result) { return result.code != 0; }));
  struct Use {
    std::string severity;
    size_t creatives = 0;
  };
  std::map<std::string, Use> uses;
  size_t errors = 0, warnings = 0;
  for (const auto& result : results) {
    errors += static_cast<size_t>(countOf(result, "error"));
    warnings += static_cast<size_t>(countOf(result, "warning"));
    for (const auto& finding : findingsOf(result)) {
      auto& use = uses[textOfMember(finding, "id")];
      use.severity = textOfMember(finding, "severity");
      ++use.creatives;
    }
  }
  const auto title = counted(results.size(), "creative") + ", " +
                     (failed ? std::to_string(failed) + " failed" : "none failed");
  char* begin = g_strdup_printf(head, title.c_str());
  std::string page = begin;
  g_free(begin);
  page += "<h1>" + title + "</h1>\n<p>" + counted(errors, "error") + ", " + counted(warnings, "warning") +
          ". <a href=\"findings.json\">findings.json</a> · <a href=\"junit.xml\">junit.xml</a></p>\n";
  page +=
      "<table "
      "class=\"plays\"><thead><tr><th></th><th>Creative</th><th>Result</th><th>Findings</th></tr></thead>"
      "<tbody>\n";
  for (const auto& result : results) page += rowOf(result, folder);
  page += "</tbody></table>\n";
  if (!uses.empty()) {
    page +=
        "<h2>Findings</h2>\n<table><thead><tr><th>Finding</th><th>Severity</th><th>Creatives</th></tr></"
        "thead><tbody>\n";
    for (const auto& [id, use] : uses)
      page += "<tr><td>" + escapedMarkup(id) + "</td><td class=\"" + escapedMarkup(use.severity) + "\">" +
              escapedMarkup(use.severity) + "</td><td class=\"number\">" + std::to_string(use.creatives) +
              "</td></tr>\n";
    page += "</tbody></table>\n";
  }
  return page + "</body></html>\n";
}

std::string junitOf(const std::vector<BatchResult>& results) {
  std::string cases;
  size_t failures = 0, errors = 0;
  for (const auto& result : results) {
    cases += "    <testcase classname=\"velto-preview\" name=\"" + escapedMarkup(result.name) + "\"";
    if (result.code == 0) {
      cases += "/>\n";
      continue;
    }
    const bool broken = isBroken(result);
    ++(broken ? errors : failures);
    std::string ids, lines = textOfMember(result.document, "failure");
    if (!lines.empty()) lines += "\n";
    for (const auto& finding : findingsOf(result)) {
      ids += (ids.empty() ? "" : ", ") + textOfMember(finding, "id");
      lines += textOfMember(finding, "severity") + " " + textOfMember(finding, "id") + ": " +
               textOfMember(finding, "text") + "\n";
    }
    const std::string element = broken ? "error" : "failure";
    cases += "><" + element + " message=\"" + escapedMarkup(ids.empty() ? "a step failed" : ids) + "\">" +
             escapedMarkup(lines) + "</" + element + "></testcase>\n";
  }
  const auto counts = " tests=\"" + std::to_string(results.size()) + "\" failures=\"" +
                      std::to_string(failures) + "\" errors=\"" + std::to_string(errors) + "\"";
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites" + counts +
         ">\n  <testsuite name=\"velto-preview\"" + counts + ">\n" + cases +
         "  </testsuite>\n</testsuites>\n";
}

}  // namespace velto::preview
