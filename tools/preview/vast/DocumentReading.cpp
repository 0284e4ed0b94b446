// From the text to what is wrong with it: the document as a whole, its ads and wrappers.
#include "preview/vast/DocumentReading.h"

#include <libxml/parser.h>
#include <velto/platform/foundation/Text.h>
#include <velto/vast/VASTDocument.h>

#include <algorithm>
#include <memory>

#include "preview/vast/DocumentCheck.h"

namespace velto::preview {
namespace {

constexpr size_t largestDocument = 100 * 1024;  // bytes
constexpr size_t mostWrappers = 5,
                 manyWrappers = 3;  // one inside another; the library follows the first number
constexpr double firstWithIdentifiers = 4, firstWithServing = 4.1;  // versions

struct FirstError {
  std::string text;
  int line = 0;
};

// What stands in the parser's own way, for who has to find it. The text is within the reader's limits.
FirstError firstErrorOf(const std::string& whole) {
  FirstError first;
  std::string_view text = whole;
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  text = trimmedVAST(text);
  const auto linesAbove = static_cast<int>(std::count(whole.data(), text.data(), '\n'));
  const std::unique_ptr<xmlParserCtxt, void (*)(xmlParserCtxt*)> context(xmlNewParserCtxt(),
                                                                         xmlFreeParserCtxt);
  if (!context) return first;
  context->_private = &first;
  // The error's type is constant from libxml2 2.12 on.
  context->sax->serror = [](void* userData, auto* error) {
    auto& told = *static_cast<FirstError*>(static_cast<xmlParserCtxt*>(userData)->_private);
    if (told.text.empty() && error->level == XML_ERR_FATAL)
      told = {validUTF8(error->message ? error->message : "?"), error->line};
  };
  constexpr int options = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;
  xmlFreeDoc(xmlCtxtReadMemory(context.get(), text.data(), static_cast<int>(text.size()), nullptr, nullptr,
                               options));
  if (first.line > 0) first.line += linesAbove;
  first.text.erase(std::min(first.text.size(), first.text.find_last_not_of(" \n") + 1));
  return first;
}

// `markup`: nothing where the text is beyond the reader's limits.
void tellNotXML(const std::string& text, const std::optional<std::string>& markup, DocumentCheck& check) {
  if (text.size() > VASTDocument::mostBytes) return check.add("vast-not-xml", 0, "it is larger than 5 MiB");
  if (lowercased(text).find("<!entity") != std::string::npos)
    return check.add("vast-not-xml", 0, "it declares entities, which players do not expand");
  const auto error = markup ? firstErrorOf(validUTF8(*markup)) : FirstError();
  check.add(
      "vast-not-xml", error.line,
      error.text.empty() ? "it is nested too deeply, or has too many elements or attributes" : error.text);
}

// With a text of its own, or with children.
bool isThere(const VASTNode& parent, const char* name) {
  return std::any_of(parent.children.begin(), parent.children.end(), [&](const VASTNode& node) {
    return node.name == name && !(node.text.empty() && node.children.empty());
  });
}

void require(const VASTNode& parent, const char* name, DocumentCheck& check,
             const char* id = "vast-missing-node") {
  if (!isThere(parent, name))
    check.add(id, parent, "<" + nodeName(parent.name) + "> has no <" + nodeName(name) + ">");
}

void checkShared(const VASTNode& ad, DocumentCheck& check) {
  require(ad, "adsystem", check, "vast-missing-detail");
  require(ad, "impression", check);
  if (!isThere(ad, "error"))
    check.add("vast-no-error-address", ad, "<" + nodeName(ad.name) + "> has no <Error>");
  checkCreatives(ad, check);
}

void checkInLine(const VASTNode& ad, DocumentCheck& check) {
  require(ad, "adtitle", check, "vast-missing-detail");
  if (check.version >= firstWithServing) require(ad, "adservingid", check, "vast-missing-detail");
  require(ad, "creatives", check);
  ad.each("creatives", "creative", [&](const VASTNode& creative) {
    if (check.version < firstWithIdentifiers || !creative.child("linear")) return;
    const auto* identifier = creative.child("universaladid");
    if (!identifier || (identifier->text.empty() && !identifier->attribute("idvalue")))
      check.add("vast-missing-detail", creative, "<Creative> has no <UniversalAdId>");
  });
}

void checkWrapper(const VASTNode& ad, DocumentCheck& check) {
  const auto* node = ad.child("vastadtaguri");
  if (!node || node->text.empty()) return require(ad, "vastadtaguri", check);
  const auto tag = vastURL(node->text);
  const auto& above = check.around.tags;
  const auto place = above.size() + 1;
  if (std::find(above.begin(), above.end(), tag) != above.end() && !tag.empty())
    return check.add("vast-wrapper-loop", *node, "it leads back to " + tag);
  if (place > mostWrappers)
    return check.add("vast-wrapper-loop", *node,
                     "it is wrapper number " + std::to_string(place) + ", and players follow " +
                         std::to_string(mostWrappers));
  if (place == manyWrappers + 1)
    check.add("vast-many-wrappers", *node, "it is wrapper number " + std::to_string(place));
}

void checkAd(const VASTNode& node, DocumentCheck& check) {
  const auto* inLine = node.child("inline");
  const auto* wrapper = node.child("wrapper");
  if (!inLine && !wrapper)
    return check.add("vast-missing-node", node, "<Ad> has neither <InLine> nor <Wrapper>");
  ++check.reading.ads;
  const auto& ad = inLine ? *inLine : *wrapper;
  checkShared(ad, check);
  inLine ? checkInLine(ad, check) : checkWrapper(ad, check);
}

void checkRoot(const VASTNode& root, DocumentCheck& check) {
  const auto wrong = VASTDocument::read(root).error;
  if (root.name != "vast" && wrong != VASTError::VersionNotSupported)
    return check.add("vast-not-vast", root,
                     root.name == "vmap"
                         ? "it is a schedule of ad breaks (VMAP): check the documents that it names"
                         : "its root is <" + root.name + ">, not <VAST>");
  auto& version = check.reading.version = root.attribute("version").value_or("");
  if (wrong == VASTError::VersionNotSupported)
    return check.add("vast-version", root,
                     version.empty() || root.name != "vast" ? "VAST 1" : "version \"" + version + "\"");
  check.version = leadingNumber(version);
  if (check.version == 0)
    check.add("vast-version-missing", root,
              version.empty() ? "there is none" : "\"" + version + "\" is none");
  root.each("ad", [&](const VASTNode& ad) { checkAd(ad, check); });
  if (!root.child("ad")) check.add("vast-no-ad", root, "<VAST> has no <Ad>");
  checkAddresses(root, check);
}

}  // namespace

DocumentReading readDocument(const std::string& text, const DocumentSurroundings& around) {
  DocumentReading reading;
  DocumentCheck check(reading, around);
  if (text.size() > largestDocument)
    check.add("vast-too-large", 0, std::to_string(text.size() / 1024) + " KiB");
  std::optional<std::string> markup;
  const bool isWithin = isWithinVASTLimits(text);
  if (isWithin) markup = checkMarkup(text, check);
  if (const auto root = isWithin ? readVASTNode(text) : std::nullopt)
    checkRoot(*root, check);
  else
    tellNotXML(text, markup, check);
  return reading;
}

}  // namespace velto::preview
