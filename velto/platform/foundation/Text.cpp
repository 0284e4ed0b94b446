// Texts and bytes: GLib where it has the thing, the standard library elsewhere.
#include "velto/platform/foundation/Text.h"

#include "velto/platform/foundation/GMemory.h"

#include <glib.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace velto {
namespace {

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}
bool isBlank(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

std::string_view withoutLeadingBlanks(std::string_view text) {
  text.remove_prefix(static_cast<size_t>(std::find_if_not(text.begin(), text.end(), isBlank) - text.begin()));
  return text;
}

// The length of the decimal number that the text starts with: sign, digits, fraction, exponent. 0 when there
// is none.
size_t numberLength(std::string_view text, bool plusAllowed) {
  size_t at = 0;
  const auto digits = [&] {
    const size_t start = at;
    while (at < text.size() && isDigit(text[at])) ++at;
    return at - start;
  };
  if (at < text.size() && (text[at] == '-' || (plusAllowed && text[at] == '+'))) ++at;
  size_t found = digits();
  if (at < text.size() && text[at] == '.') {
    ++at;
    found += digits();
  }
  if (found == 0) return 0;
  const size_t mantissa = at;
  if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
    ++at;
    if (at < text.size() && (text[at] == '-' || text[at] == '+')) ++at;
    if (digits() == 0) at = mantissa;
  }
  return at;
}

double toDouble(std::string_view number) {
  if (number.starts_with('+')) number.remove_prefix(1);
  double value = 0;
  const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
  if (result.ec != std::errc::result_out_of_range) return value;
  // Too large or too small: the exponent's sign tells which, and without an exponent it is too large.
  const auto exponent = number.find_first_of("eE");
  const bool tiny = exponent != std::string_view::npos && number.substr(exponent + 1).starts_with('-');
  const double magnitude = tiny ? 0 : std::numeric_limits<double>::infinity();
  return number.starts_with('-') ? -magnitude : magnitude;
}

}  // namespace

std::string validUTF8(const std::string& text) {
  return GText(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size()))).get();
}

// GLib takes a zero byte for the end.
bool isValidUTF8(std::string_view text) {
  for (;;) {
    const size_t zero = text.find('\0');
    const auto piece = text.substr(0, zero);
    if (!g_utf8_validate_len(piece.data(), piece.size(), nullptr)) return false;
    if (zero == std::string_view::npos) return true;
    text.remove_prefix(zero + 1);
  }
}

std::string md5Hex(std::string_view bytes) {
  GText digest(g_compute_checksum_for_data(G_CHECKSUM_MD5, reinterpret_cast<const guchar*>(bytes.data()),
                                           bytes.size()));
  return digest.get();
}

std::string base64Encode(std::string_view bytes) {
  GText text(g_base64_encode(reinterpret_cast<const guchar*>(bytes.data()), bytes.size()));
  return text.get();
}

std::optional<std::string> base64Decode(std::string_view text) {
  std::string clean;
  clean.reserve(text.size());
  size_t padding = 0;
  for (const char c : text) {
    const bool inAlphabet = g_ascii_isalnum(c) || c == '+' || c == '/';
    if (c == '=') {
      ++padding;
    } else if (inAlphabet) {
      if (padding > 0) return std::nullopt;  // something follows the end
      clean.push_back(c);
    }
  }
  if ((clean.size() + padding) % 4 != 0 || padding > 2) return std::nullopt;
  clean.append(padding, '=');
  gsize length = 0;
  GText bytes(reinterpret_cast<char*>(g_base64_decode(clean.c_str(), &length)));
  return std::string(bytes.get(), length);
}

std::string uuidString() {
  GText text(g_uuid_string_random());
  std::string uuid = text.get();
  std::transform(uuid.begin(), uuid.end(), uuid.begin(), g_ascii_toupper);
  return uuid;
}

std::string randomText(std::string_view alphabet, size_t length) {
  // Not from the processor's source of entropy, which a few dozen clicks in a row exhaust: each would wait for it.
  std::string text(length, ' ');
  for (char& c : text)
    c = alphabet[static_cast<size_t>(g_random_int_range(0, static_cast<gint32>(alphabet.size())))];
  return text;
}

std::string fixedDecimals(double value, int decimals) {
  char buffer[400];
  const auto result =
      std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, decimals);
  return std::string(buffer, result.ptr);
}

std::string numberText(double value) {
  char buffer[32];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, 16);
  return std::string(buffer, result.ptr);
}

std::optional<double> parseNumber(std::string_view text) {
  if (text.empty() || numberLength(text, false) != text.size()) return std::nullopt;
  const double number = toDouble(text);
  return std::isfinite(number) ? std::optional(number) : std::nullopt;
}

double leadingNumber(std::string_view text) {
  text = withoutLeadingBlanks(text);
  const size_t length = numberLength(text, true);
  return length == 0 ? 0 : toDouble(text.substr(0, length));
}

int64_t leadingInteger(std::string_view text) {
  text = withoutLeadingBlanks(text);
  if (text.starts_with('+')) text.remove_prefix(1);
  int64_t value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec == std::errc::result_out_of_range)
    return text.starts_with('-') ? std::numeric_limits<int64_t>::min() : std::numeric_limits<int64_t>::max();
  return value;
}

std::vector<std::string> split(std::string_view text, std::string_view separator) {
  std::vector<std::string> parts;
  size_t start = 0;
  for (size_t at = text.find(separator); at != std::string_view::npos; at = text.find(separator, start)) {
    parts.emplace_back(text.substr(start, at - start));
    start = at + separator.size();
  }
  parts.emplace_back(text.substr(start));
  return parts;
}

std::string join(const std::vector<std::string>& parts, std::string_view separator) {
  std::string text;
  for (size_t i = 0; i < parts.size(); ++i) {
    if (i > 0) text += separator;
    text += parts[i];
  }
  return text;
}

std::string replaceAll(std::string text, std::string_view from, std::string_view to) {
  return join(split(text, from), to);
}

std::string lowercased(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), g_ascii_tolower);
  return text;
}

}  // namespace velto
