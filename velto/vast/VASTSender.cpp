// Requests of which nobody reads the answer.
#include "velto/vast/VASTSender.h"

#include "velto/platform/MainQueue.h"
#include "velto/platform/NSURLSession.h"
#include "velto/platform/Platform.h"
#include "velto/platform/foundation/Text.h"
#include "velto/vast/VASTMacros.h"

#include <algorithm>

namespace velto {
namespace {

constexpr size_t mostOfAnAnswer = size_t{1} << 20U;  // a pixel, as a rule

bool neverLeft(const std::optional<NSError>& error) {
  if (!error) return false;
  switch (error->cause) {
    case NSErrorCause::Offline:
    case NSErrorCause::NameNotFound:
    case NSErrorCause::NotConnected:
    case NSErrorCause::Untrusted:  // another than the server answered, as networks do before a login
    case NSErrorCause::SecureConnectionFailed:
      return true;
    default:
      return false;
  }
}

std::string schemeOf(const NSURL& url) {
  return lowercased(url.scheme().value_or(""));
}

}  // namespace

struct VASTSender::State : std::enable_shared_from_this<VASTSender::State> {
  std::deque<NSURL> waiting;
  std::chrono::seconds pause{firstPause};
  bool isPausing =
      false;  // a timer runs, or the request with which it was found out whether the network is back

  // `isTrial`: the first of those that wait, alone.
  void send(const NSURL& url, bool isTrial) {
    auto* platform = Platform::currentOrNull();
    if (!platform) return;
    platform->urlSession().dataTask({url, "GET", {}, std::nullopt, mostOfAnAnswer},
                                    [weak = weak_from_this(), url, isTrial](
                                        const auto&, const auto&, const std::optional<NSError>& error) {
                                      auto* now = Platform::currentOrNull();
                                      if (!now || !(isTrial || neverLeft(error))) return;
                                      now->mainQueue().post([weak, url, isTrial, failed = neverLeft(error)] {
                                        if (const auto self = weak.lock())
                                          self->answered(url, isTrial, failed);
                                      });
                                    });
  }
  void answered(const NSURL& url, bool isTrial, bool failed) {
    if (isTrial) isPausing = false;
    if (failed) return keep(url, isTrial);
    pause = firstPause;
    auto rest = std::exchange(waiting, {});
    for (const auto& next : rest) send(next, false);
  }
  void keep(const NSURL& url, bool isTrial) {
    if (isTrial)
      waiting.push_front(url);
    else
      waiting.push_back(url);
    if (waiting.size() > mostWaiting) waiting.pop_front();
    auto* platform = Platform::currentOrNull();
    if (isPausing || !platform) return;
    isPausing = true;
    platform->mainQueue().postAfter(pause, [weak = weak_from_this()] {
      if (const auto self = weak.lock()) self->retry();
    });
    pause = std::min<std::chrono::seconds>(pause * 2, longestPause);
  }
  void retry() {
    const auto url = waiting.front();
    waiting.pop_front();
    send(url, true);
  }
};

std::shared_ptr<VASTSender> VASTSender::shared() {
  return Platform::shared<VASTSender>();
}

VASTSender::VASTSender() : state_(std::make_shared<State>()) {}
VASTSender::~VASTSender() = default;

void VASTSender::send(const std::vector<std::string>& urls, const VASTMacros& macros) {
  std::vector<NSURL> all;
  for (const auto& url : urls)
    if (auto address = NSURL::URLByEscaping(macros.expanded(url));
        address && schemeOf(*address).starts_with("http"))
      all.push_back(std::move(*address));
  std::stable_partition(all.begin(), all.end(), [](const auto& url) { return schemeOf(url) == "https"; });
  for (const auto& url : all) state_->send(url, false);
}

size_t VASTSender::waiting() const {
  return state_->waiting.size();
}

}  // namespace velto
