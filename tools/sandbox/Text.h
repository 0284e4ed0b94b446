// Small text tools of the sandbox server: percent-decoding, queries, base64, character classes.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velto::sandbox {

// Percent-decoding of RFC 3986: "+" stays "+"; a "%" without two hexadecimal digits stays as it is.
std::string percentDecode(std::string_view text);

// The decoded name-value pairs of a request target such as "/path?a=1&b=2", in order.
std::vector<std::pair<std::string, std::string>> decodeQuery(std::string_view target);

// Strict base64 of one line: alphabet and padding must be right.
std::optional<std::string> base64Decode(std::string_view text);
std::string base64Encode(std::string_view bytes);

std::string lowerCase(std::string_view text);
bool isDigits(std::string_view text);  // at least one decimal digit and nothing else
bool isUtf8(std::string_view text);
bool isHostName(std::string_view text);  // letters, digits, "-" and "." only
std::vector<std::string> split(std::string_view text, std::string_view separator);
std::string join(const std::vector<std::string>& parts, std::string_view separator);

}  // namespace velto::sandbox
