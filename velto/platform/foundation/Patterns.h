// Regular expressions (PCRE syntax), link detection and dates. Any thread; time is linear in the text for
// what is used here.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace velto {

// Every match replaced by the text as it stands; nothing when the pattern is no regular expression or the
// text is not UTF-8.
std::optional<std::string> replaceMatches(const std::string& text, const std::string& pattern,
                                          bool ignoringCase, std::string_view replacement);

// Whether the text, read as prose or markup, contains a link "scheme://…" whose URL contains `part`. A link
// starts at a word boundary and ends before blanks, quotes, angle brackets and control characters. Bytes need
// not be UTF-8.
bool containsLinkWith(std::string_view text, std::string_view part);

// A W3C date-time "yyyy-MM-ddTHH:mm[:ss]" with a zone: Z or ±hh:mm. Nothing for anything else, impossible
// dates included.
std::optional<std::chrono::sys_seconds> parseDateTime(const std::string& text);

}  // namespace velto
