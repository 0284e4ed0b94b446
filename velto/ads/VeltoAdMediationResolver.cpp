// The walk along the items.
#include "velto/ads/VeltoAdMediationResolver.h"

#include "velto/ads/VeltoAdMediationAdapterManager.h"
#include "velto/network/JSONSDKVelto.h"
#include "velto/platform/Platform.h"

#include <algorithm>
#include <atomic>
#include <deque>

namespace velto {
namespace {

// Runs steps one after another on this thread. A step asked for inside another waits its turn instead of
// nesting.
void inTurn(std::function<void()> step) {
  thread_local std::deque<std::function<void()>>* running = nullptr;
  if (running) return running->push_back(std::move(step));
  std::deque<std::function<void()>> steps;
  running = &steps;
  struct Done {
    ~Done() { running = nullptr; }  // also when an adapter throws
  } done;
  steps.push_back(std::move(step));
  while (!steps.empty()) {
    const auto next = std::move(steps.front());
    steps.pop_front();
    next();
  }
}

void answer(const VeltoAdCompletion& completion, int64_t code) {
  if (completion) completion(nullptr, VeltoErrorAd::veltoErrorAdWithCode(code));
}

}  // namespace

void VeltoAdMediationResolver::resolveAd(const VeltoTaskResponsePointer& response,
                                         std::optional<int64_t> bannerSize,
                                         const VeltoAdCompletion& completionHandler) {
  const auto json = response->data ? JSONSDKVelto::JSONDictionary(*response->data) : std::nullopt;
  if (!json || !json->object()) return answer(completionHandler, VeltoErrorServer);
  const auto mediation = VeltoMediationResponse::mediationFor(*json->object());
  const auto& items = mediation->mediations();
  const bool hasItems = items && !items->empty();
  if (!hasItems) answer(completionHandler, VeltoErrorServer);
  VeltoAdMediationItemResolver::resolveMediationItem(hasItems ? items->front() : nullptr, mediation,
                                                     bannerSize, response->headers, completionHandler);
}

void VeltoAdMediationItemResolver::resolveMediationItem(const Item& item, const Mediation& mediation,
                                                        std::optional<int64_t> bannerSize,
                                                        const Headers& headers,
                                                        VeltoAdCompletion completionHandler) {
  inTurn([=, completion = std::move(completionHandler)] {
    const auto adapter = VeltoAdMediationAdapterManager::adapterForMediationItem(item);
    const auto handler = adapter->handler();
    if (!handler) return _handleNextMediationItemFrom(item, mediation, bannerSize, headers, completion);
    // Each item is tried once: an adapter that answers again (as one whose server sends an empty list does)
    // must not send the walk along the rest twice. An adapter of the application's may outlive the platform.
    handler->adapt(item, bannerSize, headers, adapter->adType(),
                   [=, answered = std::make_shared<std::atomic_flag>()](
                       const std::shared_ptr<VeltoAd>& ad, const std::optional<VeltoErrorAd>& error) {
                     if (answered->test_and_set() || !Platform::currentOrNull()) return;
                     inTurn([=] {
                       if (!ad || error)
                         _handleNextMediationItemFrom(item, mediation, bannerSize, headers, completion);
                       else if (completion)
                         completion(ad, std::nullopt);
                     });
                   });
  });
}

void VeltoAdMediationItemResolver::_handleNextMediationItemFrom(const Item& item, const Mediation& mediation,
                                                                std::optional<int64_t> bannerSize,
                                                                const Headers& headers,
                                                                VeltoAdCompletion completionHandler) {
  const auto error = _tryHandleNextMediationItemFrom(item, mediation, bannerSize, headers, completionHandler);
  if (error && completionHandler) completionHandler(nullptr, error);
}

std::optional<VeltoErrorAd> VeltoAdMediationItemResolver::_tryHandleNextMediationItemFrom(
    const Item& item, const Mediation& mediation, std::optional<int64_t> bannerSize, const Headers& headers,
    const VeltoAdCompletion& completionHandler) {
  const auto& items = mediation->mediations();
  // Looked for in a list that is not there, anything is at its end.
  if (!items) return VeltoErrorAd::veltoErrorAdWithCode(VeltoErrorNoFill);
  const auto found = std::find(items->begin(), items->end(), item);
  if (found == items->end()) return VeltoErrorAd::veltoErrorAdWithCode(VeltoErrorDeveloper);
  const auto next = found + 1;
  if (next == items->end()) return VeltoErrorAd::veltoErrorAdWithCode(VeltoErrorNoFill);
  resolveMediationItem(*next, mediation, bannerSize, headers, completionHandler);
  return std::nullopt;
}

}  // namespace velto
