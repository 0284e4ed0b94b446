// Tolerant reading of JSON objects: a value of the wrong kind reads as absent. Any thread.
#pragma once

#include "velto/platform/foundation/JSON.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velto::JSONSDKVelto {

std::optional<std::string> stringValue(const JSON::Object& object, std::string_view key);
// A number (booleans count as 0 and 1), or a string that is a number as a whole.
std::optional<double> numberValue(const JSON::Object& object, std::string_view key);
// Of numbers and booleans; false for all else.
bool boolValue(const JSON::Object& object, std::string_view key);
// Null for another kind; the pointers live as long as the object.
const JSON::Array* arrayValue(const JSON::Object& object, std::string_view key);
const JSON::Object* dictionaryValue(const JSON::Object& object, std::string_view key);

// Whatever value the text holds; nothing when it is no JSON.
std::optional<JSON> JSONDictionary(std::string_view utf8);
// On several lines; nothing when it cannot be written.
std::optional<std::string> JSONString(const JSON::Array& array);

}  // namespace velto::JSONSDKVelto
