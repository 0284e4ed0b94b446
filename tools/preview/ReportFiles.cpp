// What programs read: findings, requests, test results.
#include "preview/ReportFiles.h"

#include <glib.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <sstream>

namespace velto::preview {
namespace {

std::string isoTime(double seconds) {
  const gint64 milliseconds = std::llround(seconds * 1000);
  GDateTime* time = g_date_time_new_from_unix_utc(milliseconds / 1000);
  char* text = g_date_time_format(time, "%Y-%m-%dT%H:%M:%S");
  char fraction[16];
  g_snprintf(fraction, sizeof fraction, ".%03dZ", static_cast<int>(milliseconds % 1000));
  std::string result = std::string(text) + fraction;
  g_free(text);
  g_date_time_unref(time);
  return result;
}

JSON::Array queryOf(const std::string& address) {
  JSON::Array list;
  const auto begin = address.find('?');
  if (begin == std::string::npos) return list;
  std::istringstream query(address.substr(begin + 1, address.find('#', begin) - begin - 1));
  for (std::string pair; std::getline(query, pair, '&');) {
    const auto equals = pair.find('=');
    list.emplace_back(JSON::Object{{"name", pair.substr(0, equals)},
                                   {"value", equals == std::string::npos ? "" : pair.substr(equals + 1)}});
  }
  return list;
}

JSON::Object harEntry(const JSON::Object& request, const ReportMatter& matter) {
  const double duration = numberIn(request, "duration");
  const double bytes = numberIn(request, "bytes");
  const auto error = textIn(request, "error");
  JSON::Object response{{"status", numberIn(request, "status")},
                        {"statusText", ""},
                        {"httpVersion", ""},
                        {"cookies", JSON::Array()},
                        {"headers", listIn(request, "responseHeaders")},
                        {"content", JSON::Object{{"size", bytes}, {"mimeType", textIn(request, "type")}}},
                        {"redirectURL", ""},
                        {"headersSize", -1},
                        {"bodySize", bytes}};
  if (!error.empty()) response["_error"] = error;
  if (request.contains("redirectedFrom")) response["_redirectedFrom"] = listIn(request, "redirectedFrom");
  return {{"pageref", "page_" + std::to_string(std::lround(numberIn(request, "page")))},
          {"startedDateTime", isoTime(matter.startedAt + numberIn(request, "start") / 1000)},
          {"time", duration},
          {"request", JSON::Object{{"method", textIn(request, "method")},
                                   {"url", textIn(request, "url")},
                                   {"httpVersion", ""},
                                   {"cookies", JSON::Array()},
                                   {"headers", listIn(request, "requestHeaders")},
                                   {"queryString", queryOf(textIn(request, "url"))},
                                   {"headersSize", -1},
                                   {"bodySize", -1}}},
          {"response", std::move(response)},
          {"cache", JSON::Object()},
          {"timings", JSON::Object{{"send", 0}, {"wait", duration}, {"receive", 0}}}};
}

std::string seconds(double milliseconds) {
  char text[32];
  g_ascii_formatd(text, sizeof text, "%.3f", milliseconds / 1000);
  return text;
}

}  // namespace

std::string escapedMarkup(const std::string& text) {
  char* valid = g_utf8_make_valid(text.c_str(), static_cast<gssize>(text.size()));
  std::string result;
  for (const char* at = valid; *at; at = g_utf8_next_char(at)) {
    const gunichar letter = g_utf8_get_char(at);
    const bool isControl =
        (letter < 0x20 && letter != '\n' && letter != '\t') || (letter >= 0x7f && letter < 0xa0);
    if (isControl || letter == 0xfffe || letter == 0xffff)
      result += "\xef\xbf\xbd";
    else if (letter == '<')
      result += "&lt;";
    else if (letter == '>')
      result += "&gt;";
    else if (letter == '&')
      result += "&amp;";
    else if (letter == '"')
      result += "&quot;";
    else if (letter == '\'')
      result += "&#39;";
    else
      result.append(at, static_cast<size_t>(g_utf8_next_char(at) - at));
  }
  g_free(valid);
  return result;
}

JSON::Object findingsJSON(const ReportMatter& matter) {
  JSON::Array list;
  for (const auto& finding : matter.findings) list.emplace_back(jsonOf(finding));
  return {{"creative", matter.creative},
          {"device", matter.device},
          {"code", matter.code},
          {"findings", std::move(list)}};
}

JSON::Object harOf(const ReportMatter& matter) {
  JSON::Array entries;
  std::set<long> numbers;
  auto requests = matter.requests;  // as they ended; readers want them as they began
  std::stable_sort(requests.begin(), requests.end(),
                   [](const auto& a, const auto& b) { return numberIn(a, "start") < numberIn(b, "start"); });
  for (const auto& request : requests) {
    entries.emplace_back(harEntry(request, matter));
    numbers.insert(std::lround(numberIn(request, "page")));
  }
  JSON::Array pages;
  for (const long number : numbers)
    pages.emplace_back(JSON::Object{
        {"startedDateTime", isoTime(matter.startedAt)},
        {"id", "page_" + std::to_string(number)},
        {"title", matter.creative},
        {"pageTimings", JSON::Object{{"onContentLoad", -1},
                                     {"onLoad", matter.story.timeOf("load-finished").value_or(-1)}}}});
  return {
      {"log", JSON::Object{{"version", "1.2"},
                           {"creator", JSON::Object{{"name", "velto-preview"}, {"version", VELTO_VERSION}}},
                           {"pages", std::move(pages)},
                           {"entries", std::move(entries)}}}};
}

// A case for the playing, one for each rule; those that are to fail the run have failed.
std::string junitOf(const ReportMatter& matter) {
  std::ostringstream cases;
  const auto name = escapedMarkup(matter.creative);
  int count = 0, failures = 0;
  const auto add = [&](const std::string& what, const std::string& inner, bool failed) {
    ++count;
    if (failed) ++failures;
    cases << "  <testcase classname=\"" << name << "\" name=\"" << what << "\">" << inner << "</testcase>\n";
  };
  std::string broken;
  for (const auto* failure : matter.story.of("failure")) {
    const auto line = std::lround(numberIn(*failure, "line"));
    const auto text =
        escapedMarkup((line > 0 ? "line " + std::to_string(line) + ": " : "") + textIn(*failure, "text"));
    if (broken.empty()) broken = "<failure message=\"" + text + "\">" + text + "</failure>";
  }
  add("plays", broken, !broken.empty());
  for (const auto* rule : rulesOf(matter.story)) {
    if (matter.tolerance.allowed.contains(rule->id)) continue;
    std::string inner;
    bool fails = false;
    for (const auto& finding : matter.findings) {
      if (finding.rule != rule) continue;
      fails = matter.tolerance.fails(finding);
      const auto text = escapedMarkup(rule->text);
      const auto evidence = escapedMarkup(writeJSON(JSON(finding.evidence), true).value_or(""));
      inner = fails ? "<failure type=\"" + std::string(nameOf(rule->severity)) + "\" message=\"" + text +
                          "\">" + evidence + "</failure>"
                    : "<system-out>" + text + " " + evidence + "</system-out>";
    }
    add(rule->id, inner, fails);
  }
  const auto* end = matter.story.entries().empty() ? nullptr : &matter.story.entries().back();
  std::ostringstream text;
  text << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites>\n<testsuite name=\"" << name
       << "\" tests=\"" << count << "\" failures=\"" << failures << "\" errors=\"0\" skipped=\"0\" time=\""
       << seconds(end ? numberIn(*end, "t") : 0) << "\">\n"
       << cases.str() << "</testsuite>\n</testsuites>\n";
  return text.str();
}

}  // namespace velto::preview
