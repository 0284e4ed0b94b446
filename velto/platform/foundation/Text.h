// Texts and bytes: digests, base64, identifiers, numbers in and out of text, all independent of the process's
// locale. Any thread.
#pragma once

#include "velto/Export.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velto {

VELTO_EXPORT bool isValidUTF8(std::string_view text);  // a zero byte is a character like others
// With what is none replaced (U+FFFD).
VELTO_EXPORT std::string validUTF8(const std::string& text);

// RFC 1321, as 32 lowercase hexadecimal digits.
VELTO_EXPORT std::string md5Hex(std::string_view bytes);

// RFC 4648, one line.
VELTO_EXPORT std::string base64Encode(std::string_view bytes);
// Skips characters outside the alphabet; nothing when the rest is no whole base64 text.
VELTO_EXPORT std::optional<std::string> base64Decode(std::string_view text);

// A random UUID (RFC 9562, version 4), in upper case as the phone platforms write it.
VELTO_EXPORT std::string uuidString();

// Characters of the alphabet, each drawn by itself and with equal chance, from the system's source of
// randomness.
VELTO_EXPORT std::string randomText(std::string_view alphabet, size_t length);

// With exactly that many decimals, rounded, as "%.*f" prints in the C locale.
VELTO_EXPORT std::string fixedDecimals(double value, int decimals);

// With at most 16 significant digits and no more decimals than needed ("320", "0.5", "1e+21"), as number
// objects of the phone platforms describe themselves.
VELTO_EXPORT std::string numberText(double value);

// The whole text as a decimal number ("-12", "2.5", "1E3"); nothing for anything else.
VELTO_EXPORT std::optional<double> parseNumber(std::string_view text);
// The number at the start of the text after blanks, 0 when there is none.
VELTO_EXPORT double leadingNumber(std::string_view text);
// The integer at the start of the text after blanks, 0 when there is none; held at the ends of the range.
VELTO_EXPORT int64_t leadingInteger(std::string_view text);

VELTO_EXPORT std::vector<std::string> split(std::string_view text, std::string_view separator);
VELTO_EXPORT std::string join(const std::vector<std::string>& parts, std::string_view separator);
VELTO_EXPORT std::string replaceAll(std::string text, std::string_view from, std::string_view to);
VELTO_EXPORT std::string lowercased(std::string text);  // ASCII letters only

}  // namespace velto
