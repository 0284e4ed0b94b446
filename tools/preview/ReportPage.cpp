// report.html: one page that needs nothing else. All that comes from a creative is escaped.
#include <glib.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>

#include "preview/ReportFiles.h"
#include "preview/ReportStyle.h"

namespace velto::preview {
namespace {

constexpr size_t mostRows = 300;
constexpr size_t mostMarks = 400;  // of a lane
constexpr size_t mostFacts = 10;   // of one kind
constexpr size_t longestText = 600;

std::string clipped(const std::string& text) {
  if (text.size() <= longestText) return escapedMarkup(text);
  auto end = longestText;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80) --end;  // not inside of a letter
  return escapedMarkup(text.substr(0, end)) + "…";
}

std::string fixed(double value, int digits) {
  char form[8], text[64];
  g_snprintf(form, sizeof form, "%%.%df", digits);
  g_ascii_formatd(text, sizeof text, form, value);
  return text;
}

std::string bytesText(double bytes) {
  if (bytes < 1000) return fixed(bytes, 0) + " B";
  return bytes < 1e6 ? fixed(bytes / 1e3, 1) + " kB" : fixed(bytes / 1e6, 2) + " MB";
}

std::string timeText(double milliseconds) {
  return milliseconds < 1000 ? fixed(milliseconds, 0) + " ms" : fixed(milliseconds / 1000, 2) + " s";
}

// As a data URL; empty where there is no such file.
std::string embedded(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  std::ostringstream bytes;
  if (!in || !(bytes << in.rdbuf())) return {};
  const auto text = bytes.str();
  char* coded = g_base64_encode(reinterpret_cast<const guchar*>(text.data()), text.size());
  std::string url = std::string("data:image/png;base64,") + coded;
  g_free(coded);
  return url;
}

class Writer {
 public:
  explicit Writer(const ReportMatter& matter) : matter_(matter), story_(matter.story) {
    for (const auto& entry : story_.entries()) length_ = std::max(length_, numberIn(entry, "t"));
  }

  std::string text() {
    out_ << "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
            "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
            "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src "
            "'unsafe-inline'; img-src data:\">\n"
         << "<title>" << clipped(name()) << " – velto-preview</title>\n<style>" << reportStyle
         << "</style>\n</head>\n<body>\n<main>\n";
    head();
    findings();
    pictures();
    timeline();
    if (story_.isOfVideoAd()) told();
    requests();
    console();
    steps();
    events();
    out_ << "</main>\n</body>\n</html>\n";
    return out_.str();
  }

 private:
  std::string name() const { return std::filesystem::path(matter_.creative).filename().string(); }

  void head() {
    std::array<int, 3> counts{};
    for (const auto& finding : matter_.findings) ++counts[static_cast<size_t>(finding.rule->severity)];
    out_ << "<header>\n<h1>" << clipped(name()) << "</h1>\n<p class=\"soft\">" << clipped(matter_.creative)
         << (matter_.device.empty() ? "" : " · screen " + escapedMarkup(matter_.device)) << "</p>\n";
    const char* verdict = matter_.code != 0 ? "failed" : matter_.tolerance.failsFrom ? "passed" : "played";
    out_ << "<span class=\"verdict " << (matter_.code == 0 ? "fine" : "error") << "\">" << verdict
         << "</span>\n";
    for (const auto* failure : story_.of("failure"))
      out_ << "<p class=\"error\">" << clipped(textIn(*failure, "text")) << "</p>\n";
    out_ << "<nav><a href=\"#findings\">Findings</a><a href=\"#pictures\">Pictures</a><a "
            "href=\"#timeline\">Timeline</a>"
         << (story_.isOfVideoAd() ? "<a href=\"#told\">Told</a>" : "")
         << "<a href=\"#requests\">Requests</a><a href=\"#console\">Console</a><a "
            "href=\"#events\">Events</a></nav>\n</header>\n";
    double bytes = 0;
    for (const auto* request : story_.of("resource")) bytes += numberIn(*request, "bytes");
    out_ << "<section>\n<dl class=\"figures\">";
    figure("Errors", std::to_string(counts[2]));
    figure("Warnings", std::to_string(counts[1]));
    figure("Notices", std::to_string(counts[0]));
    figure("Requests", std::to_string(story_.of("resource").size()));
    figure("Network", bytesText(bytes));
    if (const auto loaded = story_.timeOf("load-finished")) figure("Loaded after", timeText(*loaded));
    if (const auto* weight = story_.last("weight"); weight && weight->contains("processor"))
      figure("Processor", fixed(numberIn(*weight, "processor"), 2) + " s");
    figure("Played for", timeText(length_));
    out_ << "</dl>\n</section>\n";
  }

  void figure(const char* title, const std::string& value) {
    out_ << "<div><dt>" << title << "</dt><dd>" << value << "</dd></div>";
  }

  void begin(const char* id, const char* title) {
    out_ << "<section id=\"" << id << "\">\n<h2>" << title << "</h2>\n";
  }

  void findings() {
    begin("findings", "Findings");
    if (matter_.findings.empty()) out_ << "<p class=\"fine\">Nothing to complain of.</p>\n";
    auto sorted = matter_.findings;
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const auto& a, const auto& b) { return a.rule->severity > b.rule->severity; });
    for (const auto& finding : sorted) {
      const auto& rule = *finding.rule;
      const char* severity = nameOf(rule.severity);
      out_ << "<article class=\"" << severity << "\">\n<h3>" << escapedMarkup(rule.text) << "<span class=\""
           << severity << "\">" << severity << " · <code>" << rule.id << "</code>"
           << (finding.isKnown ? " · known" : "") << "</span></h3>\n<p>" << escapedMarkup(rule.why)
           << "</p>\n<p><b>Mend:</b> " << escapedMarkup(rule.mend) << "</p>\n";
      evidence(finding.evidence);
      out_ << "</article>\n";
    }
    out_ << "</section>\n";
  }

  // A line for each thing; what belongs together stays on one.
  void evidence(const JSON::Object& facts) {
    if (facts.empty()) return;
    out_ << "<ul class=\"facts\">\n";
    for (const auto& [name, fact] : facts) {
      const auto* list = fact.array();
      if (!list) {
        out_ << "<li><span class=\"soft\">" << escapedMarkup(name) << "</span> " << inLine(fact, name)
             << "</li>\n";
        continue;
      }
      for (size_t i = 0; i < std::min(list->size(), mostFacts); ++i)
        out_ << "<li>" << inLine((*list)[i], name) << "</li>\n";
      if (list->size() > mostFacts)
        out_ << "<li class=\"soft\">and " << list->size() - mostFacts << " more</li>\n";
    }
    out_ << "</ul>\n";
  }

  static std::string inLine(const JSON& fact, const std::string& name) {
    if (const auto* object = fact.object()) {
      std::string line;
      for (const auto& [key, value] : *object) {
        if (value.string() && value.string()->empty()) continue;
        const bool isClear = key == "url" || key == "text";
        line += (line.empty() ? "" : " · ") +
                (isClear ? std::string() : "<span class=\"soft\">" + escapedMarkup(key) + "</span> ") +
                inLine(value, key);
      }
      return line;
    }
    if (fact.string()) return clipped(*fact.string());
    const auto number = fact.number();
    if (name == "bytes" && number) return bytesText(*number);
    return clipped(writeJSON(fact, false).value_or(""));
  }

  void pictures() {
    begin("pictures", "Pictures");
    out_ << "<div class=\"pictures\">\n";
    bool none = true;
    for (const auto* picture : story_.of("screenshot")) {
      const auto url = embedded(textIn(*picture, "file"));
      if (url.empty()) continue;
      none = false;
      const auto after = textIn(*picture, "after");
      const auto title =
          after.empty() ? std::filesystem::path(textIn(*picture, "file")).stem().string() : after;
      out_ << "<figure><img alt=\"" << clipped(title) << "\" src=\"" << url << "\"><figcaption>"
           << clipped(title) << " · " << timeText(numberIn(*picture, "t")) << "</figcaption></figure>\n";
    }
    out_ << "</div>\n" << (none ? "<p class=\"soft\">None were taken.</p>\n" : "") << "</section>\n";
  }

  std::string place(double time) const { return fixed(length_ > 0 ? time / length_ * 100 : 0, 2) + "%"; }

  // What an entry says, in a line.
  std::string summary(const Entry& entry) const {
    auto told = entry;
    for (const char* key : {"event", "t"}) told.erase(key);
    return textIn(entry, "event") + " " + writeJSON(JSON(told), false).value_or("");
  }

  void lane(const char* title, const std::vector<const char*>& kinds) {
    out_ << "<span>" << title << "</span><svg role=\"img\" aria-label=\"" << title << "\">";
    size_t marks = 0;
    for (const auto& entry : story_.entries()) {
      const auto event = textIn(entry, "event");
      if (std::find(kinds.begin(), kinds.end(), event) == kinds.end() || ++marks > mostMarks) continue;
      const bool failed = event == "script-error" || event == "navigation-failed" ||
                          event == "unresponsive" || event == "failure" || event == "crashed" ||
                          entry.contains("error") || numberIn(entry, "status") >= 400;
      const bool done = event == "load-finished" || textIn(entry, "name") == "DidFinishLoad";
      const char* look = failed ? "error" : done ? "fine" : "";
      if (event == "resource")
        out_ << "<rect class=\"" << look << "\" x=\"" << place(numberIn(entry, "start")) << "\" y=\""
             << 4 + marks % 5 * 6 << "\" height=\"4\" rx=\"1\" width=\""
             << place(std::max(numberIn(entry, "duration"), length_ / 400)) << "\">";
      else
        out_ << "<circle class=\"" << look << "\" cx=\"" << place(numberIn(entry, "t"))
             << "\" cy=\"17\" r=\"4\">";
      out_ << "<title>" << timeText(numberIn(entry, "t")) << " " << clipped(summary(entry)) << "</title>"
           << (event == "resource" ? "</rect>" : "</circle>");
    }
    out_ << "</svg>\n";
  }

  void timeline() {
    begin("timeline", "Timeline");
    out_ << "<div class=\"lanes\">\n<span></span><svg class=\"scale\" aria-hidden=\"true\">";
    for (int part = 0; part <= 4; ++part)
      out_ << "<text y=\"12\" text-anchor=\""
           << (part == 0   ? "start"
               : part == 4 ? "end"
                           : "middle")
           << "\" x=\"" << part * 25 << "%\">" << timeText(length_ * part / 4) << "</text>";
    out_ << "</svg>\n";
    lane("Page", {"console", "script-error", "resource-error", "navigation", "navigation-failed", "command",
                  "refused", "load-finished", "dialog", "storage", "sound", "vibration", "early",
                  "unresponsive", "crashed"});
    lane("Library",
         {"callback", "library", "state", "frame", "statement", "open", "video", "picture", "calendar"});
    lane("Network", {"resource"});
    if (story_.isOfVideoAd()) lane("Told", {"told"});
    lane("Measurement", {"measurement"});
    lane("Steps", {"step", "failure", "screenshot"});
    out_ << "</div>\n<p class=\"soft\">Green: loaded. Red: failed.</p>\n</section>\n";
  }

  void more(size_t count) {
    if (count > mostRows)
      out_ << "<p class=\"soft\">… and " << count - mostRows << " more, in events.jsonl.</p>\n";
  }

  void requests() {
    begin("requests", "Requests");
    const auto all = story_.of("resource");
    if (all.empty())
      out_ << "<p class=\"soft\">Everything is in the page itself.</p>\n";
    else
      out_ << "<table><tr><th>Address<th class=\"wide\">Type<th class=\"number\">Status<th "
              "class=\"number\">Size"
              "<th class=\"number\">Time<th class=\"way\">When</tr>\n";
    for (size_t i = 0; i < std::min(all.size(), mostRows); ++i) {
      const auto& request = *all[i];
      const double status = numberIn(request, "status");
      const auto error = textIn(request, "error");
      const bool failed = status >= 400 || !error.empty();
      out_ << "<tr><td>" << clipped(story_.shortAddress(textIn(request, "url")));
      for (const auto& passed : listIn(request, "redirectedFrom"))
        if (passed.string())
          out_ << "<br><span class=\"soft\">by way of " << clipped(story_.shortAddress(*passed.string()))
               << "</span>";
      if (!error.empty()) out_ << "<br><span class=\"error\">" << clipped(error) << "</span>";
      out_ << "<td class=\"wide\">" << clipped(textIn(request, "type")) << "<td class=\"number"
           << (failed ? " error" : "") << "\">" << (status > 0 ? fixed(status, 0) : "–")
           << "<td class=\"number\">"
           << (request.contains("bytes") ? bytesText(numberIn(request, "bytes")) : "–")
           << "<td class=\"number\">" << timeText(numberIn(request, "duration"))
           << "<td class=\"way\"><i style=\"margin-left:" << place(numberIn(request, "start"))
           << ";width:" << place(numberIn(request, "duration")) << "\"></i></tr>\n";
    }
    if (!all.empty()) out_ << "</table>\n";
    more(all.size());
    out_ << "</section>\n";
  }

  void rows(const std::vector<const Entry*>& entries, const std::function<std::string(const Entry&)>& what) {
    out_ << "<table>\n";
    for (size_t i = 0; i < std::min(entries.size(), mostRows); ++i)
      out_ << "<tr><td class=\"number time\">" << timeText(numberIn(*entries[i], "t")) << "<td>"
           << what(*entries[i]) << "</tr>\n";
    out_ << "</table>\n";
    more(entries.size());
  }

  void console() {
    begin("console", "Console");
    std::vector<const Entry*> lines;
    for (const auto& entry : story_.entries())
      if (const auto event = textIn(entry, "event");
          event == "console" || event == "script-error" || event == "dialog")
        lines.push_back(&entry);
    if (lines.empty())
      out_ << "<p class=\"soft\">Nothing was written.</p>\n";
    else
      rows(lines, [&](const Entry& line) {
        const auto event = textIn(line, "event");
        const auto level = event == "console"  ? textIn(line, "level")
                           : event == "dialog" ? textIn(line, "type")
                                               : "error";
        const char* look = level == "error" ? "error" : level == "warn" ? "warning" : "soft";
        auto text = textIn(line, "text");
        if (text.empty()) text = textIn(line, "message");
        auto from = story_.shortAddress(textIn(line, "source"));
        if (isSetIn(line, "line")) from += ":" + fixed(numberIn(line, "line"), 0);
        return "<span class=\"" + std::string(look) + "\">" + clipped(level) + "</span> " + clipped(text) +
               (from.empty() ? "" : " <span class=\"soft\">" + clipped(from) + "</span>");
      });
    out_ << "</section>\n";
  }

  // What the ad's servers were told, and what they answered.
  void told() {
    begin("told", "Told");
    const auto all = story_.of("told");
    if (all.empty())
      out_ << "<p class=\"soft\">Nobody was told anything.</p>\n";
    else
      rows(all, [&](const Entry& one) {
        const double status = numberIn(one, "status");
        const auto error = textIn(one, "error");
        const bool failed = status >= 400 || !error.empty();
        return clipped(textIn(one, "name")) + " <span class=\"" + (failed ? "error" : "soft") + "\">" +
               (error.empty() ? fixed(status, 0) : clipped(error)) + "</span> " +
               clipped(story_.shortAddress(textIn(one, "url")));
      });
    out_ << "</section>\n";
  }

  void steps() {
    auto all = story_.of("step");
    std::erase_if(all, [](const Entry* step) { return numberIn(*step, "line") == 0; });  // the tool's own
    if (all.empty()) return;
    begin("steps", "Steps");
    rows(all, [&](const Entry& step) {
      for (const auto* failure : story_.of("failure"))
        if (numberIn(*failure, "line", -1) == numberIn(step, "line"))
          return "<span class=\"error\">" + clipped(textIn(step, "text")) + " – " +
                 clipped(textIn(*failure, "text")) + "</span>";
      return clipped(textIn(step, "text"));
    });
    out_ << "</section>\n";
  }

  void events() {
    begin("events", "Events");
    std::vector<const Entry*> all;
    for (const auto& entry : story_.entries()) all.push_back(&entry);
    out_ << "<details><summary>All " << all.size() << " events</summary>\n";
    rows(all, [&](const Entry& entry) { return clipped(summary(entry)); });
    out_ << "</details>\n</section>\n";
  }

  const ReportMatter& matter_;
  const Story& story_;
  double length_ = 0;  // milliseconds
  std::ostringstream out_;
};

}  // namespace

std::string htmlOf(const ReportMatter& matter) {
  return Writer(matter).text();
}

}  // namespace velto::preview
