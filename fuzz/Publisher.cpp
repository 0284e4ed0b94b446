// The search for a page's publisher identifiers, against one that really splits the text at each of its
// marks.
#include "velto/ads/AdPublisherInfoSDKVelto.h"

#include <optional>
#include <string>
#include <vector>

#include "Check.h"

namespace {

using velto::AdPublisherInfoSDKVelto::PublisherIdentifiers;
using Pieces = std::vector<std::string>;

Pieces pieces(std::string text, const std::string& mark) {
  Pieces result;
  for (auto at = text.find(mark); at != std::string::npos; at = text.find(mark)) {
    result.push_back(text.substr(0, at));
    text.erase(0, at + mark.size());
  }
  result.push_back(text);
  return result;
}

std::optional<PublisherIdentifiers> plainSearch(const std::string& text) {
  if (pieces(text, "veltos%3D").size() <= 1) return std::nullopt;
  const Pieces orders = pieces(text, "ord%3D");
  if (orders.size() <= 1) return std::nullopt;
  const std::string link = pieces(pieces(orders[1], "&")[0], "\"")[0];
  const Pieces parts = pieces(link, "%26");
  if (parts.size() <= 2) return std::nullopt;
  const Pieces banner = pieces(parts[1], "veltos%3D");
  const Pieces publisher = pieces(parts[2], "veltop%3D");
  if (banner.size() < 2 || publisher.size() <= 1) return std::nullopt;
  return PublisherIdentifiers{parts[0], banner[1], publisher[1]};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // Random bytes hardly ever spell a mark, so some of them stand for one.
  std::string text;
  for (const char c : asText(data, size)) {
    if (c == 'O')
      text += "ord%3D";
    else if (c == 'S')
      text += "veltos%3D";
    else if (c == 'P')
      text += "veltop%3D";
    else if (c == 'A')
      text += "%26";
    else
      text += c;
  }
  require(velto::AdPublisherInfoSDKVelto::publisherIdentifiersIn(text) == plainSearch(text));
  return 0;
}
