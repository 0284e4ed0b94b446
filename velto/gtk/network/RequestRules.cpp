// The rules of RFC 9110 as far as a client's requests go.
#include "velto/gtk/network/RequestRules.h"

#include "velto/platform/foundation/Text.h"

#include <algorithm>
#include <array>

namespace velto::gtk {
namespace {

template <size_t n>
bool isOneOf(const std::string& name, const std::array<std::string_view, n>& names) {
  return std::find(names.begin(), names.end(), lowercased(name)) != names.end();
}

constexpr std::array<std::string_view, 9> transportFields{"connection", "content-length",    "expect",
                                                          "host",       "keep-alive",        "te",
                                                          "trailer",    "transfer-encoding", "upgrade"};

bool matches(std::string pattern, const std::string& host) {
  pattern = lowercased(std::move(pattern));
  return pattern.starts_with("*.") ? host.ends_with(std::string_view(pattern).substr(1)) : host == pattern;
}

}  // namespace

bool isToken(std::string_view text) {
  constexpr std::string_view allowed =
      "!#$%&'*+-.^_`|~0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
  return !text.empty() && text.find_first_not_of(allowed) == std::string_view::npos;
}

std::vector<std::string> headerLines(const HeaderFields& fields) {
  std::vector<std::string> lines;
  for (const auto& [name, value] : fields.fields()) {
    if (!isToken(name) || isOneOf(name, transportFields)) continue;
    std::string line = value;
    std::replace_if(
        line.begin(), line.end(), [](char c) { return c == '\r' || c == '\n' || c == '\0'; }, ' ');
    const bool isEmpty = line.find_first_not_of(" \t") == std::string::npos;
    line.insert(0, name + (isEmpty ? ";" : ": "));  // libcurl's way to write an empty field
    lines.push_back(std::move(line));
  }
  return lines;
}

std::string mappedAddress(const std::vector<HostMapping>& map, const NSURL& url) {
  return mappedAddress(map, url.host().value_or(""));
}

std::string mappedAddress(const std::vector<HostMapping>& map, const std::string& host) {
  const auto found = std::find_if(
      map.begin(), map.end(),
      [name = lowercased(host)](const HostMapping& mapping) { return matches(mapping.host, name); });
  return found == map.end() ? std::string() : found->address;
}

}  // namespace velto::gtk
