// Dates by GLib; links by a scan, since a backtracking engine is slow on long lines of nonsense.
#include "velto/platform/foundation/Patterns.h"

#include "velto/platform/foundation/GMemory.h"

#include <glib.h>

namespace velto {
namespace {

using Regex = GOwned<GRegex, g_regex_unref>;

bool isSchemeCharacter(char c) {
  return g_ascii_isalnum(c) || c == '+' || c == '-' || c == '.';
}

// Whether a word may begin behind the text: no letter or digit stands at its end, nor an underscore. Bytes
// that are no UTF-8 are no letters.
bool endsAtBoundary(std::string_view text) {
  if (text.empty()) return true;
  size_t start = text.size() - 1;
  while (start > 0 && text.size() - start < 4 && (static_cast<unsigned char>(text[start]) & 0xC0) == 0x80)
    --start;
  const auto last = text.substr(start);
  const gunichar character = g_utf8_get_char_validated(last.data(), static_cast<gssize>(last.size()));
  const bool isWhole =
      character < 0x110000 && g_unichar_to_utf8(character, nullptr) == static_cast<int>(last.size());
  return !isWhole || (character != '_' && !g_unichar_isalnum(character) && !g_unichar_ismark(character));
}

bool endsLink(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte <= 0x20 || byte == 0x7f || c == '"' || c == '\'' || c == '<' || c == '>' || c == '`';
}

}  // namespace

bool containsLinkWith(std::string_view text, std::string_view part) {
  // Most texts do not contain the part at all, and that is found out fastest.
  if (text.find(part) == std::string_view::npos) return false;
  static constexpr std::string_view mark = "://";
  for (size_t at = text.find(mark); at != std::string_view::npos;) {
    size_t start = at;
    while (start > 0 && isSchemeCharacter(text[start - 1])) --start;
    const bool schemeBegins = start < at && g_ascii_isalpha(text[start]);
    size_t next = at + mark.size();
    if (schemeBegins && endsAtBoundary(text.substr(0, start))) {
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
  static const Regex shape(g_regex_new(
      R"(^\d{4}-\d\d-\d\dT(?:[01]\d|2[0-3]):[0-5]\d(:[0-5]\d)?(Z|[+-](?:[01]\d|2[0-3]):[0-5]\d)$)",
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
