// The walk along the items.
#include "velto/ads/VeltoAdMediationResolver.h"

#include "velto/ads/VeltoAdMediationAdapterManager.h"
#include "velto/network/JSONSDKVelto.h"
#include "velto/platform/Platform.h"
#include "velto/timeline/LoadRecord.h"

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

void answer(const VeltoAdCompletion& completion, VeltoAdEndReason reason) {
  if (completion) completion(nullptr, VeltoErrorAd::because(reason));
}

// In the timeline of the load: which item is tried, and why the walk goes on from it.
void writeDown(const std::shared_ptr<VeltoMediationItemResponse>& item,
               std::optional<VeltoAdEndReason> passedOver = std::nullopt) {
  constexpr size_t longestName = 64;
  if (!item || !LoadScope::current()) return;
  std::string name = item->cn().value_or("");
  size_t length = std::min(name.size(), longestName);
  while (length < name.size() && (name[length] & 0xC0) == 0x80) --length;  // whole characters
  name.resize(length);
  LoadScope::add(passedOver ? VeltoTimelineKind::NetworkPassedOver : VeltoTimelineKind::NetworkTried,
                 VeltoNetworkTry{std::move(name), passedOver});
}

}  // namespace

void VeltoAdMediationResolver::resolveAd(const VeltoTaskResponsePointer& response,
                                         std::optional<int64_t> bannerSize,
                                         const VeltoAdCompletion& completionHandler) {
  const auto json = response->data ? JSONSDKVelto::JSONDictionary(*response->data) : std::nullopt;
  if (!json || !json->object()) return answer(completionHandler, VeltoAdEndReason::InstructionsUnreadable);
  const auto mediation = VeltoMediationResponse::mediationFor(*json->object());
  const auto& items = mediation->mediations();
  const bool hasItems = items && !items->empty();
  if (!hasItems) answer(completionHandler, VeltoAdEndReason::InstructionsEmpty);
  VeltoAdMediationItemResolver::resolveMediationItem(hasItems ? items->front() : nullptr, mediation,
                                                     bannerSize, response->headers, completionHandler);
}

void VeltoAdMediationItemResolver::resolveMediationItem(const Item& item, const Mediation& mediation,
                                                        std::optional<int64_t> bannerSize,
                                                        const Headers& headers,
                                                        VeltoAdCompletion completionHandler) {
  inTurn([=, load = LoadScope::current(), completion = std::move(completionHandler)] {
    const LoadScope scope(load);
    writeDown(item);
    const auto adapter = VeltoAdMediationAdapterManager::adapterForMediationItem(item);
    const auto handler = adapter->handler();
    if (!handler) {
      writeDown(item, VeltoAdEndReason::AdapterUnknown);
      return _handleNextMediationItemFrom(item, mediation, bannerSize, headers, completion);
    }
    // Each item is tried once: an adapter that answers again (as one whose server sends an empty list does)
    // must not send the walk along the rest twice. An adapter of the application's may outlive the platform.
    handler->adapt(item, bannerSize, headers, adapter->adType(),
                   [=, answered = std::make_shared<std::atomic_flag>()](
                       const std::shared_ptr<VeltoAd>& ad, const std::optional<VeltoErrorAd>& error) {
                     if (answered->test_and_set() || !Platform::currentOrNull()) return;
                     inTurn([=] {
                       const LoadScope inAnswer(load);
                       if (!ad || error) {
                         writeDown(item, error ? error->reason : VeltoAdEndReason::Unexplained);
                         _handleNextMediationItemFrom(item, mediation, bannerSize, headers, completion);
                       } else if (completion) {
                         completion(ad, std::nullopt);
                       }
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
  if (!items) return VeltoErrorAd::because(VeltoAdEndReason::NobodyFilled);
  // Where it was read, unless the list was changed since: a long one is not searched anew for each of its items.
  const bool isInPlace = item && item->place < items->size() && items->at(item->place) == item;
  const auto found = isInPlace ? items->begin() + static_cast<std::ptrdiff_t>(item->place)
                               : std::find(items->begin(), items->end(), item);
  if (found == items->end()) return VeltoErrorAd::because(VeltoAdEndReason::ItemNotInList);
  const auto next = found + 1;
  if (next == items->end()) return VeltoErrorAd::because(VeltoAdEndReason::NobodyFilled);
  resolveMediationItem(*next, mediation, bannerSize, headers, completionHandler);
  return std::nullopt;
}

}  // namespace velto
