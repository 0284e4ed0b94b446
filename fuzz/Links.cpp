// What is looked for in pages: the no-fill link, and the publisher's identifiers, which are parts of one link.
#include "velto/ads/AdPublisherInfoSDKVelto.h"
#include "velto/ads/AdSDKVelto.h"

#include "Check.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const std::string wanted = "velto://noFillAd";
  const auto text = spelled(
      asText(data, size),
      {{'N', wanted}, {'S', "://"}, {'O', "ord%3D"}, {'B', "veltos%3D"}, {'P', "veltop%3D"}, {'A', "%26"}});
  if (const auto found = velto::AdPublisherInfoSDKVelto::publisherIdentifiersIn(text))
    require(text.find("ord%3D" + found->ordId + "%26") != std::string::npos);
  require(!velto::AdSDKVelto::isAdNoFill(text) || text.find(wanted) != std::string::npos);
  require(velto::AdSDKVelto::isAdNoFill(text + " " + wanted));
  return 0;
}
