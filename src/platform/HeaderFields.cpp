// Header fields: few enough that a list is the fastest map.
#include "velto/platform/NSURLSession.h"

#include <algorithm>

#include "velto/platform/foundation/Text.h"

namespace velto {
namespace {

auto find(auto& fields, std::string_view name) {
  const std::string lowered = lowercased(std::string(name));
  return std::find_if(fields.begin(), fields.end(),
                      [&](const auto& field) { return lowercased(field.first) == lowered; });
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
