// What an ad weighs, and makes the device work. The limits of network and processor are those of the heavy ad intervention
// (explainer of the W3C's Web Incubator Community Group).
#include <algorithm>
#include <array>

#include "preview/Findings.h"

namespace velto::preview {
namespace {

constexpr double mostBytes = 4'000'000;
constexpr double mostBytesBeforeLoad = 200'000;
constexpr size_t mostRequestsBeforePicture = 10;
constexpr double longestAnimation = 30;   // seconds
constexpr double mostPixelsOfAPoint = 9;  // the densest screens have three by three
constexpr double leastPixels = 10'000;    // smaller pictures weigh nothing
constexpr double growthSpan = 60'000;     // milliseconds
constexpr double mostGrowth = 10 << 20;   // bytes in that time

// The end of the page's load; of one that never came, the end of the story.
double loadEnd(const Story& story) {
  return story.timeOf("load-finished").value_or(1e12);
}

Evidence tooHeavy(const Story& story) {
  double bytes = 0;
  for (const auto* request : story.of("resource")) bytes += numberIn(*request, "bytes");
  for (const auto* weight : story.of("weight")) bytes = std::max(bytes, numberIn(*weight, "bytes"));
  if (bytes <= mostBytes) return std::nullopt;
  return JSON::Object{{"bytes", bytes}, {"most", mostBytes}};
}

Evidence heavyBeforeLoad(const Story& story) {
  double bytes = 0;
  JSON::Array heaviest;
  for (const auto* request : story.of("resource")) {
    if (numberIn(*request, "start") > loadEnd(story)) continue;
    const double size = numberIn(*request, "bytes");
    bytes += size;
    if (size > mostBytesBeforeLoad / 10) heaviest.emplace_back(story.shortAddress(textIn(*request, "url")));
  }
  if (bytes <= mostBytesBeforeLoad) return std::nullopt;
  return JSON::Object{{"bytes", bytes}, {"most", mostBytesBeforeLoad}, {"heaviest", heaviest}};
}

// The page knows its own better; what it does not count, such as its frames', is heard of here, though later than it began.
Evidence manyRequests(const Story& story) {
  double picture = loadEnd(story), ofPage = 0;
  for (const auto* page : story.of("page"))
    if (page->contains("painted")) {
      picture = numberIn(*page, "painted");
      ofPage = numberIn(*page, "requestsBeforePaint");
      break;
    }
  const auto requests = story.of("resource");
  const auto before =
      static_cast<size_t>(std::count_if(requests.begin(), requests.end(), [&](const Entry* request) {
        return numberIn(*request, "start") <= picture;
      }));
  if (std::max(static_cast<double>(before), ofPage) <= static_cast<double>(mostRequestsBeforePicture))
    return std::nullopt;
  return JSON::Object{{"most", static_cast<int>(mostRequestsBeforePicture)}};
}

Evidence tooBusy(const Story& story) {
  for (const auto* entry : story.of("library"))
    if (const auto limit = textIn(*entry, "limit"); limit.starts_with("processor"))
      return JSON::Object{
          {"limit", limit}, {"seconds", numberIn(*entry, "figure")}, {"most", numberIn(*entry, "most")}};
  return std::nullopt;
}

Evidence busyUnseen(const Story& story) {
  for (const auto* entry : story.of("library"))
    if (textIn(*entry, "limit") == "unseen")
      return JSON::Object{{"seconds", numberIn(*entry, "figure")}, {"most", numberIn(*entry, "most")}};
  return std::nullopt;
}

// Within any minute, and in each third of it: what is taken once is no leak.
Evidence memoryGrows(const Story& story) {
  for (const auto* entry : story.of("library"))
    if (textIn(*entry, "limit") == "memory")
      return JSON::Object{{"bytes", numberIn(*entry, "figure")}, {"most", numberIn(*entry, "most")}};
  const auto weights = story.of("weight");
  const auto at = [&](double time) {
    const auto found = std::find_if(weights.begin(), weights.end(),
                                    [&](const Entry* weight) { return numberIn(*weight, "t") >= time; });
    return found == weights.end() ? -1 : numberIn(**found, "memory");
  };
  for (const auto* first : weights) {
    const double begin = numberIn(*first, "t");
    const double end = at(begin + growthSpan);
    if (end < 0) break;
    const double start = numberIn(*first, "memory");
    const double third = at(begin + growthSpan / 3);
    const double twoThirds = at(begin + growthSpan * 2 / 3);
    if (end - start > mostGrowth && third > start && twoThirds > third && end > twoThirds)
      return JSON::Object{{"bytes", end - start}, {"most", mostGrowth}};
  }
  return std::nullopt;
}

Evidence endlessAnimation(const Story& story) {
  JSON::Array animations;
  for (const auto& animation : story.inPages("animations"))
    if (const auto* object = animation.object();
        object && (isSetIn(*object, "endless") || numberIn(*object, "seconds") > longestAnimation))
      animations.push_back(animation);
  if (animations.empty()) return std::nullopt;
  return JSON::Object{{"animations", animations}, {"most", longestAnimation}};
}

Evidence largeImage(const Story& story) {
  JSON::Array images;
  for (const auto& image : story.inPages("images")) {
    const auto* object = image.object();
    if (!object) continue;
    const double pixels = numberIn(*object, "width") * numberIn(*object, "height");
    const double points = numberIn(*object, "shownWidth") * numberIn(*object, "shownHeight");
    if (pixels <= leastPixels || points <= 0 || pixels <= points * mostPixelsOfAPoint) continue;
    auto told = *object;
    told["url"] = story.shortAddress(textIn(*object, "url"));
    images.emplace_back(std::move(told));
  }
  if (images.empty()) return std::nullopt;
  return JSON::Object{{"images", images}};
}

constexpr std::array weightTable{
    Rule{"too-heavy", Severity::Error, "The ad loads more than 4 MB.",
         "Browsers unload such ads, and the person pays for the traffic.",
         "Compress pictures and films, and load what only some people see when they ask for it.",
         "4 MB in all, as they are sent.", tooHeavy},
    Rule{"heavy-before-load", Severity::Warning, "The ad loads more than 200 kB before it has loaded.",
         "On a slow network nothing is to be seen for seconds.",
         "Begin with what is seen first, and load the rest after the page's load event.",
         "200 kB before the load event, and more behind it.", heavyBeforeLoad},
    Rule{"many-requests", Severity::Warning,
         "The ad makes more than 10 requests before it has painted anything.",
         "Each waits for the network before something can be seen.",
         "Put small scripts, styles and pictures into the page itself.",
         "10 requests before the first picture, more behind it.", manyRequests},
    Rule{"too-busy", Severity::Error, "The ad keeps the processor busy for too long.",
         "Browsers unload ads that take 15 s of the processor within 30 s, or 60 s in all; devices get hot.",
         "Look for loops, timers and animations that scripts paint; animate by style sheets.",
         "Less than 15 s of processor time within any 30 s, and less than 60 s in all.", tooBusy},
    Rule{"busy-unseen", Severity::Warning, "The ad works while nobody sees it.",
         "Nobody has anything of that, and the battery goes.",
         "Stop on viewableChange false, or when document.visibilityState is hidden.",
         "Half a second of work within ten.", busyUnseen},
    Rule{"memory-growth", Severity::Error, "The ad takes more and more memory.",
         "Devices end programs that take too much, and with the ad goes the application.",
         "Let go of what timers and listeners keep; draw into one canvas in place of new ones.",
         "10 MiB more within a minute, or memory that is taken once, below 300 MiB.", memoryGrows},
    Rule{"endless-animation", Severity::Warning, "An animation lasts longer than 30 s.",
         "It disturbs who reads beside it, and the screen is painted again and again.",
         "Let it end after 30 s at most: animation-iteration-count.", "30 s with all repetitions.",
         endlessAnimation},
    Rule{"large-image", Severity::Warning, "A picture is much larger than it is shown.",
         "What no screen can show is loaded, decoded and kept in memory all the same.",
         "Scale it to three pixels for each point at most, or offer sizes by srcset.",
         "Three by three pixels for each point, and pictures below 10,000 pixels.", largeImage},
};

}  // namespace

std::span<const Rule> weightRules() {
  return weightTable;
}

}  // namespace velto::preview
