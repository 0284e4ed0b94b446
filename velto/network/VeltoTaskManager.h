// Performs every HTTP exchange of the library and classifies its outcome. Any thread.
//
// Handlers (which may be empty) are called once, on the URL session's own queue and never on the main thread,
// but for one case: when no request can be built, the handler is called at once, inside the call.
//
// Every exchange is a new one: no cookies, no cached answers, and no redirect from https to http
// (NSURLSession.h says why).
#pragma once

#include "velto/core/VeltoConstants.h"
#include "velto/core/VeltoSettings.h"
#include "velto/network/VeltoTaskResponse.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace velto {

class VeltoTaskManager {
 public:
  using Handler = std::function<void(std::shared_ptr<VeltoTaskResponse>)>;
  using Response = std::shared_ptr<const NSURLResponse>;

  static std::shared_ptr<VeltoTaskManager> shared();

  static void executeTaskFor(VeltoAdType type, VeltoBannerSize size,
                             const std::optional<VeltoSettings>& settings, Handler completionHandler);
  static void executeTaskForMediationItemData(const std::string& data, Handler completionHandler);
  static void executeTaskForSecondaryMRAIDContent(const std::optional<std::string>& url,
                                                  Handler completionHandler);
  // The body of whatever was answered, an error page's too; nothing without one.
  static void executeTaskForDownloadData(const std::optional<std::string>& url,
                                         std::function<void(std::optional<std::string>)> completionHandler);

  // Has the connection for the first ad request made before it (NSURLSession::connectAhead), where one can be expected: a
  // key is registered, and the address is known. Main thread.
  static Handle connectAhead();

  void taskWithRequest(const NSURLRequest& request, Handler completionHandler);
  NSURLSession& _session() const;

  static void _responseStatusCode200(Response response, std::optional<std::string> data,
                                     const Handler& handler);
  static void _responseStatusCode204(Response response, std::optional<std::string> data,
                                     const Handler& handler);
  static void _responseStatusCode500(Response response, std::optional<std::string> data,
                                     const Handler& handler);
  static void _responseStatusCodeUnmanaged(Response response, std::optional<std::string> data,
                                           const Handler& handler);
};

}  // namespace velto
