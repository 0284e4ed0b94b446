// What is looked for in pages: the no-fill link, against a plain search that looks at every link of the text in
// turn; the publisher's identifiers, which are parts of one link.
#include "velto/ads/AdPublisherInfoSDKVelto.h"
#include "velto/ads/AdSDKVelto.h"

#include <algorithm>
#include <cctype>

#include "Check.h"

namespace {

constexpr std::string_view wanted = "velto://noFillAd";

bool inScheme(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) || c == '+' || c == '-' || c == '.';
}

// For each "://" by itself: is it a link's, and does that link contain what is wanted?
bool plainSearch(const std::string& text) {
  static const std::string ends = [] {
    std::string all = "\"'<>`\x7f";
    for (char c = 0; c <= 0x20; ++c) all += c;
    return all;
  }();
  size_t end = 0;  // of the link already found
  for (size_t at = 0; (at = text.find("://", std::max(at, end))) != std::string::npos; ++at) {
    size_t start = at;
    while (start > 0 && inScheme(text[start - 1])) --start;
    if (start == at || !std::isalpha(static_cast<unsigned char>(text[start]))) continue;
    if (start > 0 && text[start - 1] == '_') continue;
    end = std::min(text.find_first_of(ends, at + 3), text.size());
    if (end > at + 3 && text.substr(start, end - start).find(wanted) != std::string::npos) return true;
  }
  return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const auto text = spelled(
      asText(data, size),
      {{'N', wanted}, {'S', "://"}, {'O', "ord%3D"}, {'B', "veltos%3D"}, {'P', "veltop%3D"}, {'A', "%26"}});
  if (const auto found = velto::AdPublisherInfoSDKVelto::publisherIdentifiersIn(text))
    require(text.find("ord%3D" + found->ordId + "%26") != std::string::npos);
  // Beyond ASCII only the search itself knows what a letter is.
  const bool isPlain = std::all_of(text.begin(), text.end(), [](char c) { return c >= 0; });
  const bool found = velto::AdSDKVelto::isAdNoFill(text);
  require(!isPlain || found == plainSearch(text));
  return 0;
}
