// Header lines into fields (RFC 9112, 5).
#include "velto/gtk/network/ResponseHead.h"

namespace velto::gtk {
namespace {

constexpr std::string_view blanks = " \t\r\n";

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

}  // namespace

void ResponseHead::addLine(std::string_view line) {
  if (ended_) {
    if (!line.starts_with("HTTP/")) return;
    ended_ = false;
    fields_.clear();
    return;
  }
  const auto text = trimmed(line);
  const bool goesOn = line.starts_with(' ') || line.starts_with('\t');  // obsolete, but still met
  if (text.empty()) {
    ended_ = !goesOn;
  } else if (goesOn) {
    if (!fields_.empty()) fields_.back().second.append(" ").append(text);
  } else if (const auto colon = text.find(':'); colon != std::string_view::npos && colon > 0) {
    fields_.emplace_back(trimmed(text.substr(0, colon)), trimmed(text.substr(colon + 1)));
  }
}

HeaderFields ResponseHead::fields() const {
  HeaderFields result;
  for (const auto& [name, value] : fields_) result.add(name, value);
  return result;
}

}  // namespace velto::gtk
