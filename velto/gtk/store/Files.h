// Small facts that the system keeps in files (/etc, /proc, /sys). Any thread.
#pragma once

#include <optional>
#include <string>

namespace velto::gtk {

// The file's text up to the first line feed or zero byte, as valid UTF-8 and without blanks around it;
// nothing when the file cannot be read or has no such text.
std::optional<std::string> firstLine(const char* path);

// What follows the prefix in the first line that begins
// with it, in the same form; nothing when there is none.
std::optional<std::string> lineAfter(const char* path, const std::string& prefix);

// The value of NAME=value in a file of shell assignments,
// such as /etc/machine-info; nothing when absent or empty.
std::optional<std::string> assignment(const char* path, const std::string& name);

}  // namespace velto::gtk
