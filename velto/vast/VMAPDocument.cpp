// From XML to breaks.
#include "velto/vast/VMAPDocument.h"

#include "velto/platform/foundation/Text.h"
#include "velto/vast/VASTCreatives.h"
#include "velto/vast/VASTNode.h"

#include <algorithm>
#include <limits>

namespace velto {
namespace {

constexpr double newestVMAP = 2;  // before that version

VMAPAdSource readSource(const VASTNode& node) {
  VMAPAdSource source;
  source.id = node.attribute("id").value_or("");
  source.allowMultipleAds = node.flag("allowmultipleads").value_or(true);
  source.followRedirects = node.flag("followredirects").value_or(true);
  // As it stands, or as text; VASTData is the older name.
  for (const auto* name : {"vastaddata", "vastdata"}) {
    const auto* data = node.child(name);
    if (!data || source.document) continue;
    const auto* root = data->children.empty() ? nullptr : &data->children.front();
    source.document = root ? VASTDocument::read(*root) : VASTDocument::read(data->text);
  }
  if (const auto* tag = node.child("adtaguri")) {
    source.adTag = vastURL(tag->text);
    source.templateType = lowercased(tag->attribute("templatetype").value_or("vast"));
  }
  if (const auto* custom = node.child("customaddata"))
    source.templateType = lowercased(custom->attribute("templatetype").value_or("custom"));
  return source;
}

std::optional<VMAPAdBreak> readBreak(const VASTNode& node) {
  const auto offset = VMAPOffset::read(node.attribute("timeoffset").value_or(""));
  if (!offset) return std::nullopt;
  VMAPAdBreak one;
  one.offset = *offset;
  one.id = node.attribute("breakid").value_or("");
  for (const auto& type : split(lowercased(node.attribute("breaktype").value_or("linear")), ","))
    one.types.emplace_back(trimmedVAST(type));
  const auto again = readVASTTime(node.attribute("repeatafter").value_or(""));
  if (again && *again > 0) one.repeatAfter = again;
  if (const auto* source = node.child("adsource")) one.source = readSource(*source);
  for (auto& tracking : readVASTTrackings(node)) {
    const auto event = lowercased(tracking.event);
    auto* list = event == "breakstart" ? &one.starts : event == "breakend" ? &one.ends : &one.errors;
    if (list != &one.errors || event == "error") list->push_back(std::move(tracking.url));
  }
  node.each("extensions", "extension", [&](const VASTNode& extension) {
    one.extensions.push_back({extension.attribute("type").value_or(""), extension.markup});
  });
  return one;
}

}  // namespace

std::optional<VMAPOffset> VMAPOffset::read(std::string_view text) {
  const auto word = lowercased(std::string(trimmedVAST(text)));
  if (word == "start") return VMAPOffset{Kind::Start, 0};
  if (word == "end") return VMAPOffset{Kind::End, 0};
  if (word.starts_with('#')) {
    const auto number = parseNumber(word.substr(1));
    if (!number || *number < 1 || *number > 1'000'000) return std::nullopt;
    return VMAPOffset{Kind::Position, *number};
  }
  const auto moment = VASTOffset::read(word);
  if (!moment) return std::nullopt;
  return VMAPOffset{moment->isPercent ? Kind::Percent : Kind::Time, moment->value};
}

std::optional<double> VMAPOffset::secondsOf(std::optional<double> duration) const {
  switch (kind) {
    case Kind::Start:
      return 0;
    case Kind::Time:
      return duration ? std::min(value, *duration) : value;
    case Kind::Percent:
      return duration ? std::optional(*duration * value / 100) : std::nullopt;
    case Kind::End:
      return duration;
    case Kind::Position:
      break;
  }
  return std::nullopt;
}

std::optional<VMAPError> VMAPAdBreak::fault() const {
  if (std::find(types.begin(), types.end(), "linear") == types.end()) return VMAPError::BreakTypeNotSupported;
  if (!source) return std::nullopt;
  if (source->document)
    return source->document->error ? std::optional(VMAPError::AdDocumentUnreadable) : std::nullopt;
  if (!source->templateType.empty() && !source->templateType.starts_with("vast"))
    return VMAPError::TemplateNotSupported;
  return source->adTag.empty() ? std::optional(VMAPError::AdDocument) : std::nullopt;
}

Handle resolveVMAPSource(const VMAPAdSource& source, VASTSettings settings,
                         VASTResolver::Completion completion) {
  settings.allowMultipleAds = source.allowMultipleAds;
  settings.followWrappers = source.followRedirects;
  if (source.document)
    return VASTResolver::resolve(*source.document, std::move(settings), std::move(completion));
  if (const auto url = NSURL::URLByEscaping(settings.macros.expanded(source.adTag)))
    return VASTResolver::resolve(*url, std::move(settings), std::move(completion));
  VASTDocument none;
  none.error = VASTError::Wrapper;  // no address
  return VASTResolver::resolve(std::move(none), std::move(settings), std::move(completion));
}

VMAPError vmapErrorFor(VASTError error) {
  switch (error) {
    case VASTError::NotXML:
    case VASTError::NotVAST:
    case VASTError::VersionNotSupported:
      return VMAPError::AdDocumentUnreadable;
    case VASTError::WrapperTimeout:
      return VMAPError::AdDocumentTimeout;
    default:
      return VMAPError::AdDocument;
  }
}

VMAPDocument VMAPDocument::read(std::string_view text) {
  VMAPDocument document;
  const auto root = readVASTNode(text);
  if (!root) {
    document.error = VMAPError::NotXML;
  } else if (root->name != "vmap") {
    document.error = VMAPError::NotVMAP;
  } else {
    document.version = root->attribute("version").value_or("");
    if (leadingNumber(document.version) >= newestVMAP) document.error = VMAPError::VersionNotSupported;
  }
  if (document.error) return document;
  root->each("adbreak", [&](const VASTNode& node) {
    if (document.breaks.size() >= mostBreaks) return;
    if (auto one = readBreak(node)) document.breaks.push_back(std::move(*one));
  });
  return document;
}

std::vector<const VMAPAdBreak*> VMAPDocument::inOrder(std::optional<double> duration) const {
  std::vector<std::pair<double, const VMAPAdBreak*>> timed;
  for (const auto& one : breaks) {
    // The end comes behind all that is at the same time.
    if (one.offset.kind == VMAPOffset::Kind::End)
      timed.emplace_back(std::numeric_limits<double>::infinity(), &one);
    else if (const auto seconds = one.offset.secondsOf(duration))
      timed.emplace_back(*seconds, &one);
  }
  std::stable_sort(timed.begin(), timed.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<const VMAPAdBreak*> ordered;
  ordered.reserve(timed.size());
  for (const auto& one : timed) ordered.push_back(one.second);
  return ordered;
}

}  // namespace velto
