// Classification of answers by their headers.
#include "velto/network/VeltoTaskResponse.h"

#include "velto/platform/foundation/Description.h"

namespace velto {
namespace {

VeltoTaskResponseType typeFor(const VeltoTaskResponseHeaders& headers) {
  if (const auto content = headers.content()) {
    // Video answers do not belong on this channel, so they count as no ad.
    if (*content == "no_fill" || *content == "vast") return VeltoTaskResponseNoFill;
    if (*content == "html") return VeltoTaskResponseMarkup;
    if (*content == "mediation") return VeltoTaskResponseMediation;
    return VeltoTaskResponseUnknown;
  }
  return headers.contentType() == "text/html" ? VeltoTaskResponseMarkup : VeltoTaskResponseUnknown;
}

}  // namespace

std::shared_ptr<VeltoTaskResponseHeaders> VeltoTaskResponseHeaders::headersFor(
    const NSURLResponse& response) {
  auto made = std::make_shared<VeltoTaskResponseHeaders>();
  made->headers = response.allHeaderFields;
  return made;
}

std::optional<std::string> VeltoTaskResponseHeaders::content() const {
  return headers.value("x-content");
}
std::optional<std::string> VeltoTaskResponseHeaders::contentType() const {
  return headers.value("Content-Type");
}
std::optional<double> VeltoTaskResponseHeaders::width() const {
  return numberFormatter("x-width");
}
std::optional<double> VeltoTaskResponseHeaders::height() const {
  return numberFormatter("x-height");
}

std::optional<double> VeltoTaskResponseHeaders::timerSeconds() const {
  const auto milliseconds = headers.value("x-fst");
  return milliseconds ? std::optional(leadingNumber(*milliseconds) / 1000) : std::nullopt;
}

std::optional<double> VeltoTaskResponseHeaders::ttl() const {
  const auto seconds = headers.value("x-ttl");
  return seconds ? std::optional(leadingNumber(*seconds)) : std::nullopt;
}

CGSize VeltoTaskResponseHeaders::size() const {
  const auto w = width();
  const auto h = height();
  return w && h ? CGSize{*w, *h} : CGSize{};
}

std::optional<double> VeltoTaskResponseHeaders::numberFormatter(std::string_view name) const {
  const auto text = headers.value(name);
  return text ? parseNumber(*text) : std::nullopt;
}

std::string VeltoTaskResponseHeaders::description() const {
  std::string list = "{";
  for (const auto& [name, value] : headers.fields())
    list.append("\n    \"").append(name).append("\" = \"").append(value).append("\";");
  return Description("VeltoTaskResponseHeaders", this).field("Headers", list + "\n}").text();
}

std::shared_ptr<VeltoTaskResponse> VeltoTaskResponse::responseFor(
    std::shared_ptr<const NSURLResponse> response, std::optional<std::string> data,
    std::optional<VeltoErrorAd> error) {
  auto made = std::make_shared<VeltoTaskResponse>();
  made->response = std::move(response);
  made->data = std::move(data);
  made->error = std::move(error);
  if (made->error || !made->response || !made->response->isHTTP) return made;
  made->headers = VeltoTaskResponseHeaders::headersFor(*made->response);
  made->responseType = typeFor(*made->headers);
  return made;
}

std::shared_ptr<VeltoTaskResponse> VeltoTaskResponse::errorFor(VeltoErrorAd error) {
  return responseFor(nullptr, std::nullopt, std::move(error));
}

std::string VeltoTaskResponse::description() const {
  return Description("VeltoTaskResponse", this)
      .field("ResponseType", responseType)
      .field("Error", error ? error->descriptionError() : std::nullopt)
      .field("Headers", headers ? std::optional(headers->description()) : std::nullopt)
      .text();
}

}  // namespace velto
