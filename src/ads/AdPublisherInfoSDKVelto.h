// The order, banner and publisher identifiers that the server wrote into the markup of a shown ad.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace velto {

class WKWebView;

namespace AdPublisherInfoSDKVelto {

using PublisherInformation = std::function<void(std::optional<std::string> ordId, std::optional<std::string> bannerId,
                                                std::optional<std::string> publisherId)>;

// Pages are not read yet: called where it will be needed, does nothing so far.
inline void findPublisherInformations(const std::shared_ptr<WKWebView>& /*webView*/, PublisherInformation /*completion*/) {}

}  // namespace AdPublisherInfoSDKVelto
}  // namespace velto
