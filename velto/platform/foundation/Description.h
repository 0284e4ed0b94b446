// The text with which records describe themselves: class name and address, then one tab-indented line a
// field.
#pragma once

#include "velto/Export.h"
#include "velto/platform/foundation/Text.h"

#include <cstdint>
#include <optional>
#include <string>

namespace velto {

class VELTO_EXPORT Description {
 public:
  Description(const char* className, const void* object);

  Description& field(const char* name, const std::string& value);
  Description& field(const char* name, const std::optional<std::string>& value);
  Description& field(const char* name, uint64_t value) { return field(name, std::to_string(value)); }
  Description& field(const char* name, double value) { return field(name, fixedDecimals(value, 6)); }
  Description& field(const char* name, const std::optional<double>& value);

  std::string text() const { return text_; }

 private:
  std::string text_;
};

}  // namespace velto
