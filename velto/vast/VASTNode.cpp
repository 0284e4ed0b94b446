// XML by libxml2, looked through before it gets there.
#include "velto/vast/VASTNode.h"

#include "velto/platform/foundation/Text.h"
#include "velto/vast/VASTDocument.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <algorithm>
#include <memory>
#include <mutex>

namespace velto {
namespace {

constexpr size_t mostTags = 200'000;
constexpr size_t mostAttributes = 256;  // of one tag: libxml2 compares each with all others
constexpr int deepest = 64;

using XMLContext = std::unique_ptr<xmlParserCtxt, decltype(&xmlFreeParserCtxt)>;
using XMLTree = std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)>;
using XMLText = std::unique_ptr<xmlBuffer, decltype(&xmlBufferFree)>;

bool isBlankInXML(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

std::string fromLatin1(std::string_view text) {
  std::string utf8;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) {
      utf8 += c;
    } else {
      utf8 += static_cast<char>(0xC0 | byte >> 6);
      utf8 += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return utf8;
}

// Escapes the ampersands that stand by themselves, and counts what costs time. Nothing for what is too much.
class Repair {
 public:
  explicit Repair(std::string_view text) : text_(text) {}

  std::optional<std::string> result() {
    out_.reserve(text_.size() + 64);
    while (at_ < text_.size()) {
      if (quote_ == 0 && (keep("<![CDATA[", "]]>") || keep("<!--", "-->") || keep("<?", "?>"))) continue;
      if (!step()) return std::nullopt;
    }
    return std::move(out_);
  }

 private:
  // Copies what stands between the two, which are not looked into.
  bool keep(std::string_view opening, std::string_view closing) {
    if (!text_.substr(at_).starts_with(opening)) return false;
    const auto end = text_.find(closing, at_ + opening.size());
    const auto stop = end == std::string_view::npos ? text_.size() : end + closing.size();
    out_ += text_.substr(at_, stop - at_);
    at_ = stop;
    return true;
  }
  bool step() {
    const char c = text_[at_];
    if (c == '&' && !beginsVASTReference(text_.substr(at_)))
      out_ += "&amp;";
    else
      out_ += c;
    ++at_;
    if (quote_ != 0) {
      if (c == quote_) quote_ = 0;
    } else if (c == '<') {
      inTag_ = true;
      attributes_ = 0;
      return ++tags_ <= mostTags;
    } else if (c == '>') {
      inTag_ = false;
    } else if (inTag_ && (c == '"' || c == '\'')) {
      quote_ = c;
      return ++attributes_ <= mostAttributes;
    }
    return true;
  }

  std::string_view text_;
  std::string out_;
  size_t at_ = 0, tags_ = 0, attributes_ = 0;
  bool inTag_ = false;
  char quote_ = 0;
};

// What no recovery makes good: parts of the document are missing, or stand where nobody meant them.
bool isLost(int code) {
  switch (code) {
    case XML_ERR_DOCUMENT_EMPTY:
    case XML_ERR_CDATA_NOT_FINISHED:
    case XML_ERR_COMMENT_NOT_FINISHED:
    case XML_ERR_GT_REQUIRED:
    case XML_ERR_INTERNAL_ERROR:
    case XML_ERR_LTSLASH_REQUIRED:
    case XML_ERR_NAME_REQUIRED:
    case XML_ERR_NO_MEMORY:
    case XML_ERR_TAG_NAME_MISMATCH:
    case XML_ERR_TAG_NOT_FINISHED:
      return true;
    default:
      return false;
  }
}

std::string ofXML(const xmlChar* text) {
  return text ? std::string(reinterpret_cast<const char*>(text)) : std::string();
}

std::string nameOfXML(const xmlChar* name) {
  auto lower = lowercased(ofXML(name));
  if (const auto colon = lower.rfind(':'); colon != std::string::npos) lower.erase(0, colon + 1);
  return lower;
}

bool isText(const xmlNode& node) {
  return node.type == XML_TEXT_NODE || node.type == XML_CDATA_SECTION_NODE;
}

std::string markupOf(xmlNode& node) {
  const XMLText buffer(xmlBufferCreate(), xmlBufferFree);
  for (auto* child = node.children; child; child = child->next)
    if (xmlNodeDump(buffer.get(), node.doc, child, 0, 0) < 0) break;
  return std::string(trimmedVAST(ofXML(xmlBufferContent(buffer.get()))));
}

// `isKept`: what is around it is kept as it stands, and this with it. So many lines stood before what the parser was given.
bool read(xmlNode& from, VASTNode& to, int depth, bool isKept, int linesAbove) {
  if (depth > deepest) return false;
  to.name = nameOfXML(from.name);
  to.line = static_cast<int>(xmlGetLineNo(&from)) + linesAbove;
  for (const auto* attribute = from.properties; attribute; attribute = attribute->next)
    to.attributes.emplace_back(nameOfXML(attribute->name),
                               attribute->children ? ofXML(attribute->children->content) : std::string());
  const bool keeps = !isKept && (to.name == "extension" || to.name == "creativeextension");
  if (keeps) to.markup = markupOf(from);
  for (auto* child = from.children; child; child = child->next) {
    if (isText(*child)) to.text += ofXML(child->content);
    if (child->type == XML_ELEMENT_NODE &&
        !read(*child, to.children.emplace_back(), depth + 1, isKept || keeps, linesAbove))
      return false;
  }
  to.text = trimmedVAST(to.text);
  return true;
}

bool declaresEntities(std::string_view text) {
  constexpr std::string_view declaration = "<!entity";
  return std::search(text.begin(), text.end(), declaration.begin(), declaration.end(), [](char a, char b) {
           return (a >= 'A' && a <= 'Z' ? a + ('a' - 'A') : a) == b;
         }) != text.end();
}

}  // namespace

bool isWithinVASTLimits(std::string_view text) {
  return text.size() <= VASTDocument::mostBytes && !declaresEntities(text) && Repair(text).result();
}

bool beginsVASTReference(std::string_view text) {
  const auto end = text.substr(0, 12).find(';');
  if (end == std::string_view::npos) return false;
  const auto name = text.substr(1, end - 1);
  if (name == "amp" || name == "lt" || name == "gt" || name == "quot" || name == "apos") return true;
  if (!name.starts_with('#')) return false;
  const bool isHex = name.starts_with("#x") || name.starts_with("#X");
  const auto digits = name.substr(isHex ? 2 : 1);
  return name[1] != 'X' && !digits.empty() &&
         digits.find_first_not_of(isHex ? "0123456789abcdefABCDEF" : "0123456789") == std::string_view::npos;
}

std::string_view trimmedVAST(std::string_view text) {
  while (!text.empty() && isBlankInXML(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlankInXML(text.back())) text.remove_suffix(1);
  return text;
}

std::string vastURL(std::string_view text) {
  std::string url(trimmedVAST(text));
  std::erase_if(url, [](char c) { return c != ' ' && isBlankInXML(c); });
  if (url.starts_with("//")) url.insert(0, "https:");
  const auto scheme = lowercased(url.substr(0, 8));
  return scheme.starts_with("https://") || scheme.starts_with("http://") ? url : std::string();
}

const VASTNode* VASTNode::child(std::string_view childName) const {
  const auto found = std::find_if(children.begin(), children.end(),
                                  [&](const VASTNode& node) { return node.name == childName; });
  return found == children.end() ? nullptr : &*found;
}

std::string VASTNode::textOf(std::string_view childName) const {
  const auto* node = child(childName);
  return node ? node->text : std::string();
}

std::optional<std::string> VASTNode::attribute(std::string_view attributeName) const {
  for (const auto& [key, value] : attributes)
    if (key == attributeName && !trimmedVAST(value).empty()) return std::string(trimmedVAST(value));
  return std::nullopt;
}

std::optional<double> VASTNode::number(std::string_view attributeName) const {
  const auto value = attribute(attributeName);
  return value ? parseNumber(*value) : std::nullopt;
}

std::optional<bool> VASTNode::flag(std::string_view attributeName) const {
  const auto value = lowercased(attribute(attributeName).value_or(""));
  if (value == "true" || value == "1" || value == "yes") return true;
  if (value == "false" || value == "0" || value == "no") return false;
  return std::nullopt;
}

std::optional<VASTNode> readVASTNode(std::string_view text) {
  if (text.size() > VASTDocument::mostBytes || declaresEntities(text)) return std::nullopt;
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  const auto whole = text;
  text = trimmedVAST(text);
  const auto linesAbove = static_cast<int>(std::count(whole.data(), text.data(), '\n'));
  const auto converted = isValidUTF8(text) ? std::string() : fromLatin1(text);
  const auto repaired = Repair(converted.empty() ? text : converted).result();
  if (!repaired) return std::nullopt;

  static std::once_flag initialized;
  std::call_once(initialized, xmlInitParser);
  const XMLContext context(xmlNewParserCtxt(), xmlFreeParserCtxt);
  if (!context) return std::nullopt;
  bool lost = false;
  context->_private = &lost;
  // The error's type is constant from libxml2 2.12 on.
  context->sax->serror = [](void* userData, auto* error) {
    if (isLost(error->code)) *static_cast<bool*>(static_cast<xmlParserCtxt*>(userData)->_private) = true;
  };
  constexpr int options = XML_PARSE_RECOVER | XML_PARSE_NONET | XML_PARSE_IGNORE_ENC | XML_PARSE_NOERROR |
                          XML_PARSE_NOWARNING | XML_PARSE_NOBLANKS;
  const XMLTree tree(xmlCtxtReadMemory(context.get(), repaired->data(), static_cast<int>(repaired->size()),
                                       nullptr, "UTF-8", options),
                     xmlFreeDoc);
  auto* root = tree && !lost ? xmlDocGetRootElement(tree.get()) : nullptr;
  VASTNode node;
  return root && read(*root, node, 0, false, linesAbove) ? std::optional(std::move(node)) : std::nullopt;
}

}  // namespace velto
