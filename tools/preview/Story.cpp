// Reading entries.
#include "preview/Story.h"

#include <algorithm>

namespace velto::preview {
namespace {

const JSON* valueIn(const Entry& entry, const char* key) {
  const auto found = entry.find(key);
  return found == entry.end() ? nullptr : &found->second;
}

}  // namespace

std::string textIn(const Entry& entry, const char* key) {
  const auto* value = valueIn(entry, key);
  return value && value->string() ? *value->string() : std::string();
}

double numberIn(const Entry& entry, const char* key, double otherwise) {
  const auto* value = valueIn(entry, key);
  return value ? value->number().value_or(otherwise) : otherwise;
}

bool isSetIn(const Entry& entry, const char* key) {
  return numberIn(entry, key) != 0;
}

const JSON::Array& listIn(const Entry& entry, const char* key) {
  static const JSON::Array none;
  const auto* value = valueIn(entry, key);
  return value && value->array() ? *value->array() : none;
}

std::vector<std::string> addressesOf(const Entry& request) {
  std::vector<std::string> all;
  for (const auto& passed : listIn(request, "redirectedFrom"))
    if (passed.string()) all.push_back(*passed.string());
  all.push_back(textIn(request, "url"));
  return all;
}

const Entry& objectIn(const Entry& entry, const char* key) {
  static const Entry none;
  const auto* value = valueIn(entry, key);
  return value && value->object() ? *value->object() : none;
}

std::string hostOf(const std::string& address) {
  const auto scheme = address.find("://");
  if (!address.starts_with("http") || scheme == std::string::npos) return {};
  auto host = address.substr(scheme + 3);
  host = host.substr(0, host.find_first_of("/?#"));
  if (const auto user = host.rfind('@'); user != std::string::npos) host = host.substr(user + 1);
  const auto afterBrackets = host.find(']') == std::string::npos ? 0 : host.find(']');
  return host.substr(0, host.find(':', afterBrackets));
}

bool isLocal(const std::string& host) {
  return host == "localhost" || host == "[::1]" || host.starts_with("127.");
}

void Story::add(const Entry& entry) {
  const auto kind = textIn(entry, "event");
  if (kind == "creative") base_ = textIn(entry, "base");
  if (++counts_[kind] > mostOfAKind)
    ++leftOut_;
  else
    entries_.push_back(entry);
}

std::vector<const Entry*> Story::of(std::string_view kind) const {
  std::vector<const Entry*> found;
  for (const auto& entry : entries_)
    if (textIn(entry, "event") == kind) found.push_back(&entry);
  return found;
}

const Entry* Story::last(std::string_view kind) const {
  const auto found = of(kind);
  return found.empty() ? nullptr : found.back();
}

JSON::Array Story::inPages(const char* list) const {
  JSON::Array all;
  for (const auto* page : of("page"))
    for (const auto& one : listIn(*page, list))
      if (std::find(all.begin(), all.end(), one) == all.end()) all.push_back(one);
  return all;
}

std::optional<double> Story::timeOf(std::string_view kind, std::string_view name) const {
  for (const auto* entry : of(kind))
    if (name.empty() || textIn(*entry, "name") == name) return numberIn(*entry, "t");
  return std::nullopt;
}

std::string Story::shortAddress(const std::string& address) const {
  if (!base_.empty() && address.size() > base_.size() && address.starts_with(base_))
    return address.substr(base_.size());
  constexpr size_t longest = 300;
  return address.size() > longest ? address.substr(0, longest) + "…" : address;
}

bool Story::isElsewhere(const std::string& address) const {
  const auto host = hostOf(address);
  return !host.empty() && host != hostOf(base_);
}

}  // namespace velto::preview
