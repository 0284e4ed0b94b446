// Descriptions of records, for logs and debuggers.
#include "velto/platform/foundation/Description.h"

#include <cstdio>

namespace velto {

Description::Description(const char* className, const void* object) {
  char address[32];
  std::snprintf(address, sizeof address, "%p", object);
  text_ = std::string("<") + className + ": " + address + ">";
}

Description& Description::field(const char* name, const std::string& value) {
  text_ += std::string("\n\t") + name + ": " + value;
  return *this;
}

Description& Description::field(const char* name, const std::optional<std::string>& value) {
  return field(name, value.value_or("(null)"));
}

Description& Description::field(const char* name, const std::optional<double>& value) {
  return field(name, value ? numberText(*value) : "(null)");
}

}  // namespace velto
