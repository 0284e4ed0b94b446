// A classified HTTP answer: what kind of ad it carries, or which error it means. Immutable once made; any
// thread.
#pragma once

#include "velto/Export.h"
#include "velto/core/VeltoErrorAd.h"
#include "velto/platform/Geometry.h"
#include "velto/platform/NSURLSession.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace velto {

enum VeltoTaskResponseType : uint64_t {
  VeltoTaskResponseUnknown = 0,  // errors too
  VeltoTaskResponseNoFill = 1,
  VeltoTaskResponseMarkup = 2,
  VeltoTaskResponseMediation = 3,
};

// The library's own response headers.
class VELTO_EXPORT VeltoTaskResponseHeaders {
 public:
  static std::shared_ptr<VeltoTaskResponseHeaders> headersFor(const NSURLResponse& response);

  std::optional<std::string> content() const;      // "x-content"
  std::optional<std::string> contentType() const;  // "Content-Type"
  std::optional<double> width() const;             // "x-width", points
  std::optional<double> height() const;            // "x-height", points
  std::optional<double> timerSeconds() const;      // "x-fst", sent in milliseconds
  std::optional<double> ttl() const;               // "x-ttl", seconds
  CGSize size() const;                             // zero unless both are there
  std::string description() const;

  HeaderFields headers;

 private:
  std::optional<double> numberFormatter(std::string_view name) const;
};

class VELTO_EXPORT VeltoTaskResponse {
 public:
  static std::shared_ptr<VeltoTaskResponse> responseFor(std::shared_ptr<const NSURLResponse> response,
                                                        std::optional<std::string> data,
                                                        std::optional<VeltoErrorAd> error);
  static std::shared_ptr<VeltoTaskResponse> errorFor(VeltoErrorAd error);

  VeltoTaskResponseType responseType = VeltoTaskResponseUnknown;
  std::optional<VeltoErrorAd> error;
  std::shared_ptr<VeltoTaskResponseHeaders> headers;  // only for an HTTP answer without error
  std::optional<std::string> data;
  std::shared_ptr<const NSURLResponse> response;

  std::string description() const;
};

}  // namespace velto
