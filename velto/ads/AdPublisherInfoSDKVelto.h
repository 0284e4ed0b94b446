// The order, banner and publisher identifiers that the server wrote into the markup of a shown ad: a click is
// told with them. The controllers ask when an ad's page has finished loading.
#pragma once

#include "velto/platform/foundation/JSON.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace velto {

class WKWebView;

namespace AdPublisherInfoSDKVelto {

using PublisherInformation =
    std::function<void(std::optional<std::string> ordId, std::optional<std::string> bannerId,
                       std::optional<std::string> publisherId)>;

// Reads the page as it stands now. The completion is called once on the main queue, with nothing three times
// unless all three were found; it is not called when the view goes before its page has answered. Main thread.
void findPublisherInformations(const std::shared_ptr<WKWebView>& webView, PublisherInformation completion);

// The same of a script's result, whatever it is. Takes its time; any thread.
void _findPublisherInformations(const std::optional<JSON>& result, PublisherInformation completionHandler);

struct PublisherIdentifiers {
  std::string ordId, bannerId, publisherId;
  bool operator==(const PublisherIdentifiers&) const = default;
};

// From markup that holds, as part of an escaped link,
// ord%3D<order>%26veltos%3D<banner>%26veltop%3D<publisher>; only the first ord%3D counts, and values are
// taken as they stand. Time is linear in the markup.
std::optional<PublisherIdentifiers> publisherIdentifiersIn(std::string_view markup);

}  // namespace AdPublisherInfoSDKVelto
}  // namespace velto
