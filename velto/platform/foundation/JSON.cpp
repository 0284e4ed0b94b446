// JSON through nlohmann-json, which stays behind this file: its event parser, since that needs no recursion,
// and its writer.
#include "velto/platform/foundation/JSON.h"

#include "velto/platform/foundation/Text.h"

#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>

namespace velto {
namespace {

constexpr size_t deepestNesting = 512;

using nlohmann::json;

// Builds the value while the parser walks the text.
class Reader : public nlohmann::json_sax<json> {
 public:
  bool null() override { return put(JSON()); }
  bool boolean(bool value) override { return put(JSON(value)); }
  bool number_integer(number_integer_t value) override { return put(JSON(static_cast<int64_t>(value))); }
  bool number_unsigned(number_unsigned_t value) override {
    if (value <= static_cast<uint64_t>(INT64_MAX)) return put(JSON(static_cast<int64_t>(value)));
    return put(JSON(static_cast<double>(value)));
  }
  bool number_float(number_float_t value, const string_t&) override { return put(JSON(value)); }
  bool string(string_t& value) override { return put(JSON(std::move(value))); }
  bool binary(binary_t&) override { return false; }
  bool start_object(std::size_t) override { return open(true); }
  bool start_array(std::size_t) override { return open(false); }
  bool end_object() override { return close(); }
  bool end_array() override { return close(); }
  bool key(string_t& value) override {
    levels_.back().key = std::move(value);
    return true;
  }
  bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override {
    return false;
  }

  JSON take() { return std::move(root_); }

 private:
  struct Level {
    bool isObject = false;
    JSON::Object object;
    JSON::Array array;
    std::string key;
  };

  bool put(JSON value) {
    if (levels_.empty())
      root_ = std::move(value);
    else if (levels_.back().isObject)
      levels_.back().object.insert_or_assign(std::move(levels_.back().key), std::move(value));
    else
      levels_.back().array.push_back(std::move(value));
    return true;
  }
  bool open(bool isObject) {
    if (levels_.size() == deepestNesting) return false;
    levels_.emplace_back();
    levels_.back().isObject = isObject;
    return true;
  }
  bool close() {
    Level level = std::move(levels_.back());
    levels_.pop_back();
    return put(level.isObject ? JSON(std::move(level.object)) : JSON(std::move(level.array)));
  }

  JSON root_;
  std::vector<Level> levels_;
};

}  // namespace

class JSONWriter {
 public:
  static json convert(const JSON& value) {
    return std::visit([](const auto& held) { return convert(held); }, value.value_);
  }

 private:
  static json convert(std::monostate) { return nullptr; }
  static json convert(bool value) { return value; }
  static json convert(int64_t value) { return value; }
  static json convert(double value) {
    if (!std::isfinite(value)) throw std::invalid_argument("not a JSON number");
    if (value == std::floor(value) && std::abs(value) < 9e15) return static_cast<int64_t>(value);
    return value;
  }
  static json convert(float value) {
    // The shortest text that reads back as the same single-precision number: 0.1f is written 0.1.
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, value).ptr;
    double widened = value;
    std::from_chars(text, end, widened);
    return convert(widened);
  }
  static json convert(const std::string& value) { return value; }
  static json convert(const JSON::Array& value) {
    json list = json::array();
    for (const auto& element : value) list.push_back(convert(element));
    return list;
  }
  static json convert(const JSON::Object& value) {
    json::object_t object;  // in the same order, so each member goes to its end
    for (const auto& [key, member] : value) object.emplace_hint(object.end(), key, convert(member));
    return object;
  }
};

std::optional<double> JSON::number() const {
  if (const auto* integer = std::get_if<int64_t>(&value_)) return static_cast<double>(*integer);
  if (const auto* real = std::get_if<double>(&value_)) return *real;
  if (const auto* single = std::get_if<float>(&value_)) return *single;
  if (const auto* boolean = std::get_if<bool>(&value_)) return *boolean ? 1.0 : 0.0;
  return std::nullopt;
}

std::optional<JSON> readJSON(std::string_view text) {
  // No text holds this byte as it is (RFC 8259), but the parser takes it for the end.
  if (text.find('\0') != std::string_view::npos) return std::nullopt;
  Reader reader;
  if (!json::sax_parse(text.begin(), text.end(), &reader)) return std::nullopt;
  return reader.take();
}

std::optional<JSON> readJSONOfPage(std::string text) {
  const auto surrogateAt = [&](size_t at, char low, char high) {
    if (at + 6 > text.size()) return false;
    const auto escape = lowercased(text.substr(at, 4));
    return escape.starts_with("\\ud") && escape[3] >= low && escape[3] <= high;
  };
  for (size_t at = text.find('\\'); at != std::string::npos; at = text.find('\\', at)) {
    const bool first = surrogateAt(at, '8', 'b');
    if (first && surrogateAt(at + 6, 'c', 'f')) {
      at += 12;
      continue;
    }
    if (first || surrogateAt(at, 'c', 'f')) text.replace(at + 2, 4, "fffd");
    at += 2;
  }
  return readJSON(text);
}

std::optional<std::string> writeJSON(const JSON& value, bool pretty) {
  try {
    return JSONWriter::convert(value).dump(pretty ? 2 : -1);
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

}  // namespace velto
