// From request to classified response.
#include "velto/network/VeltoTaskManager.h"

#include "velto/network/VeltoTaskRequest.h"
#include "velto/platform/Platform.h"

namespace velto {
namespace {

using Response = VeltoTaskManager::Response;
using Handler = VeltoTaskManager::Handler;

void answer(const Handler& handler, Response response, std::optional<std::string> data,
            std::optional<VeltoErrorAd> error) {
  if (handler)
    handler(VeltoTaskResponse::responseFor(std::move(response), std::move(data), std::move(error)));
}

void perform(const std::optional<NSURLRequest>& request, Handler handler) {
  if (request)
    VeltoTaskManager::shared()->taskWithRequest(*request, std::move(handler));
  else if (handler)
    handler(VeltoTaskResponse::errorFor(VeltoErrorAd::veltoErrorAdWithCode(VeltoErrorDeveloper)));
}

// What a finished data task means.
void finish(std::optional<std::string> data, Response response, std::optional<NSError> error,
            const Handler& handler) {
  if (error)
    return answer(handler, std::move(response), std::move(data),
                  VeltoErrorAd::veltoErrorAdWithCode(VeltoErrorNoConnection, std::move(error)));
  if (!data || !response || !response->isHTTP)
    return answer(handler, std::move(response), std::move(data),
                  VeltoErrorAd::veltoErrorAdWithCode(VeltoErrorServer));
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
  perform(VeltoTaskRequest::requestFor(type, size, settings), std::move(completionHandler));
}

void VeltoTaskManager::executeTaskForMediationItemData(const std::string& data, Handler completionHandler) {
  perform(VeltoTaskRequest::requestForMediationItemData(data), std::move(completionHandler));
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
  answer(handler, std::move(response), std::move(data), VeltoErrorAd::veltoErrorAdWithCode(VeltoErrorNoFill));
}
void VeltoTaskManager::_responseStatusCode500(Response response, std::optional<std::string> data,
                                              const Handler& handler) {
  answer(handler, std::move(response), std::move(data), VeltoErrorAd::veltoErrorAdWithCode(VeltoErrorServer));
}
void VeltoTaskManager::_responseStatusCodeUnmanaged(Response response, std::optional<std::string> data,
                                                    const Handler& handler) {
  answer(handler, std::move(response), std::move(data),
         VeltoErrorAd::veltoErrorAdWithCode(VeltoErrorDeveloper));
}

}  // namespace velto
