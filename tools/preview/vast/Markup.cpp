// A look at the letters, not at the tree.
#include <velto/platform/foundation/Text.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <map>
#include <set>

#include "preview/vast/DocumentCheck.h"

namespace velto::preview {
namespace {

// All elements of VAST 2.0 to 4.2.
constexpr std::array nodeNames{"VAST",
                               "Ad",
                               "AdParameters",
                               "AdServingId",
                               "AdSystem",
                               "AdTitle",
                               "AdVerifications",
                               "Advertiser",
                               "AltText",
                               "BlockedAdCategories",
                               "Category",
                               "ClickThrough",
                               "ClickTracking",
                               "ClosedCaptionFile",
                               "ClosedCaptionFiles",
                               "Companion",
                               "CompanionAds",
                               "CompanionClickThrough",
                               "CompanionClickTracking",
                               "Creative",
                               "CreativeExtension",
                               "CreativeExtensions",
                               "Creatives",
                               "CustomClick",
                               "Description",
                               "Duration",
                               "Error",
                               "ExecutableResource",
                               "Expires",
                               "Extension",
                               "Extensions",
                               "HTMLResource",
                               "IFrameResource",
                               "Icon",
                               "IconClickFallbackImage",
                               "IconClickFallbackImages",
                               "IconClickThrough",
                               "IconClickTracking",
                               "IconClicks",
                               "IconViewTracking",
                               "Icons",
                               "Impression",
                               "InLine",
                               "InteractiveCreativeFile",
                               "JavaScriptResource",
                               "Linear",
                               "MediaFile",
                               "MediaFiles",
                               "Mezzanine",
                               "NonLinear",
                               "NonLinearAds",
                               "NonLinearClickThrough",
                               "NonLinearClickTracking",
                               "NotViewable",
                               "Pricing",
                               "StaticResource",
                               "Survey",
                               "Tracking",
                               "TrackingEvents",
                               "UniversalAdId",
                               "VASTAdTagURI",
                               "Verification",
                               "VerificationParameters",
                               "VideoClicks",
                               "ViewUndetermined",
                               "Viewable",
                               "ViewableImpression",
                               "Wrapper"};

bool isNameLetter(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '-' || c == '.' || c == ':';
}

class MarkupLook {
 public:
  MarkupLook(const std::string& text, DocumentCheck& check) : text_(text), made_(text), check_(check) {}

  std::string look() {
    while (at_ < text_.size()) {
      if (pass("<![CDATA[", "]]>") || pass("<!--", "-->") || pass("<?", "?>")) continue;
      const char c = text_[at_];
      if (c == '<') lookAtTag();
      if (c == '&' && !beginsVASTReference(std::string_view(text_).substr(at_))) {
        made_[at_] = ' ';
        if (told_.insert(line_).second)
          check_.add("vast-ampersand", line_, "an \"&\" that is neither escaped nor in CDATA");
      }
      if (c == '\n') ++line_;
      ++at_;
    }
    return std::move(made_);
  }

 private:
  bool pass(std::string_view opening, std::string_view closing) {
    if (!std::string_view(text_).substr(at_).starts_with(opening)) return false;
    const auto end = text_.find(closing, at_ + opening.size());
    const auto stop = end == std::string::npos ? text_.size() : end + closing.size();
    line_ += static_cast<int>(std::count(text_.data() + at_, text_.data() + stop, '\n'));
    at_ = stop;
    return true;
  }

  // Extensions are their makers' own.
  void lookAtTag() {
    const bool isEnd = at_ + 1 < text_.size() && text_[at_ + 1] == '/';
    auto from = at_ + (isEnd ? 2 : 1), to = from;
    while (to < text_.size() && isNameLetter(text_[to])) ++to;
    if (const auto colon = text_.substr(from, to - from).rfind(':'); colon != std::string::npos)
      from += colon + 1;
    const auto name = text_.substr(from, to - from), lower = lowercased(name);
    if (lower == "extension" || lower == "creativeextension") {
      const auto close = endOfTag(to);
      const bool isEmpty = close != std::string::npos && text_[close - 1] == '/';
      if (isEnd || !isEmpty) inExtension_ = !isEnd;
    }
    const auto meant = nodeName(lower);
    if (!isEnd && !inExtension_ && meant != lower && meant != name && toldNames_.insert(name).second)
      check_.add("vast-case", line_, "<" + name + ">, which is written <" + meant + ">");
  }

  // The same one ends all that began before it, so each letter is passed once.
  size_t endOfTag(size_t from) {
    if (tagEnd_ < from) tagEnd_ = text_.find('>', from);
    return tagEnd_;
  }

  const std::string& text_;
  std::string made_;
  DocumentCheck& check_;
  size_t at_ = 0, tagEnd_ = 0;
  int line_ = 1;
  bool inExtension_ = false;
  std::set<int> told_;
  std::set<std::string> toldNames_;
};

}  // namespace

std::string nodeName(const std::string& lower) {
  static const auto all = [] {
    std::map<std::string, std::string> names;
    for (const char* name : nodeNames) names.emplace(lowercased(name), name);
    return names;
  }();
  const auto found = all.find(lower);
  return found == all.end() ? lower : found->second;
}

std::string checkMarkup(const std::string& text, DocumentCheck& check) {
  return MarkupLook(text, check).look();
}

}  // namespace velto::preview
