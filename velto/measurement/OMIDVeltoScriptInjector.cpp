// Finding the place: at the beginning of the head, where a parser of HTML takes it to begin.
#include "velto/measurement/OMIDVeltoScriptInjector.h"

#include "velto/measurement/OMIDVeltoSDK.h"

#include <string_view>

namespace velto {
namespace {

constexpr std::string_view blanks = " \t\n\f\r";
constexpr size_t npos = std::string_view::npos;

char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

// Whether a tag of that name begins here.
bool isTag(std::string_view html, std::string_view name) {
  if (html.size() <= name.size() + 1 || html[0] != '<') return false;
  for (size_t i = 0; i < name.size(); ++i)
    if (lower(html[i + 1]) != name[i]) return false;
  const char next = html[name.size() + 1];
  return next == '>' || next == '/' || blanks.find(next) != npos;
}

// Where the tag that begins the text ends, as a parser of HTML has it (HTML, 13.2.5.8 and 32 to 39): a '>' is none in a
// value's quotes, and quotes are such only where a value begins.
size_t tagEnd(std::string_view html) {
  enum class In { Between, Name, AfterName, BeforeValue, Value } in = In::Between;
  for (size_t i = html.find_first_of(" \t\n\f\r/>"); i < html.size(); ++i) {
    const char c = html[i];
    if (c == '>') return i + 1;
    if (blanks.find(c) != npos) {
      if (in == In::Name) in = In::AfterName;
      if (in == In::Value) in = In::Between;
    } else if (in == In::BeforeValue && (c == '"' || c == '\'')) {
      i = html.find(c, i + 1);
      if (i == npos) return npos;
      in = In::Between;
    } else if (in == In::BeforeValue) {
      in = In::Value;
    } else if (c == '/' && in != In::Value) {
      in = In::Between;
    } else if (c == '=' && (in == In::Name || in == In::AfterName)) {
      in = In::BeforeValue;
    } else if (in != In::Value) {
      in = In::Name;
    }
  }
  return npos;
}

size_t commentEnd(std::string_view html) {
  if (html.starts_with("<!-->")) return 5;
  if (html.starts_with("<!--->")) return 6;
  // Whichever end comes first. Looking for each on its own would run to the markup's end for every comment.
  for (size_t at = html.find("--", 4); at != npos; at = html.find("--", at + 1)) {
    if (html.substr(at + 2).starts_with('>')) return at + 3;
    if (html.substr(at + 2).starts_with("!>")) return at + 4;
  }
  return npos;
}

// What may stand before the head: byte order mark, blanks, comments, the document type, the html tag. Any
// other tag or text begins the head by itself, and with it the script in front of it.
size_t headBegin(std::string_view html) {
  constexpr std::string_view mark = "\xEF\xBB\xBF";
  size_t at = html.starts_with(mark) ? mark.size() : 0;
  for (bool inHead = false; !inHead;) {
    const size_t next = html.find_first_not_of(blanks, at);
    if (next == npos) return at;
    const std::string_view rest = html.substr(next);
    size_t length = npos;
    if (rest.starts_with("<!--")) {
      length = commentEnd(rest);
    } else if (rest.starts_with("<!") || rest.starts_with("<?")) {
      const size_t end = rest.find('>');
      length = end == npos ? npos : end + 1;
    } else if (isTag(rest, "html") || isTag(rest, "head")) {
      inHead = isTag(rest, "head");
      length = tagEnd(rest);
    }
    if (length == npos) return next;
    at = next + length;
  }
  return at;
}

}  // namespace

std::optional<std::string> OMIDVeltoScriptInjector::injectScriptContent(const std::string& script,
                                                                        const std::string& intoHTML,
                                                                        OMIDVeltoErrorResult error) {
  const auto fail = [error](OMIDVeltoErrorCode code, const char* text) {
    OMIDVeltoFail(error, code, text);
    return std::nullopt;
  };
  if (!OMIDVeltoSDK::sharedInstance()->isActive())
    return fail(OMIDVeltoErrorNotActive, "The measurement engine is not active");
  if (OMIDVeltoIsBlank(script) || OMIDVeltoIsBlank(intoHTML))
    return fail(OMIDVeltoErrorInvalidArgument, "There is no script or no markup");
  constexpr std::string_view opening = "<script>";
  constexpr std::string_view closing = "</script>";
  const size_t place = headBegin(intoHTML);
  std::string result;
  result.reserve(intoHTML.size() + script.size() + opening.size() + closing.size());
  result.append(intoHTML, 0, place).append(opening).append(script).append(closing);
  result.append(intoHTML, place, npos);
  return result;
}

}  // namespace velto
