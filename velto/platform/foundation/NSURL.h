// A uniform resource locator (RFC 3986) that keeps the text it was made from. Shared by all platforms; any
// thread.
#pragma once

#include "velto/Export.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velto {

struct NSURLQueryItem {
  std::string name;
  std::optional<std::string> value;  // nothing: the name stands alone, without "="
  bool operator==(const NSURLQueryItem&) const = default;
};

class VELTO_EXPORT NSURL {
 public:
  // The text with every percent escape undone.
  static std::string unescaped(std::string_view text);

  // Nothing when the text is empty or is no URI reference: a character outside RFC 3986, a broken escape, a
  // bad port. Characters outside ASCII are percent-escaped as UTF-8 first, as web engines do.
  static std::optional<NSURL> URLWithString(std::string_view text);

  // The same of text as engines and servers write it: what no URL may hold as it stands (blanks, braces, a
  // percent sign by itself) is escaped first.
  static std::optional<NSURL> URLByEscaping(std::string_view text);

  const std::string& absoluteString() const { return text_; }

  // Components as they stand in the text, still escaped; nothing where the component is absent.
  std::optional<std::string> scheme() const;
  std::optional<std::string> host() const;
  std::optional<int> port() const;
  std::string path() const;
  std::optional<std::string> query() const;
  // Its items in their order, names and values unescaped ("+" stays); nothing without a query. A value that
  // is no UTF-8 once unescaped counts as absent.
  std::optional<std::vector<NSURLQueryItem>> queryItems() const;

  // The URL with `component` joined to its path by exactly one slash; a query or fragment is kept behind it.
  NSURL URLByAppendingPathComponent(std::string_view component) const;

  // What begins with a host, and has no scheme, with that scheme before it. Nothing when the result is no
  // URL, and for what only means something beside another URL: "/path", "?query", "#fragment", "./path".
  std::optional<NSURL> URLByAddingScheme(std::string_view scheme) const;

  // Where the reference, escaped as above, leads from this URL (RFC 3986, 5.2). Nothing when it is none.
  std::optional<NSURL> URLByResolving(std::string_view reference) const;

  // The URL with its query replaced by the items, each name and value escaped for a query: what RFC 3986
  // allows in a query stays (also "+"), but "&" and "=" are escaped, since they separate the items.
  NSURL URLByReplacingQueryItems(const std::vector<NSURLQueryItem>& items) const;

  bool operator==(const NSURL&) const = default;

 private:
  explicit NSURL(std::string text) : text_(std::move(text)) {}
  std::string text_;
};

}  // namespace velto
