// The search for script tags. A regular expression engine would backtrack: a tag that is opened again and
// again and never closed costs it the square of the text.
#include "velto/mraid/MRAIDSDKVelto.h"

#include "velto/resources/Resources.h"

#include <algorithm>
#include <cctype>
#include <optional>

namespace velto::MRAIDSDKVelto {
namespace {

constexpr std::string_view opening = "<script";
constexpr std::string_view closing = "</script>";
constexpr std::string_view attribute = "src";
constexpr std::string_view file = "mraid.js";

char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool isBlank(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

bool isWord(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}

class Search {
 public:
  explicit Search(std::string_view text) : text_(text) {}

  std::string withoutTags() {
    std::string kept;
    kept.reserve(text_.size());
    size_t from = 0;
    for (auto start = find('<', 0); start < text_.size(); start = find('<', start)) {
      const size_t end = tagFrom(start);
      if (end == 0) {
        ++start;
        continue;
      }
      kept += text_.substr(from, start - from);
      start = from = end;
    }
    return kept += text_.substr(from);
  }
  size_t steps() const { return steps_; }

 private:
  // The end of a match that starts there, 0 when there is none.
  size_t tagFrom(size_t start) {
    const size_t name = start + opening.size();
    if (!hasAt(opening, start) || name >= text_.size() || !isBlank(text_[name])) return 0;
    if (start >= tag_.end) readTag(start);
    // All that stands between this start and the tag's end counts, an earlier "<script" may share it.
    return tag_.source > name ? tag_.match : 0;
  }

  // One tag reaches to the next ">": what is in it and behind it is found out once for all starts in it.
  void readTag(size_t start) {
    tag_ = {};
    const size_t close = find('>', start);
    tag_.end = close;
    if (close >= text_.size()) return;
    for (size_t at = start; at < close; ++at)
      if (isSource(at, close)) tag_.source = at;
    if (tag_.source == 0) return;
    const size_t next = find('<', close + 1);
    if (!hasAt(closing, next)) return;
    tag_.match = next + closing.size();
    while (tag_.match < text_.size() && text_[tag_.match] == '\n') ++tag_.match;
  }

  // src="mraid.js", with any quote, also one behind a backslash.
  bool isSource(size_t at, size_t end) {
    if (!hasAt(attribute, at) || isWord(text_[at - 1])) return false;
    at = skipBlanks(at + attribute.size(), end);
    if (at >= end || text_[at] != '=') return false;
    at = skipBlanks(at + 1, end);
    return (charAt(at) == '\\' && isQuotedFile(at + 1, end)) || isQuotedFile(at, end);
  }

  bool isQuotedFile(size_t at, size_t end) {
    const char quote = charAt(at);
    if (quote != '\\' && quote != '"' && quote != '\'') return false;
    if (!hasAt(file, at + 1)) return false;
    at += 1 + file.size();
    const bool closed = charAt(at) == quote || (charAt(at) == '\\' && charAt(at + 1) == quote);
    return closed && at < end;
  }

  size_t skipBlanks(size_t at, size_t end) {
    while (at < end && isBlank(text_[at])) {
      ++at;
      ++steps_;
    }
    return at;
  }

  char charAt(size_t at) const { return at < text_.size() ? text_[at] : '\0'; }

  bool hasAt(std::string_view word, size_t at) {
    ++steps_;
    return at + word.size() <= text_.size() &&
           std::equal(word.begin(), word.end(), text_.begin() + static_cast<std::ptrdiff_t>(at),
                      [](char wanted, char found) { return wanted == lower(found); });
  }

  size_t find(char c, size_t from) {
    const size_t found = std::min(text_.find(c, from), text_.size());
    steps_ += found - std::min(from, found);
    return found;
  }

  struct Tag {
    size_t end = 0;     // its ">", or the text's end
    size_t source = 0;  // the last src="mraid.js" in it; 0: none
    size_t match = 0;   // where a match of it ends; 0: what follows is not the closing tag
  };

  std::string_view text_;
  Tag tag_;
  size_t steps_ = 0;
};

}  // namespace

const std::string& MRAIDJs() {
  static const std::string script(resourceText("mraid.js").value_or(""));
  return script;
}

std::string withoutLocalScript(std::string_view html, size_t* steps) {
  Search search(html);
  auto text = search.withoutTags();
  if (steps) *steps = search.steps();
  return text;
}

std::optional<NSURL> URLFromPage(const std::string& text) {
  auto url = NSURL::URLWithString(text);
  if (url || text.find("://") == std::string::npos) return url;
  constexpr char digits[] = "0123456789ABCDEF";
  std::string escaped;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte > ' ' && byte < 0x7f && std::string_view("\"<>\\^`{|}").find(c) == std::string_view::npos) {
      escaped += c;
    } else {
      escaped.append({'%', digits[byte >> 4], digits[byte & 15]});
    }
  }
  return NSURL::URLWithString(escaped);
}

}  // namespace velto::MRAIDSDKVelto
