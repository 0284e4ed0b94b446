// Response headers: any names and values give a classification, and sizes and times that are numbers or
// nothing.
#include "velto/network/VeltoTaskResponse.h"
#include "velto/platform/foundation/Text.h"

#include "Check.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const char* const names[] = {"x-content", "Content-Type", "X-Width", "x-height", "x-fst", "x-ttl"};
  auto answer = std::make_shared<velto::NSURLResponse>();
  answer->isHTTP = true;
  answer->statusCode = 200;
  size_t next = 0;
  for (const auto& line : velto::split(asText(data, size), "\n")) {
    const size_t colon = line.find(':');
    if (colon == std::string::npos)
      answer->allHeaderFields.add(names[next++ % 6], line);
    else
      answer->allHeaderFields.add(line.substr(0, colon), line.substr(colon + 1));
  }
  const auto response = velto::VeltoTaskResponse::responseFor(answer, "", std::nullopt);
  require(response->responseType <= velto::VeltoTaskResponseMediation);
  const auto& headers = *response->headers;
  require((headers.size() == velto::CGSize{}) ||
          (headers.width().has_value() && headers.height().has_value()));
  require(headers.timerSeconds().has_value() == answer->allHeaderFields.value("X-FST").has_value());
  require(headers.ttl().has_value() == answer->allHeaderFields.value("X-TTL").has_value());
  (void)response->description();
  return 0;
}
