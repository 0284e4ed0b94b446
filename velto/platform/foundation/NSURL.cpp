// URLs by GLib's RFC 3986 parser; the text itself is kept as it came.
#include "velto/platform/foundation/NSURL.h"

#include "velto/platform/foundation/GMemory.h"
#include "velto/platform/foundation/Text.h"

#include <glib.h>

#include <array>

namespace velto {
namespace {

constexpr auto uriFlags = static_cast<GUriFlags>(G_URI_FLAGS_ENCODED);
// Unreserved characters, sub-delimiters and others that a query may hold unescaped, less "&" and "=", which
// separate items.
constexpr std::string_view allowedInQueryItem = "-._~!$'()*+,;:@/?";

struct Parts {
  std::optional<std::string> scheme, host, query;
  std::string path;
  int port = -1;
};

std::optional<Parts> partsOf(const std::string& text) {
  char *scheme = nullptr, *host = nullptr, *path = nullptr, *query = nullptr;
  int port = -1;
  if (!g_uri_split(text.c_str(), uriFlags, &scheme, nullptr, &host, &port, &path, &query, nullptr, nullptr))
    return std::nullopt;
  GText ownScheme(scheme), ownHost(host), ownPath(path), ownQuery(query);
  Parts parts;
  if (scheme) parts.scheme = scheme;
  if (host) parts.host = host;
  if (query) parts.query = query;
  if (path) parts.path = path;
  parts.port = port;
  return parts;
}

// A set of ASCII characters: letters, digits and the given ones.
class Characters {
 public:
  explicit constexpr Characters(std::string_view others) {
    for (char letter = 'a'; letter <= 'z'; ++letter) add(letter), add(static_cast<char>(letter - 'a' + 'A'));
    for (char digit = '0'; digit <= '9'; ++digit) add(digit);
    for (const char other : others) add(other);
  }
  constexpr bool hold(char character) const { return held_[static_cast<unsigned char>(character)]; }

 private:
  constexpr void add(char character) { held_[static_cast<unsigned char>(character)] = true; }

  std::array<bool, 256> held_{};
};

bool beginsEscape(std::string_view text) {
  return text.size() > 2 && text[0] == '%' && g_ascii_isxdigit(text[1]) && g_ascii_isxdigit(text[2]);
}

// Every byte that does not stay becomes a percent escape, zero bytes too (GLib drops those).
template <class Stays>
std::string escaped(std::string_view text, Stays stays) {
  static constexpr char digits[] = "0123456789ABCDEF";
  std::string result;
  result.reserve(text.size());
  size_t kept = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    if (stays(text.substr(i))) continue;
    const auto byte = static_cast<unsigned char>(text[i]);
    result.append(text, kept, i - kept).append({'%', digits[byte >> 4], digits[byte & 15]});
    kept = i + 1;
  }
  return result.append(text, kept);
}

// Unreserved and reserved characters of RFC 3986, and whole percent escapes.
constexpr Characters ofURL("-._~:/?#[]@!$&'()*+,;=");
constexpr auto mayStandInURL = [](std::string_view text) {
  return ofURL.hold(text[0]) || beginsEscape(text);
};

constexpr auto isASCII = [](std::string_view text) { return static_cast<unsigned char>(text[0]) < 0x80; };

constexpr Characters ofQueryItem(allowedInQueryItem);
constexpr auto mayStandInQueryItem = [](std::string_view text) { return ofQueryItem.hold(text[0]); };

bool isAllOfURL(std::string_view text) {
  for (size_t i = 0; i < text.size(); ++i)
    if (!mayStandInURL(text.substr(i))) return false;
  return true;
}

}  // namespace

std::optional<NSURL> NSURL::URLWithString(std::string_view text) {
  if (text.empty()) return std::nullopt;
  std::string ascii = escaped(text, isASCII);
  if (!isAllOfURL(ascii) || !partsOf(ascii)) return std::nullopt;
  return NSURL(std::move(ascii));
}

std::optional<NSURL> NSURL::URLByEscaping(std::string_view text) {
  return URLWithString(escaped(text, mayStandInURL));
}

// GLib lowers the scheme's letters; here it is told as it stands.
std::optional<std::string> NSURL::scheme() const {
  const auto parts = partsOf(text_);
  if (!parts || !parts->scheme) return std::nullopt;
  return text_.substr(0, parts->scheme->size());
}

std::optional<std::string> NSURL::host() const {
  const auto parts = partsOf(text_);
  return parts ? parts->host : std::nullopt;
}

std::optional<int> NSURL::port() const {
  const auto parts = partsOf(text_);
  return parts && parts->port >= 0 ? std::optional(parts->port) : std::nullopt;
}

std::string NSURL::path() const {
  const auto parts = partsOf(text_);
  return parts ? parts->path : std::string();
}

std::optional<std::string> NSURL::query() const {
  const auto parts = partsOf(text_);
  return parts ? parts->query : std::nullopt;
}

std::string NSURL::unescaped(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  size_t kept = 0;
  for (size_t i = text.find('%'); i != std::string_view::npos; i = text.find('%', i + 1)) {
    if (!beginsEscape(text.substr(i))) continue;
    result.append(text, kept, i - kept);
    result += static_cast<char>(g_ascii_xdigit_value(text[i + 1]) * 16 + g_ascii_xdigit_value(text[i + 2]));
    i += 2;
    kept = i + 1;
  }
  return result.append(text, kept);
}

std::optional<std::vector<NSURLQueryItem>> NSURL::queryItems() const {
  const auto text = query();
  if (!text) return std::nullopt;
  std::vector<NSURLQueryItem> items;
  for (const auto& part : split(*text, "&")) {
    const size_t equals = part.find('=');
    NSURLQueryItem item{unescaped(std::string_view(part).substr(0, equals)), std::nullopt};
    if (equals != std::string::npos) {
      item.value = unescaped(std::string_view(part).substr(equals + 1));
      if (!isValidUTF8(*item.value)) item.value.reset();
    }
    items.push_back(std::move(item));
  }
  return items;
}

NSURL NSURL::URLByAppendingPathComponent(std::string_view component) const {
  const size_t pathEnd = std::min(text_.find_first_of("?#"), text_.size());
  std::string text = text_.substr(0, pathEnd);
  if (!text.ends_with('/')) text += '/';
  while (component.starts_with('/')) component.remove_prefix(1);
  text += component;
  return NSURL(text + text_.substr(pathEnd));
}

std::optional<NSURL> NSURL::URLByAddingScheme(std::string_view scheme) const {
  const auto beginning = std::string_view(text_).substr(text_.starts_with("//") ? 2 : 0);
  if (beginning.empty() || std::string_view("/?#.").find(beginning[0]) != std::string_view::npos)
    return std::nullopt;
  return URLWithString(std::string(scheme) + "://" + std::string(beginning));
}

std::optional<NSURL> NSURL::URLByResolving(std::string_view reference) const {
  const GText resolved(
      g_uri_resolve_relative(text_.c_str(), escaped(reference, mayStandInURL).c_str(), uriFlags, nullptr));
  return resolved ? URLWithString(resolved.get()) : std::nullopt;
}

NSURL NSURL::URLByReplacingQueryItems(const std::vector<NSURLQueryItem>& items) const {
  const size_t fragment = std::min(text_.find('#'), text_.size());
  const size_t queryStart = std::min(text_.find('?'), fragment);
  std::vector<std::string> pairs;
  pairs.reserve(items.size());
  for (const auto& item : items)
    pairs.push_back(escaped(item.name, mayStandInQueryItem) +
                    (item.value ? '=' + escaped(*item.value, mayStandInQueryItem) : ""));
  return NSURL(text_.substr(0, queryStart) + '?' + join(pairs, "&") + text_.substr(fragment));
}

}  // namespace velto
