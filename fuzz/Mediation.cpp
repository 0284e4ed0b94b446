// Mediation instructions: whatever a server sends ends in one answer (two for instructions without items), an
// ad or an error but never both, and the walk gives the first page that stands in the list.
//
// Random bytes hardly ever make instructions, so the input is read in two ways: as the body itself, and as a
// row of items, each byte of which chooses a kind and the bytes that follow its data.
#include "velto/ads/VeltoAd.h"
#include "velto/ads/VeltoAdMediationResolver.h"
#include "velto/headless/VeltoHeadless.h"
#include "velto/network/JSONSDKVelto.h"
#include "velto/platform/foundation/Text.h"

#include <vector>

#include "Check.h"

namespace {

using namespace velto;

struct Outcome {
  std::vector<std::string> pages;
  std::vector<int64_t> errors;
};

Outcome resolve(const std::string& body) {
  auto answer = std::make_shared<NSURLResponse>();
  answer->isHTTP = true;
  answer->statusCode = 200;
  for (const auto& [name, value] :
       {std::pair{"x-content", "mediation"}, {"x-width", "320"}, {"x-height", "50"}})
    answer->allHeaderFields.add(name, value);
  Outcome outcome;
  VeltoAdMediationResolver::resolveAd(
      VeltoTaskResponse::responseFor(answer, body, std::nullopt), 1,
      [&](const std::shared_ptr<VeltoAd>& ad, const std::optional<VeltoErrorAd>& error) {
        require((ad != nullptr) != error.has_value());
        if (ad) outcome.pages.push_back(ad->html.value());
        if (error) outcome.errors.push_back(error->errorCode);
      });
  return outcome;
}

void resolveAsItStands(const std::string& body) {
  // An item that asks the server again needs one; here there is none.
  if (body.find("Monetize") != std::string::npos || body.find('\\') != std::string::npos) return;
  const auto outcome = resolve(body);
  const size_t answers = outcome.pages.size() + outcome.errors.size();
  if (const auto json = JSONSDKVelto::JSONDictionary(body); json && json->object())
    (void)VeltoMediationResponse::mediationFor(*json->object())->description();
  require(answers == 1 || answers == 2);
}

void resolveItems(std::string_view input) {
  static const std::string names[] = {"VeltoPassbackBannerAdapter", "VeltoPassbackInterstitialAdapter",
                                      "Other", "veltopassbackbanneradapter"};
  std::vector<std::string> items;
  std::optional<std::string> first;
  for (size_t at = 0; at + 1 < input.size();) {
    const auto kind = static_cast<uint8_t>(input[at]);
    const std::string page(input.substr(at + 2, static_cast<uint8_t>(input[at + 1]) % 16U));
    at += 2 + page.size();
    // Line breaks, foreign characters and a number that is a text change nothing; an "e" that is no object
    // does.
    std::string data = base64Encode(page);
    if (kind & 4) data.insert(data.size() / 2, "\\r\\n*-_ ");
    const std::string quoted = R"({"data":")" + data + R"(","timeout":"2500"})";
    items.push_back(R"({"cn":")" + names[kind % 4] + R"(","e":)" + (kind & 8 ? "[" + quoted + "]" : quoted) +
                    "}");
    if (!first && kind % 4 < 2 && !(kind & 8) && isValidUTF8(page)) first = page;
  }
  const auto outcome = resolve(R"({"mediation":[)" + join(items, ",") + "]}");
  if (items.empty())
    return require(outcome.errors == std::vector<int64_t>{VeltoErrorServer, VeltoErrorDeveloper});
  if (first) return require(outcome.pages == std::vector{*first} && outcome.errors.empty());
  require(outcome.pages.empty() && outcome.errors == std::vector<int64_t>{VeltoErrorNoFill});
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const auto platform = headless::Platform::install();  // for the time and the key that ads bear
  resolveAsItStands(std::string(asText(data, size)));
  resolveItems(asText(data, size));
  return 0;
}
