// The tolerant getters.
#include "velto/network/JSONSDKVelto.h"

#include "velto/platform/foundation/Text.h"

namespace velto::JSONSDKVelto {
namespace {

const JSON* find(const JSON::Object& object, std::string_view key) {
  const auto found = object.find(key);
  return found == object.end() ? nullptr : &found->second;
}

}  // namespace

std::optional<std::string> stringValue(const JSON::Object& object, std::string_view key) {
  const auto* value = find(object, key);
  const auto* text = value ? value->string() : nullptr;
  return text ? std::optional(*text) : std::nullopt;
}

std::optional<double> numberValue(const JSON::Object& object, std::string_view key) {
  const auto* value = find(object, key);
  if (!value) return std::nullopt;
  if (const auto* text = value->string()) return parseNumber(*text);
  return value->number();
}

bool boolValue(const JSON::Object& object, std::string_view key) {
  const auto* value = find(object, key);
  return value && value->number().value_or(0) != 0;
}

const JSON::Array* arrayValue(const JSON::Object& object, std::string_view key) {
  const auto* value = find(object, key);
  return value ? value->array() : nullptr;
}

const JSON::Object* dictionaryValue(const JSON::Object& object, std::string_view key) {
  const auto* value = find(object, key);
  return value ? value->object() : nullptr;
}

std::optional<JSON> JSONDictionary(std::string_view utf8) {
  return readJSON(utf8);
}

std::optional<std::string> JSONString(const JSON::Array& array) {
  return writeJSON(array, true);
}

}  // namespace velto::JSONSDKVelto
