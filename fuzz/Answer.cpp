// A whole answer of an ad server, from its status line to the ad that is made of it: whatever comes, there is one ad or one
// error, never both, or silence where that is said; and what an ad was made of was markup.
//
// An input is lines of header fields, the first of which is the status, an empty line, and the body, as servers send it.
#include "velto/ads/VeltoAd.h"
#include "velto/ads/VeltoAdResolver.h"
#include "velto/core/VeltoConstants.h"
#include "velto/headless/VeltoHeadless.h"
#include "velto/platform/Redirection.h"

#include "Check.h"

namespace {

using namespace velto;

std::string_view takeLine(std::string_view& text) {
  const auto end = std::min(text.find('\n'), text.size());
  const auto line = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return line;
}

// Where a redirect leads to is of the web, no less safe than where it came from.
void follow(int status, const HeaderFields& fields) {
  const NSURLRequest request{*NSURL::URLWithString("https://ads.example/a/b?c"), "POST", {}, "body"};
  for (const int before : {0, 20}) {
    const auto next = redirectionFor(request, status, fields, before);
    require(!next.request || !next.error);
    require(!next.request || (before == 0 && next.request->url.scheme() == "https"));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const auto platform = headless::Platform::install();  // for the time and the key that ads bear
  auto rest = asText(data, size);
  auto answer = std::make_shared<NSURLResponse>();
  answer->isHTTP = true;
  for (const char c : takeLine(rest)) answer->statusCode = (answer->statusCode * 10 + (c & 15)) % 1000;
  for (auto line = takeLine(rest); !line.empty(); line = takeLine(rest)) {
    const auto colon = std::min(line.find(':'), line.size());
    answer->allHeaderFields.add(std::string(line.substr(0, colon)),
                                std::string(line.substr(std::min(colon + 1, line.size()))));
  }
  follow(answer->statusCode, answer->allHeaderFields);
  // An item that asks the server again needs one; here there is none.
  if (rest.find("Monetize") != std::string_view::npos || rest.find('\\') != std::string_view::npos) return 0;

  const auto response = VeltoTaskResponse::responseFor(answer, std::string(rest), std::nullopt);
  (void)response->description();
  require(!response->error || response->responseType == VeltoTaskResponseUnknown);
  int ads = 0, errors = 0;
  const auto note = [&](const std::shared_ptr<VeltoAd>& ad, const std::optional<VeltoErrorAd>& error) {
    require((ad != nullptr) != error.has_value());
    ads += ad != nullptr;
    errors += error.has_value();
    if (ad && response->responseType == VeltoTaskResponseMarkup) require(ad->html.has_value());
  };
  for (const auto wanted : {std::optional<int64_t>(), std::optional<int64_t>(VeltoBannerSize320x50)}) {
    ads = errors = 0;
    VeltoAdManagerAdResolver::handleTaskResponse(response, wanted, note);
    require(ads <= 1 && (ads == 0 || errors == 0) && errors <= 2);
    require(ads == 0 || response->responseType >= VeltoTaskResponseMarkup);
  }
  ads = errors = 0;
  VeltoAdManagerAdResolver::handleTaskResponseForSecondMRAIDContent(response, note);
  require(ads <= 1);
  return 0;
}
