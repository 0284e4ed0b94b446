// A JSON value (RFC 8259). Numbers keep their kind: an integer, a double or single precision, a boolean that
// still counts as the number 0 or 1. Any thread.
#pragma once

#include "velto/Export.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace velto {

class VELTO_EXPORT JSON {
 public:
  using Array = std::vector<JSON>;
  using Object = std::map<std::string, JSON, std::less<>>;

  JSON() = default;  // null
  JSON(bool value) : value_(value) {}
  JSON(int value) : value_(static_cast<int64_t>(value)) {}
  JSON(int64_t value) : value_(value) {}
  JSON(double value) : value_(value) {}
  JSON(float value) : value_(value) {}
  JSON(const char* value) : value_(std::string(value)) {}
  JSON(std::string value) : value_(std::move(value)) {}
  JSON(Array value) : value_(std::move(value)) {}
  JSON(Object value) : value_(std::move(value)) {}

  bool isNull() const { return std::holds_alternative<std::monostate>(value_); }

  // Null pointers and nothing where the value is of another kind.
  const std::string* string() const { return std::get_if<std::string>(&value_); }
  const Array* array() const { return std::get_if<Array>(&value_); }
  const Object* object() const { return std::get_if<Object>(&value_); }
  std::optional<double> number() const;  // of integers, reals and booleans

  bool operator==(const JSON&) const = default;

 private:
  friend class JSONWriter;
  std::variant<std::monostate, bool, int64_t, double, float, std::string, Array, Object> value_;
};

// Reads any JSON value from UTF-8 text, also one that is no array or object. Nothing for anything else: bad
// syntax, bad UTF-8, trailing text, nesting deeper than 512. Of equal keys the last wins. Time is linear in
// the text.
VELTO_EXPORT std::optional<JSON> readJSON(std::string_view text);

// The same of what a page's engine wrote. There half of a surrogate pair is an escape of its own (as
// ECMAScript's JSON.stringify has it), which stands for no character: it reads as U+FFFD, and the rest is not
// lost for it.
VELTO_EXPORT std::optional<JSON> readJSONOfPage(std::string text);

// Writes it, on several lines with two blanks of indentation when pretty. Reals without fraction are written
// as integers. Nothing when a text is not UTF-8 or a number is not finite.
VELTO_EXPORT std::optional<std::string> writeJSON(const JSON& value, bool pretty);

}  // namespace velto
