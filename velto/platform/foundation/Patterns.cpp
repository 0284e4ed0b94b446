// Regular expressions and dates by GLib; links by a scan, since a backtracking engine is slow on long lines
// of nonsense.
#include "velto/platform/foundation/Patterns.h"

#include "velto/platform/foundation/GMemory.h"

#include <glib.h>

namespace velto {
namespace {

using Regex = GOwned<GRegex, g_regex_unref>;

bool isSchemeCharacter(char c) {
  return g_ascii_isalnum(c) || c == '+' || c == '-' || c == '.';
}

bool endsLink(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte <= 0x20 || byte == 0x7f || c == '"' || c == '\'' || c == '<' || c == '>' || c == '`';
}

}  // namespace

std::optional<std::string> replaceMatches(const std::string& text, const std::string& pattern,
                                          bool ignoringCase, std::string_view replacement) {
  const auto flags =
      static_cast<GRegexCompileFlags>(G_REGEX_OPTIMIZE | (ignoringCase ? G_REGEX_CASELESS : 0));
  Regex regex(g_regex_new(pattern.c_str(), flags, GRegexMatchFlags(0), nullptr));
  if (!regex || !g_utf8_validate_len(text.data(), text.size(), nullptr)) return std::nullopt;
  GText result(g_regex_replace_literal(regex.get(), text.data(), static_cast<gssize>(text.size()), 0,
                                       std::string(replacement).c_str(), GRegexMatchFlags(0), nullptr));
  return result ? std::optional<std::string>(result.get()) : std::nullopt;
}

bool containsLinkWith(std::string_view text, std::string_view part) {
  // Most texts do not contain the part at all, and that is found out fastest.
  if (text.find(part) == std::string_view::npos) return false;
  static constexpr std::string_view mark = "://";
  for (size_t at = text.find(mark); at != std::string_view::npos;) {
    size_t start = at;
    while (start > 0 && isSchemeCharacter(text[start - 1])) --start;
    const bool schemeBegins = start < at && g_ascii_isalpha(text[start]);
    const bool atBoundary =
        start == 0 || (text[start - 1] != '_' && static_cast<unsigned char>(text[start - 1]) < 0x80);
    size_t next = at + mark.size();
    if (schemeBegins && atBoundary) {
      while (next < text.size() && !endsLink(text[next])) ++next;
      const bool namesSomething = next > at + mark.size();
      if (namesSomething && text.substr(start, next - start).find(part) != std::string_view::npos)
        return true;
    }
    at = text.find(mark, next);
  }
  return false;
}

std::optional<std::chrono::sys_seconds> parseDateTime(const std::string& text) {
  static const Regex shape(g_regex_new(R"(^\d{4}-\d\d-\d\dT\d\d:\d\d(:\d\d)?(Z|[+-]\d\d:\d\d)$)",
                                       G_REGEX_DOLLAR_ENDONLY, GRegexMatchFlags(0), nullptr));
  GOwned<GMatchInfo, g_match_info_unref> match;
  GMatchInfo* found = nullptr;
  const bool matches = text.size() < 64 && g_utf8_validate_len(text.data(), text.size(), nullptr) &&
                       g_regex_match(shape.get(), text.c_str(), GRegexMatchFlags(0), &found);
  match.reset(found);
  if (!matches) return std::nullopt;
  // GLib wants the seconds.
  GText seconds(g_match_info_fetch(match.get(), 1));
  const std::string whole = seconds && *seconds.get() ? text : text.substr(0, 16) + ":00" + text.substr(16);
  GOwned<GDateTime, g_date_time_unref> date(g_date_time_new_from_iso8601(whole.c_str(), nullptr));
  if (!date) return std::nullopt;
  return std::chrono::sys_seconds(std::chrono::seconds(g_date_time_to_unix(date.get())));
}

}  // namespace velto
