// From XML to creatives.
#include "velto/vast/VASTCreatives.h"

#include "velto/platform/foundation/Text.h"
#include "velto/vast/VASTDocument.h"
#include "velto/vast/VASTMerge.h"

#include <algorithm>
#include <array>
#include <limits>

namespace velto {
namespace {

// As the standard writes them (VAST 4.2, 3.14.1, with those of 2.0 and 3.0), and those of verifications.
constexpr std::array eventNames{"acceptInvitation",
                                "acceptInvitationLinear",
                                "adCollapse",
                                "adExpand",
                                "close",
                                "closeLinear",
                                "collapse",
                                "complete",
                                "creativeView",
                                "exitFullscreen",
                                "expand",
                                "firstQuartile",
                                "fullscreen",
                                "interactiveStart",
                                "loaded",
                                "midpoint",
                                "minimize",
                                "mute",
                                "notUsed",
                                "otherAdInteraction",
                                "overlayViewDuration",
                                "pause",
                                "playerCollapse",
                                "playerExpand",
                                "progress",
                                "resume",
                                "rewind",
                                "skip",
                                "start",
                                "thirdQuartile",
                                "timeSpentViewing",
                                "unmute",
                                "verificationNotExecuted"};

constexpr double largestCompanion = 4096;  // points

template <class Value>
void keep(std::vector<Value>& list, Value value) {
  if (list.size() < VASTDocument::mostOfAKind) list.push_back(std::move(value));
}

std::string attributeOf(const VASTNode& node, std::string_view name) {
  return node.attribute(name).value_or("");
}

std::string textAttribute(const VASTNode& node, std::string_view name) {
  return lowercased(attributeOf(node, name));
}

double length(const VASTNode& node, std::string_view name) {
  const double value = node.number(name).value_or(0);
  return value > 0 ? value : 0;
}

std::optional<double> positive(const VASTNode& node, std::string_view name) {
  const auto value = node.number(name);
  return value && *value > 0 ? value : std::nullopt;
}

std::optional<double> timeAttribute(const VASTNode& node, std::string_view name) {
  const auto text = node.attribute(name);
  return text ? readVASTTime(*text) : std::nullopt;
}

VASTMediaFile mediaFile(const VASTNode& node, std::string url) {
  VASTMediaFile file;
  file.url = std::move(url);
  file.id = attributeOf(node, "id");
  const auto delivery = textAttribute(node, "delivery");
  if (delivery == "progressive") file.delivery = VASTMediaFile::Delivery::Progressive;
  if (delivery == "streaming") file.delivery = VASTMediaFile::Delivery::Streaming;
  file.type = textAttribute(node, "type");
  file.codec = attributeOf(node, "codec");
  if (file.codec == "0") file.codec.clear();  // as samples of the standard say that it is not known
  file.width = length(node, "width");
  file.height = length(node, "height");
  file.bitrate = positive(node, "bitrate");
  file.minBitrate = positive(node, "minbitrate");
  file.maxBitrate = positive(node, "maxbitrate");
  file.fileSize = positive(node, "filesize");
  file.scalable = node.flag("scalable").value_or(true);
  file.maintainAspectRatio = node.flag("maintainaspectratio").value_or(true);
  file.apiFramework = attributeOf(node, "apiframework");
  // The same samples name the standard itself where no program is meant.
  if (lowercased(file.apiFramework) == "vast") file.apiFramework.clear();
  return file;
}

void readMedia(const VASTNode& files, VASTLinear& linear) {
  files.each("mediafile", [&](const VASTNode& node) {
    if (auto url = vastURL(node.text); !url.empty()) keep(linear.mediaFiles, mediaFile(node, std::move(url)));
  });
  files.each("interactivecreativefile", [&](const VASTNode& node) {
    keep(linear.interactiveFiles,
         {vastURL(node.text), textAttribute(node, "type"), attributeOf(node, "apiframework")});
  });
  files.each("closedcaptionfiles", "closedcaptionfile", [&](const VASTNode& node) {
    if (auto url = vastURL(node.text); !url.empty())
      keep(linear.captions, {std::move(url), textAttribute(node, "type"), attributeOf(node, "language")});
  });
}

std::vector<VASTResource> readResources(const VASTNode& node) {
  using Kind = VASTResource::Kind;
  std::vector<VASTResource> resources;
  node.each("staticresource", [&](const VASTNode& one) {
    if (auto url = vastURL(one.text); !url.empty())
      keep(resources, {Kind::Static, std::move(url), textAttribute(one, "creativetype")});
  });
  node.each("iframeresource", [&](const VASTNode& one) {
    if (auto url = vastURL(one.text); !url.empty()) keep(resources, {Kind::IFrame, std::move(url), ""});
  });
  node.each("htmlresource", [&](const VASTNode& one) {
    if (!one.text.empty()) keep(resources, {Kind::HTML, one.text, ""});
  });
  return resources;
}

VASTIcon readIcon(const VASTNode& node) {
  VASTIcon icon;
  icon.program = attributeOf(node, "program");
  icon.width = length(node, "width");
  icon.height = length(node, "height");
  icon.xPosition = textAttribute(node, "xposition");
  icon.yPosition = textAttribute(node, "yposition");
  icon.offset = timeAttribute(node, "offset");
  icon.duration = timeAttribute(node, "duration");
  icon.pxratio = positive(node, "pxratio").value_or(1);
  icon.resources = readResources(node);
  if (const auto* clicks = node.child("iconclicks")) {
    icon.clickThrough = vastURL(clicks->textOf("iconclickthrough"));
    icon.clickTrackings = readVASTURLs(*clicks, "iconclicktracking");
  }
  icon.viewTrackings = readVASTURLs(node, "iconviewtracking");
  return icon;
}

VASTCompanion readCompanion(const VASTNode& node) {
  VASTCompanion companion;
  companion.id = attributeOf(node, "id");
  companion.adSlotId = attributeOf(node, "adslotid");
  companion.altText = node.textOf("alttext");
  companion.apiFramework = attributeOf(node, "apiframework");
  companion.width = std::min(length(node, "width"), largestCompanion);
  companion.height = std::min(length(node, "height"), largestCompanion);
  companion.pxratio = positive(node, "pxratio").value_or(1);
  companion.renderingMode = textAttribute(node, "renderingmode");
  companion.resources = readResources(node);
  if (companion.renderingMode.empty()) companion.renderingMode = "default";
  companion.adParameters = node.textOf("adparameters");
  companion.clickThrough = vastURL(node.textOf("companionclickthrough"));
  companion.clickTrackings = readVASTURLs(node, "companionclicktracking");
  companion.trackings = readVASTTrackings(node);
  return companion;
}

void readCompanions(const VASTNode& companions, VASTAd& ad) {
  const auto required = textAttribute(companions, "required");
  if (required == "all") ad.companionsRequired = VASTCompanionsRequired::All;
  if (required == "any") ad.companionsRequired = VASTCompanionsRequired::Any;
  companions.each("companion", [&](const VASTNode& node) { keep(ad.companions, readCompanion(node)); });
}

VASTLinear readLinear(const VASTNode& creative, const VASTNode& node) {
  VASTLinear linear;
  linear.creativeId = attributeOf(creative, "id");
  linear.adId = attributeOf(creative, "adid");
  creative.each("universaladid", [&](const VASTNode& one) {
    // In 4.0 the value stood in an attribute.
    const auto value = one.text.empty() ? attributeOf(one, "idvalue") : one.text;
    keep(linear.universalAdIds, {one.attribute("idregistry").value_or("unknown"), value});
  });
  creative.each("creativeextensions", "creativeextension", [&](const VASTNode& one) {
    keep(linear.extensions, {attributeOf(one, "type"), one.markup});
  });
  linear.duration = readVASTTime(node.textOf("duration"));
  if (const auto offset = node.attribute("skipoffset")) linear.skipOffset = VASTOffset::read(*offset);
  if (const auto* files = node.child("mediafiles")) readMedia(*files, linear);
  linear.adParameters = node.textOf("adparameters");
  if (const auto* clicks = node.child("videoclicks")) {
    linear.clickThrough = vastURL(clicks->textOf("clickthrough"));
    linear.clickTrackings = readVASTURLs(*clicks, "clicktracking");
    linear.customClicks = readVASTURLs(*clicks, "customclick");
  }
  linear.trackings = readVASTTrackings(node);
  node.each("icons", "icon", [&](const VASTNode& icon) { keep(linear.icons, readIcon(icon)); });
  return linear;
}

}  // namespace

std::vector<std::string> readVASTURLs(const VASTNode& node, std::string_view name) {
  std::vector<std::string> urls;
  node.each(name, [&](const VASTNode& one) {
    if (auto url = vastURL(one.text); !url.empty()) keep(urls, std::move(url));
  });
  return urls;
}

std::string_view vastEventNamed(const std::string& name) {
  const auto lower = lowercased(name);
  const auto* known = std::find_if(eventNames.begin(), eventNames.end(),
                                   [&](const char* one) { return lowercased(one) == lower; });
  return known == eventNames.end() ? std::string_view() : *known;
}

std::vector<VASTTracking> readVASTTrackings(const VASTNode& node) {
  std::vector<VASTTracking> trackings;
  node.each("trackingevents", "tracking", [&](const VASTNode& one) {
    auto event = attributeOf(one, "event");
    // Names of no standard stay as they are: nothing is sent for them.
    if (const auto known = vastEventNamed(event); !known.empty()) event = known;
    VASTTracking tracking{std::move(event), vastURL(one.text), std::nullopt};
    if (const auto offset = one.attribute("offset")) tracking.offset = VASTOffset::read(*offset);
    if (!tracking.url.empty() && !tracking.event.empty()) keep(trackings, std::move(tracking));
  });
  return trackings;
}

void readVASTCreatives(const VASTNode& node, VASTAd& ad) {
  const bool isWrapper = node.name == "wrapper";  // its linear creatives all speak of the one inside
  double first = std::numeric_limits<double>::infinity();
  node.each("creatives", "creative", [&](const VASTNode& creative) {
    if (const auto* linear = creative.child("linear")) {
      // Without a sequence after those that have one.
      const double place = creative.number("sequence").value_or(std::numeric_limits<double>::max());
      if (isWrapper && ad.linear) {
        size_t room = VASTDocument::mostBytes;
        addVASTLinear(*ad.linear, readLinear(creative, *linear), room);
      } else if (place < first) {
        first = place;
        ad.linear = readLinear(creative, *linear);
      }
    }
    if (const auto* companions = creative.child("companionads")) readCompanions(*companions, ad);
    if (creative.child("nonlinearads")) ad.hasNonLinear = true;
  });
}

}  // namespace velto
