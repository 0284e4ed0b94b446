// From request to classified response.
#include "velto/network/VeltoTaskManager.h"

#include "velto/core/VeltoDataStore.h"
#include "velto/network/VeltoTaskRequest.h"
#include "velto/network/VeltoURL.h"
#include "velto/platform/Platform.h"
#include "velto/timeline/LoadRecord.h"

namespace velto {
namespace {

using Response = VeltoTaskManager::Response;
using Handler = VeltoTaskManager::Handler;

void answer(const Handler& handler, Response response, std::optional<std::string> data,
            std::optional<VeltoErrorAd> error) {
  if (handler)
    handler(VeltoTaskResponse::responseFor(std::move(response), std::move(data), std::move(error)));
}

using Why = VeltoAdEndReason;
using Kind = VeltoTimelineKind;

Why whyTransportFailed(const NSError& error) {
  switch (error.cause) {
    case NSErrorCause::Offline:
      return Why::Offline;
    case NSErrorCause::NameNotFound:
      return Why::NameNotFound;
    case NSErrorCause::NotConnected:
      return Why::NotConnected;
    case NSErrorCause::Untrusted:
      return Why::Untrusted;
    case NSErrorCause::SecureConnectionFailed:
      return Why::SecureConnectionFailed;
    case NSErrorCause::TimedOut:
      return Why::TimedOut;
    case NSErrorCause::ConnectionLost:
      return Why::ConnectionLost;
    case NSErrorCause::TooLarge:
      return Why::AnswerTooLarge;
    case NSErrorCause::RedirectRefused:
      return Why::RedirectRefused;
    default:
      return Why::TransportFailed;
  }
}

void perform(const std::optional<NSURLRequest>& request, Handler handler) {
  if (request) return VeltoTaskManager::shared()->taskWithRequest(*request, std::move(handler));
  // The address is the other thing that a request may lack.
  const auto why = VeltoURL::veltoURL() ? Why::BadRequestValue : Why::NoServerAddress;
  if (handler) handler(VeltoTaskResponse::errorFor(VeltoErrorAd::because(why)));
}

void writeDown(LoadRecord& load, const VeltoTaskResponse& answered) {
  const auto& response = answered.response;
  if (!response) {
    if (answered.error) load.add(Kind::AnswerFailed, answered.error->reason);
    return;
  }
  if (const auto& metrics = response->metrics) {
    load.addAt(Kind::Sent, metrics->sent,
               metrics->reusedConnection ? VeltoConnection::Reused : VeltoConnection::Made);
    load.addAt(Kind::FirstByte, metrics->firstByte);
  }
  static_assert(VeltoTaskResponseMediation == static_cast<uint64_t>(VeltoAnswerClass::Mediation));
  load.add(Kind::Answered,
           VeltoAnswer{response->statusCode, static_cast<VeltoAnswerClass>(answered.responseType)});
}

// For the load that this thread works for: its steps are written down, and what follows the answer is work for it too.
void performForLoad(const std::optional<NSURLRequest>& request, Handler handler) {
  const auto load = LoadScope::current();
  if (!load) return perform(request, std::move(handler));
  if (request) load->add(Kind::RequestBuilt, VeltoBytes{request->httpBody ? request->httpBody->size() : 0});
  perform(request, [load, handler = std::move(handler), wasSent = request.has_value()](const auto& response) {
    const LoadScope scope(load);
    if (wasSent) writeDown(*load, *response);
    if (handler) handler(response);
  });
}

// What a finished data task means.
void finish(std::optional<std::string> data, Response response, std::optional<NSError> error,
            const Handler& handler) {
  if (error) {
    const auto why = whyTransportFailed(*error);
    return answer(handler, std::move(response), std::move(data),
                  VeltoErrorAd::because(why, std::move(error)));
  }
  if (!data || !response || !response->isHTTP) {
    const auto why = data ? Why::AnswerNotHTTP : Why::AnswerWithoutData;
    return answer(handler, std::move(response), std::move(data), VeltoErrorAd::because(why));
  }
  switch (response->statusCode) {
    case 200:
      return VeltoTaskManager::_responseStatusCode200(std::move(response), std::move(data), handler);
    case 204:
      return VeltoTaskManager::_responseStatusCode204(std::move(response), std::move(data), handler);
    case 500:
      return VeltoTaskManager::_responseStatusCode500(std::move(response), std::move(data), handler);
    default:
      return VeltoTaskManager::_responseStatusCodeUnmanaged(std::move(response), std::move(data), handler);
  }
}

}  // namespace

std::shared_ptr<VeltoTaskManager> VeltoTaskManager::shared() {
  return Platform::shared<VeltoTaskManager>();
}

void VeltoTaskManager::executeTaskFor(VeltoAdType type, VeltoBannerSize size,
                                      const std::optional<VeltoSettings>& settings,
                                      Handler completionHandler) {
  performForLoad(VeltoTaskRequest::requestFor(type, size, settings), std::move(completionHandler));
}

void VeltoTaskManager::executeTaskForMediationItemData(const std::string& data, Handler completionHandler) {
  performForLoad(VeltoTaskRequest::requestForMediationItemData(data), std::move(completionHandler));
}

void VeltoTaskManager::executeTaskForSecondaryMRAIDContent(const std::optional<std::string>& url,
                                                           Handler completionHandler) {
  perform(VeltoTaskRequest::requestForSecondaryMRAIDContent(url), std::move(completionHandler));
}

void VeltoTaskManager::executeTaskForDownloadData(
    const std::optional<std::string>& url,
    std::function<void(std::optional<std::string>)> completionHandler) {
  // A request that cannot be built comes back as a response without data, which is what such a caller gets.
  perform(VeltoTaskRequest::requestForDownloadData(url),
          [handler = std::move(completionHandler)](auto response) {
            if (handler) handler(std::move(response->data));
          });
}

Handle VeltoTaskManager::connectAhead() {
  const auto url = VeltoDataStore::getVeltoKey() ? VeltoURL::veltoURL() : std::nullopt;
  return url ? shared()->_session().connectAhead(*url) : Handle();
}

void VeltoTaskManager::taskWithRequest(const NSURLRequest& request, Handler completionHandler) {
  _session().dataTask(request,
                      [handler = std::move(completionHandler)](auto data, auto response, auto error) {
                        finish(std::move(data), std::move(response), std::move(error), handler);
                      });
}

// One session serves the process, so that connections and TLS sessions are reused.
NSURLSession& VeltoTaskManager::_session() const {
  return Platform::current().urlSession();
}

void VeltoTaskManager::_responseStatusCode200(Response response, std::optional<std::string> data,
                                              const Handler& handler) {
  answer(handler, std::move(response), std::move(data), std::nullopt);
}
void VeltoTaskManager::_responseStatusCode204(Response response, std::optional<std::string> data,
                                              const Handler& handler) {
  answer(handler, std::move(response), std::move(data), VeltoErrorAd::because(Why::StatusNoFill));
}
void VeltoTaskManager::_responseStatusCode500(Response response, std::optional<std::string> data,
                                              const Handler& handler) {
  answer(handler, std::move(response), std::move(data), VeltoErrorAd::because(Why::StatusServerError));
}
void VeltoTaskManager::_responseStatusCodeUnmanaged(Response response, std::optional<std::string> data,
                                                    const Handler& handler) {
  answer(handler, std::move(response), std::move(data), VeltoErrorAd::because(Why::StatusUnexpected));
}

}  // namespace velto
