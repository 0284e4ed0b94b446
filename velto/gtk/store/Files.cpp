// Reading of small system files.
#include "velto/gtk/store/Files.h"

#include "velto/platform/foundation/GMemory.h"

#include <sstream>

namespace velto::gtk {
namespace {

std::optional<std::string> contents(const char* path) {
  char* bytes = nullptr;
  gsize size = 0;
  if (!g_file_get_contents(path, &bytes, &size, nullptr)) return std::nullopt;
  const GText owner(bytes);
  return std::string(bytes, size);
}

std::optional<std::string> readable(const std::string& text) {
  const GText valid(g_utf8_make_valid(text.c_str(), -1));
  g_strstrip(valid.get());
  return *valid ? std::optional<std::string>(valid.get()) : std::nullopt;
}

}  // namespace

std::optional<std::string> firstLine(const char* path) {
  const auto text = contents(path);
  return text ? readable(text->substr(0, text->find('\n'))) : std::nullopt;
}

std::optional<std::string> lineAfter(const char* path, const std::string& prefix) {
  std::istringstream lines(contents(path).value_or(""));
  for (std::string line; std::getline(lines, line);)
    if (line.starts_with(prefix)) return readable(line.substr(prefix.size()));
  return std::nullopt;
}

std::optional<std::string> assignment(const char* path, const std::string& name) {
  const auto quoted = lineAfter(path, name + "=");
  const GText value(quoted ? g_shell_unquote(quoted->c_str(), nullptr) : nullptr);
  return value ? readable(value.get()) : std::nullopt;
}

}  // namespace velto::gtk
