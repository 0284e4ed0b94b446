// See Text.h.
#include "sandbox/Text.h"

#include <openssl/evp.h>

#include <algorithm>
#include <nlohmann/json.hpp>

namespace velto::sandbox {

namespace {

bool isAlphanumeric(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

int hexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

std::string percentDecode(std::string_view text) {
  std::string decoded;
  decoded.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && i + 2 < text.size() && hexValue(text[i + 1]) >= 0 && hexValue(text[i + 2]) >= 0) {
      decoded += static_cast<char>(hexValue(text[i + 1]) * 16 + hexValue(text[i + 2]));
      i += 2;
    } else {
      decoded += text[i];
    }
  }
  return decoded;
}

std::vector<std::pair<std::string, std::string>> decodeQuery(std::string_view target) {
  std::vector<std::pair<std::string, std::string>> items;
  target = target.substr(0, target.find('#'));
  const std::size_t mark = target.find('?');
  if (mark == std::string_view::npos || mark + 1 == target.size()) return items;
  for (const std::string& item : split(target.substr(mark + 1), "&")) {
    const std::size_t equals = item.find('=');
    const std::string value = equals == std::string::npos ? std::string() : item.substr(equals + 1);
    items.emplace_back(percentDecode(item.substr(0, equals)), percentDecode(value));
  }
  return items;
}

std::optional<std::string> base64Decode(std::string_view text) {
  if (text.size() % 4 != 0) return std::nullopt;
  std::size_t padding = 0;
  while (padding < 2 && padding < text.size() && text[text.size() - 1 - padding] == '=') ++padding;
  const std::string_view digits = text.substr(0, text.size() - padding);
  if (!std::all_of(digits.begin(), digits.end(),
                   [](char c) { return isAlphanumeric(c) || c == '+' || c == '/'; })) {
    return std::nullopt;
  }
  std::string bytes(text.size() / 4 * 3, '\0');
  const int length =
      EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()),
                      reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
  if (length < 0) return std::nullopt;
  bytes.resize(static_cast<std::size_t>(length) - padding);
  return bytes;
}

std::string base64Encode(std::string_view bytes) {
  // One more for the terminating zero that OpenSSL writes.
  std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');
  const int length =
      EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()),
                      reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
  text.resize(static_cast<std::size_t>(length));
  return text;
}

std::string lowerCase(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return lower;
}

bool isDigits(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool isUtf8(std::string_view text) {
  try {
    (void)nlohmann::json(text).dump();  // the writer refuses anything else
    return true;
  } catch (const nlohmann::json::type_error&) {
    return false;
  }
}

bool isHostName(std::string_view text) {
  return !text.empty() && text.size() <= 253 && text.front() != '.' && text.back() != '.' &&
         std::all_of(text.begin(), text.end(),
                     [](char c) { return isAlphanumeric(c) || c == '-' || c == '.'; });
}

std::vector<std::string> split(std::string_view text, std::string_view separator) {
  std::vector<std::string> parts;
  for (std::size_t start = 0;;) {
    const std::size_t end = text.find(separator, start);
    parts.emplace_back(text.substr(start, end == std::string_view::npos ? end : end - start));
    if (end == std::string_view::npos) return parts;
    start = end + separator.size();
  }
}

std::string join(const std::vector<std::string>& parts, std::string_view separator) {
  std::string text;
  for (const std::string& part : parts) {
    if (&part != &parts.front()) text += separator;
    text += part;
  }
  return text;
}

}  // namespace velto::sandbox
