// Links and dates found in text. Any thread; time is linear in the text.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace velto {

// Whether the text, read as prose or markup, contains a link "scheme://…" whose URL contains `part`. A link
// starts where no letter, digit or underscore of any script stands before it, and ends before blanks, quotes,
// angle brackets and control characters. Bytes need not be UTF-8.
bool containsLinkWith(std::string_view text, std::string_view part);

// A W3C date-time "yyyy-MM-ddTHH:mm[:ss]" with a zone: Z or ±hh:mm. Nothing for anything else, impossible
// dates included: hours end at 23, of the zone too, minutes and seconds at 59 (a leap second has no place in
// seconds since 1970).
std::optional<std::chrono::sys_seconds> parseDateTime(const std::string& text);

}  // namespace velto
