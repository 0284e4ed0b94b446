// From XML to ads; what the ads' creatives are made of is read in VASTCreatives.cpp.
#include "velto/vast/VASTDocument.h"

#include "velto/platform/foundation/Text.h"
#include "velto/vast/VASTCreatives.h"
#include "velto/vast/VASTNode.h"

#include <algorithm>

namespace velto {
namespace {

constexpr double oldestVersion = 2, afterNewestVersion = 5;

// One element may hold several codes, with commas between them.
void readCategories(const VASTNode& parent, std::string_view name, std::vector<VASTCategory>& categories) {
  parent.each(name, [&](const VASTNode& node) {
    for (const auto& code : split(node.text, ","))
      if (const auto trimmed = trimmedVAST(code);
          !trimmed.empty() && categories.size() < VASTDocument::mostOfAKind)
        categories.push_back({node.attribute("authority").value_or(""), std::string(trimmed)});
  });
}

void readVerifications(const VASTNode& parent, std::vector<VASTVerification>& verifications) {
  parent.each("adverifications", "verification", [&](const VASTNode& node) {
    if (verifications.size() >= VASTDocument::mostOfAKind) return;
    VASTVerification one;
    one.vendor = node.attribute("vendor").value_or("");
    one.parameters = node.textOf("verificationparameters");
    node.each("javascriptresource", [&](const VASTNode& script) {
      if (auto url = vastURL(script.text); !url.empty())
        one.scripts.push_back({std::move(url), lowercased(script.attribute("apiframework").value_or("")),
                               script.flag("browseroptional").value_or(false)});
    });
    one.hasExecutable = node.child("executableresource") != nullptr;
    for (auto& tracking : readVASTTrackings(node))
      if (tracking.event == "verificationNotExecuted") one.notExecuted.push_back(std::move(tracking.url));
    verifications.push_back(std::move(one));
  });
}

// Before 4.1 verifications stood in an extension of that type.
void readExtensions(const VASTNode& parent, VASTAd& ad) {
  parent.each("extensions", "extension", [&](const VASTNode& node) {
    const auto type = node.attribute("type").value_or("");
    if (lowercased(type) == "adverifications")
      readVerifications(node, ad.verifications);
    else if (ad.extensions.size() < VASTDocument::mostOfAKind)
      ad.extensions.push_back({type, node.markup});
  });
}

std::optional<VASTPricing> readPricing(const VASTNode& node) {
  const auto* pricing = node.child("pricing");
  const auto value = pricing ? parseNumber(pricing->text) : std::nullopt;
  if (!value) return std::nullopt;
  return VASTPricing{lowercased(pricing->attribute("model").value_or("")),
                     pricing->attribute("currency").value_or(""), *value};
}

// What inline ads and wrappers have in common.
void readShared(const VASTNode& node, VASTAd& ad) {
  if (const auto* system = node.child("adsystem")) {
    ad.adSystem = system->text;
    ad.adSystemVersion = system->attribute("version").value_or("");
  }
  ad.pricing = readPricing(node);
  ad.impressions = readVASTURLs(node, "impression");
  ad.errors = readVASTURLs(node, "error");
  if (const auto* viewable = node.child("viewableimpression"))
    ad.viewableImpression = {readVASTURLs(*viewable, "viewable"), readVASTURLs(*viewable, "notviewable"),
                             readVASTURLs(*viewable, "viewundetermined")};
  readVerifications(node, ad.verifications);
  readExtensions(node, ad);
  readVASTCreatives(node, ad);
}

void readInline(const VASTNode& node, VASTAd& ad) {
  ad.adTitle = node.textOf("adtitle");
  ad.adServingId = node.textOf("adservingid");
  ad.description = node.textOf("description");
  ad.advertiser = node.textOf("advertiser");
  ad.surveys = readVASTURLs(node, "survey");
  if (const auto seconds = parseNumber(node.textOf("expires")); seconds && *seconds >= 0)
    ad.expires = seconds;
  readCategories(node, "category", ad.categories);
}

void readWrapper(const VASTNode& node, VASTAd& ad) {
  auto& wrapper = ad.wrapper.emplace();
  if (const auto tags = readVASTURLs(node, "vastadtaguri"); !tags.empty()) wrapper.tag = tags.front();
  wrapper.followAdditionalWrappers = node.flag("followadditionalwrappers").value_or(true);
  wrapper.allowMultipleAds = node.flag("allowmultipleads").value_or(false);
  wrapper.fallbackOnNoAd = node.flag("fallbackonnoad");
  readCategories(node, "blockedadcategories", wrapper.blockedCategories);
}

std::optional<VASTAd> readAd(const VASTNode& node) {
  VASTAd ad;
  ad.id = node.attribute("id").value_or("");
  ad.adType = lowercased(node.attribute("adtype").value_or("video"));
  // Places are numbers from 1 on; others are none.
  if (const auto place = node.number("sequence"); place && *place >= 1 && *place <= 1'000'000)
    ad.sequence = static_cast<int>(*place);
  if (const auto* inlineAd = node.child("inline")) {
    readShared(*inlineAd, ad);
    readInline(*inlineAd, ad);
  } else if (const auto* wrapper = node.child("wrapper")) {
    readShared(*wrapper, ad);
    readWrapper(*wrapper, ad);
  } else {
    return std::nullopt;
  }
  return ad;
}

VASTDocument failed(VASTError error) {
  VASTDocument document;
  document.error = error;
  return document;
}

}  // namespace

VASTDocument VASTDocument::read(std::string_view text) {
  const auto root = readVASTNode(text);
  return root ? read(*root) : failed(VASTError::NotXML);
}

VASTDocument VASTDocument::read(const VASTNode& root) {
  // The root of VAST 1.
  if (root.name == "videoadservingtemplate") return failed(VASTError::VersionNotSupported);
  if (root.name != "vast") return failed(VASTError::NotVAST);
  VASTDocument document;
  document.version = root.attribute("version").value_or("");
  document.errors = readVASTURLs(root, "error");
  // One that is not said, or is no number, is taken for one that is known.
  const double version = document.version.empty() ? oldestVersion : leadingNumber(document.version);
  if (version != 0 && (version < oldestVersion || version >= afterNewestVersion)) {
    document.error = VASTError::VersionNotSupported;
    return document;
  }
  bool hasOthers = false;
  root.each("ad", [&](const VASTNode& node) {
    if (document.ads.size() >= mostAds) return;
    if (auto ad = readAd(node))
      document.ads.push_back(std::move(*ad));
    else
      hasOthers = true;
  });
  if (document.ads.empty() && hasOthers) document.error = VASTError::NotVAST;
  return document;
}

}  // namespace velto
