// What an ad consists of: its film and files, what stands beside and over it, what measures it.
#include <velto/platform/foundation/Text.h>
#include <velto/vast/VASTTime.h>

#include <algorithm>
#include <array>
#include <regex>
#include <vector>

#include "preview/vast/DocumentCheck.h"

namespace velto::preview {
namespace {

constexpr double largestCompanion = 1920, largestIcon = 100;  // points

std::string sizeText(double width, double height) {
  return numberText(width) + " × " + numberText(height);
}

double side(const VASTNode& node, const char* name) {
  return std::max(0.0, node.number(name).value_or(0));
}

bool hasResource(const VASTNode& node) {
  return std::any_of(node.children.begin(), node.children.end(), [](const VASTNode& child) {
    const bool isOne =
        child.name == "staticresource" || child.name == "iframeresource" || child.name == "htmlresource";
    return isOne && !child.text.empty();
  });
}

class PartsLook {
 public:
  PartsLook(const VASTNode& ad, DocumentCheck& check) : check_(check), isInLine_(ad.name == "inline") {}

  void look(const VASTNode& ad) {
    ad.each("creatives", "creative", [&](const VASTNode& creative) {
      if (const auto* linear = creative.child("linear")) lookAtLinear(*linear);
      creative.each("companionads", "companion", [&](const VASTNode& one) { lookAtCompanion(one); });
      if (const auto* overlays = creative.child("nonlinearads"); overlays && overlays->child("nonlinear"))
        check_.add("vast-non-linear", *overlays, "<NonLinearAds>");
    });
    ad.each("adverifications", "verification", [&](const VASTNode& one) { lookAtVerification(one); });
    ad.each("extensions", "extension", [&](const VASTNode& extension) {
      extension.each("adverifications", "verification",
                     [&](const VASTNode& one) { lookAtVerification(one); });
    });
  }

 private:
  void lookAtLinear(const VASTNode& linear) {
    duration_.reset();
    widest_ = highest_ = 0;
    const auto* duration = linear.child("duration");
    if (duration && !duration->text.empty()) {
      lookAtTime(*duration, duration->text, false);
      duration_ = readVASTTime(duration->text);
    } else if (isInLine_) {
      check_.add("vast-missing-node", linear, "<Linear> has no <Duration>");
    }
    if (isInLine_) lookAtFiles(linear);
    if (const auto offset = linear.attribute("skipoffset"))
      lookAtOffset(linear, *offset, "it can be skipped only after its end");
    linear.each("trackingevents", "tracking", [&](const VASTNode& tracking) {
      if (const auto offset = tracking.attribute("offset"))
        lookAtOffset(tracking, *offset, "it is told only after its end");
    });
    if (const auto* clicks = linear.child("videoclicks"); clicks && isInLine_) lookAtClicks(*clicks);
    linear.each("icons", "icon", [&](const VASTNode& icon) { lookAtIcon(icon); });
  }

  // "HH:MM:SS" or "HH:MM:SS.mmm"; of offsets a share, too.
  void lookAtTime(const VASTNode& node, const std::string& text, bool mayBeShare) {
    static const std::regex time(R"(\d\d:[0-5]\d:[0-5]\d(\.\d{3})?)"),
        share(R"(\d{1,2}(\.\d+)?%|100(\.0+)?%)");
    if (text.size() < 32 && (std::regex_match(text, time) || (mayBeShare && std::regex_match(text, share))))
      return;
    const bool isRead = mayBeShare ? VASTOffset::read(text).has_value() : readVASTTime(text).has_value();
    check_.add("vast-time", node,
               "\"" + text.substr(0, 40) + "\"" +
                   (isRead ? ", which not all players read" : ", which cannot be read"));
  }

  void lookAtOffset(const VASTNode& node, const std::string& text, const char* consequence) {
    lookAtTime(node, text, true);
    const auto offset = VASTOffset::read(text);
    if (!offset || !duration_ || offset->isPercent || offset->value <= *duration_) return;
    check_.add("vast-offset-after-end", node, text + " of " + vastTime(*duration_) + ": " + consequence);
  }

  void lookAtClicks(const VASTNode& clicks) {
    const auto isSaid = [&](const char* name) { return !clicks.textOf(name).empty(); };
    if (isSaid("clicktracking") && !isSaid("clickthrough"))
      check_.add("vast-click-nowhere", clicks, "<ClickTracking> without <ClickThrough>");
  }

  // --- files

  void lookAtFiles(const VASTNode& linear) {
    const auto* files = linear.child("mediafiles");
    std::vector<const VASTNode*> programs;
    if (files) files->each("interactivecreativefile", [&](const VASTNode& one) { programs.push_back(&one); });
    const auto isFile = [](const VASTNode& node) { return node.name == "mediafile" && !node.text.empty(); };
    if (!files || std::none_of(files->children.begin(), files->children.end(), isFile)) {
      tellOfPrograms(programs, false);
      if (files && files->child("mezzanine")) return check_.add("vast-mezzanine-only", *files, "<Mezzanine>");
      if (!programs.empty()) return check_.add("vast-no-playable-file", *files, "there is a program only");
      return check_.add(
          "vast-missing-node", files ? *files : linear,
          std::string(files ? "<MediaFiles> has no <MediaFile>" : "<Linear> has no <MediaFiles>"));
    }
    bool plays = false, isCommon = false, isFilm = false;
    std::string types;
    for (const auto& node : files->children) {
      if (!isFile(node)) continue;
      const auto type = lowercased(node.attribute("type").value_or(""));
      const auto codec = lowercased(node.attribute("codec").value_or(""));
      types += (types.empty() ? "" : ", ") + (type.empty() ? "unknown" : type) +
               (codec.empty() ? "" : " " + codec);
      isFilm = isFilm || !type.starts_with("audio/");
      lookAtFile(node, type);
      if (node.attribute("apiframework")) {
        programs.push_back(&node);
        continue;
      }
      plays = plays || !check_.around.plays || check_.around.plays(type, codec);
      isCommon = isCommon || isCommonType(type, codec);
    }
    tellOfPrograms(programs, plays);
    if (!plays)
      check_.add("vast-no-playable-file", *files, types);
    else if (!isCommon && isFilm)
      check_.add("vast-uncommon-files", *files, types);
  }

  static bool isCommonType(const std::string& type, const std::string& codec) {
    if (type.starts_with("video/webm")) return true;
    constexpr std::array usual{"avc", "h264", "h.264", "mp4a"};
    return type.starts_with("video/mp4") &&
           (codec.empty() || std::any_of(usual.begin(), usual.end(), [&](const char* name) {
              return codec.find(name) != std::string::npos;
            }));
  }

  void lookAtFile(const VASTNode& node, const std::string& type) {
    const bool isSound = type.starts_with("audio/");
    std::string missing;
    for (const char* name : {"delivery", "type", "width", "height"})
      if (!node.attribute(name) && !(isSound && (name[0] == 'w' || name[0] == 'h')))
        missing += (missing.empty() ? "" : ", ") + std::string(name);
    if (!missing.empty()) check_.add("vast-media-attributes", node, "<MediaFile> does not say: " + missing);
    widest_ = std::max(widest_, side(node, "width"));
    highest_ = std::max(highest_, side(node, "height"));
    const auto url = vastURL(node.text);
    if (url.empty() || node.attribute("apiframework")) return;
    DeclaredFile declared{{}, duration_, node.line};
    declared.file.url = url;
    declared.file.type = type;
    declared.file.width = side(node, "width");
    declared.file.height = side(node, "height");
    declared.file.fileSize = node.number("filesize");
    // Where the rate varies only its bounds are said.
    if (!node.attribute("minbitrate")) declared.file.bitrate = node.number("bitrate");
    if (lowercased(node.attribute("delivery").value_or("")) == "streaming")
      declared.file.delivery = VASTMediaFile::Delivery::Streaming;
    check_.reading.files.push_back(std::move(declared));
  }

  void tellOfPrograms(const std::vector<const VASTNode*>& programs, bool hasFilm) {
    for (const auto* node : programs)
      check_.add(hasFilm ? "vast-program-beside" : "vast-program", *node,
                 "<" + nodeName(node->name) + "> of " +
                     node->attribute("apiframework").value_or("an unknown framework"));
  }

  // --- beside and over the film

  void lookAtCompanion(const VASTNode& node) {
    const double width = side(node, "width"), height = side(node, "height");
    const auto add = [&](const std::string& text) { check_.add("vast-companion", node, text); };
    if (!hasResource(node)) add("it has no resource");
    if (width <= 0 || height <= 0) add("it does not say how large it is");
    if (std::max(width, height) > largestCompanion) add("it is " + sizeText(width, height) + " points large");
    node.each("staticresource", [&](const VASTNode& picture) {
      if (!picture.attribute("creativetype")) add("its picture does not say of which creativeType it is");
    });
  }

  void lookAtIcon(const VASTNode& node) {
    const double width = side(node, "width"), height = side(node, "height");
    const auto add = [&](const std::string& text) { check_.add("vast-icon", node, text); };
    for (const char* name : {"offset", "duration"})
      if (const auto time = node.attribute(name)) lookAtTime(node, *time, false);
    if (!hasResource(node)) add("it has no resource");
    if (std::max(width, height) > largestIcon) add("it is " + sizeText(width, height) + " points large");
    const auto isOutside = [&](const char* position, double length, double whole) {
      const auto place = node.number(position);
      return place && whole > 0 && (*place < 0 || *place + length > whole);
    };
    if (isOutside("xposition", width, widest_) || isOutside("yposition", height, highest_))
      add("it stands outside of its film, which is " + sizeText(widest_, highest_));
    const auto from = readVASTTime(node.attribute("offset").value_or(""));
    if (from && duration_ && *from > *duration_)
      check_.add("vast-offset-after-end", node, "<Icon> comes only after its end");
  }

  void lookAtVerification(const VASTNode& node) {
    const auto add = [&](const std::string& text) { check_.add("vast-verification", node, text); };
    if (!node.attribute("vendor")) add("it names no vendor");
    bool isMeasured = false;
    node.each("javascriptresource", [&](const VASTNode& script) {
      isMeasured = isMeasured || (lowercased(script.attribute("apiframework").value_or("")) == "omid" &&
                                  !script.text.empty());
    });
    if (!isMeasured) add("it has no script with apiFramework=\"omid\"");
  }

  DocumentCheck& check_;
  const bool isInLine_;
  // Of the linear creative that is looked at.
  std::optional<double> duration_;
  double widest_ = 0, highest_ = 0;
};

}  // namespace

void checkCreatives(const VASTNode& ad, DocumentCheck& check) {
  PartsLook(ad, check).look(ad);
}

}  // namespace velto::preview
