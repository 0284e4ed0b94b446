// Supplied by the platform: HTTP requests.
#pragma once

#include "velto/Export.h"
#include "velto/platform/Handle.h"
#include "velto/platform/NSError.h"
#include "velto/platform/foundation/NSURL.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velto {

// Header fields in the order they were set or received. Names match without regard to ASCII case (RFC 9110).
class VELTO_EXPORT HeaderFields {
 public:
  using Field = std::pair<std::string, std::string>;

  // Replaces the field of that name, or appends it.
  void set(std::string_view name, std::string_view value);
  // Appends to the field of that name, joined with ", " as RFC 9110 allows, or makes it.
  void add(std::string_view name, std::string_view value);
  std::optional<std::string> value(std::string_view name) const;
  const std::vector<Field>& fields() const { return fields_; }

 private:
  std::vector<Field> fields_;
};

struct NSURLRequest {
  NSURL url;
  std::string httpMethod = "GET";
  HeaderFields allHTTPHeaderFields;
  std::optional<std::string> httpBody;
  // Bytes of the answer's body, decompressed: one that grows longer
  // is cut off and an error. Nothing: the session's own bound.
  std::optional<size_t> maximumBodySize = std::nullopt;
};

// How an exchange went, the last one of several redirects. Monotonic seconds.
struct NSURLTaskMetrics {
  bool reusedConnection = false;
  double sent = 0;       // the request began to leave
  double firstByte = 0;  // of the answer came
};

// What a server answered. `isHTTP` is false for schemes that have no status code.
struct NSURLResponse {
  std::string url;
  bool isHTTP = false;
  int statusCode = 0;
  HeaderFields allHeaderFields;
  std::optional<NSURLTaskMetrics> metrics = std::nullopt;  // where the platform tells
};

class VELTO_EXPORT NSURLSession {
 public:
  // Exactly one call for each task. An HTTP answer always carries data, empty
  // when there was no body. A transport failure (no connection, time-out,
  // TLS, more data than promised or allowed, or less) carries an error, with its cause.
  using Completion =
      std::function<void(std::optional<std::string> data, std::shared_ptr<const NSURLResponse> response,
                         std::optional<NSError> error)>;

  virtual ~NSURLSession() = default;

  // Starts the request: http and https only, redirects as redirectionFor() has them. Any thread.
  //
  // Nothing is kept between requests but connections: no cookie is stored, and none sent but what the request
  // itself carries; no answer is cached, and each request reaches the server. An ad is meant for one moment,
  // and a track counts one event, so a stored answer would be wrong for both; and a cookie would tell a
  // person apart whatever that person decided about the advertising identifier.
  //
  // The completion is called on the session's own queue, one at a time, never on the main thread and never
  // inside this call. A task lives until it has answered; when the platform goes away first, its completion
  // is destroyed uncalled.
  virtual void dataTask(NSURLRequest request, Completion completion) = 0;

  // For a request that will probably come: finds the URL's server, connects to it and secures the connection, so that
  // the request need not wait for that. Nothing is asked of the server, and a failure is not told; the request finds it
  // out again. The connection is closed with the handle, or by itself after some minutes, if no request was made to the
  // server; one that has died by then costs a request the time for another. May do nothing. Main thread.
  virtual Handle connectAhead(const NSURL& /*url*/) { return {}; }
};

}  // namespace velto
