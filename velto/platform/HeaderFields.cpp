// Header fields: few enough that a list is the fastest map.
#include "velto/platform/NSURLSession.h"

#include <algorithm>

namespace velto {
namespace {

bool isSameName(std::string_view a, std::string_view b) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [&](char x, char y) { return lower(x) == lower(y); });
}

auto find(auto& fields, std::string_view name) {
  return std::find_if(fields.begin(), fields.end(),
                      [&](const auto& field) { return isSameName(field.first, name); });
}

}  // namespace

void HeaderFields::set(std::string_view name, std::string_view value) {
  if (auto field = find(fields_, name); field != fields_.end())
    field->second = value;
  else
    fields_.emplace_back(name, value);
}

void HeaderFields::add(std::string_view name, std::string_view value) {
  if (auto field = find(fields_, name); field != fields_.end())
    field->second.append(", ").append(value);
  else
    fields_.emplace_back(name, value);
}

std::optional<std::string> HeaderFields::value(std::string_view name) const {
  const auto field = find(fields_, name);
  return field == fields_.end() ? std::nullopt : std::optional(field->second);
}

}  // namespace velto
