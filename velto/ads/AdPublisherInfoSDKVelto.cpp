// Reading a page's identifiers, off the main thread: pages may be long.
#include "velto/ads/AdPublisherInfoSDKVelto.h"

#include "velto/platform/AnswerOnMain.h"
#include "velto/platform/ui/WKWebView.h"

namespace velto::AdPublisherInfoSDKVelto {
namespace {

constexpr char bodyScript[] = "document.body.innerHTML";
constexpr std::string_view bannerMark = "veltos%3D";
constexpr std::string_view publisherMark = "veltop%3D";
constexpr std::string_view orderMark = "ord%3D";
constexpr std::string_view separator = "%26";  // an ampersand, escaped

std::string_view before(std::string_view text, std::string_view end) {
  return text.substr(0, text.find(end));
}

// What stands between the first mark and the second one, if any, or the end.
std::optional<std::string_view> after(std::string_view text, std::string_view mark) {
  const size_t at = text.find(mark);
  if (at == std::string_view::npos) return std::nullopt;
  return before(text.substr(at + mark.size()), mark);
}

}  // namespace

std::optional<PublisherIdentifiers> publisherIdentifiersIn(std::string_view markup) {
  if (markup.find(bannerMark) == std::string_view::npos) return std::nullopt;
  const auto fromOrder = after(markup, orderMark);
  if (!fromOrder) return std::nullopt;
  const std::string_view link = before(before(*fromOrder, "&"), "\"");

  const auto bannerPart = after(link, separator);
  if (!bannerPart) return std::nullopt;
  const std::string_view ordId = before(link, separator);
  const auto publisherPart = after(link.substr(ordId.size() + separator.size()), separator);
  if (!publisherPart) return std::nullopt;

  const auto bannerId = after(*bannerPart, bannerMark);
  const auto publisherId = after(*publisherPart, publisherMark);
  if (!bannerId || !publisherId) return std::nullopt;
  return PublisherIdentifiers{std::string(ordId), std::string(*bannerId), std::string(*publisherId)};
}

void findPublisherInformations(const std::shared_ptr<WKWebView>& webView, PublisherInformation completion) {
  webView->evaluateJavaScript(bodyScript, [completion = std::move(completion)](
                                              std::optional<JSON> result, std::optional<NSError>) mutable {
    auto* platform = Platform::currentOrNull();
    if (!platform) return;
    platform->performInBackground([result = std::move(result), completion = std::move(completion)]() mutable {
      _findPublisherInformations(result, std::move(completion));
    });
  });
}

void _findPublisherInformations(const std::optional<JSON>& result, PublisherInformation completionHandler) {
  const auto* markup = result ? result->string() : nullptr;
  const auto found = markup ? publisherIdentifiersIn(*markup) : std::nullopt;
  const auto part = [&](auto member) { return found ? std::optional((*found).*member) : std::nullopt; };
  answerOnMain(std::move(completionHandler), part(&PublisherIdentifiers::ordId),
               part(&PublisherIdentifiers::bannerId), part(&PublisherIdentifiers::publisherId));
}

}  // namespace velto::AdPublisherInfoSDKVelto
