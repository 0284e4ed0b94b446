// Requests of which nobody reads the answer.
#include "velto/vast/VASTSender.h"

#include "velto/platform/MainQueue.h"
#include "velto/platform/NSURLSession.h"
#include "velto/platform/Platform.h"
#include "velto/platform/foundation/Text.h"
#include "velto/vast/VASTMacros.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <optional>
#include <utility>

namespace velto {
namespace {

constexpr int mostRefusals = 3;
constexpr int mostTries = 50;                        // some hours
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
  struct Message {
    NSURL url;
    uint64_t arrivedBefore = 0;  // `arrived`, as it was when this one last failed
    int refusals = 0;            // how often others arrived, and this one did not
    int tries = 0;               // that failed
    Heard heard;
    void tell(const VASTSent& sent) const {
      if (heard) heard(sent);
    }
  };
  std::deque<Message> waiting;
  uint64_t arrived = 0;
  std::chrono::seconds pause{firstPause};
  bool isPausing =
      false;  // a timer runs, or the request with which it was found out whether the network is back

  // `isTrial`: one of those that wait, alone.
  void send(const Message& message, bool isTrial) {
    auto* platform = Platform::currentOrNull();
    if (!platform) return;
    platform->urlSession().dataTask(
        {message.url, "GET", {}, std::nullopt, mostOfAnAnswer},
        [weak = weak_from_this(), message, isTrial](const auto&, const auto& response,
                                                    const std::optional<NSError>& error) {
          auto* now = Platform::currentOrNull();
          if (!now) return;
          VASTSent sent{error ? VASTSent::Result::Perhaps : VASTSent::Result::Arrived,
                        !error && response ? response->statusCode : 0};
          if (neverLeft(error)) sent.result = VASTSent::Result::Waits;
          now->mainQueue().post([weak, message, isTrial, sent] {
            if (const auto self = weak.lock()) self->answered(message, isTrial, sent);
          });
        });
  }
  void answered(const Message& message, bool isTrial, const VASTSent& sent) {
    if (isTrial) isPausing = false;
    if (sent.result == VASTSent::Result::Waits) return keep(message);
    message.tell(sent);
    ++arrived;
    if (!isTrial) return;
    pause = firstPause;
    for (const auto& next : std::exchange(waiting, {})) send(next, false);
  }
  // At the end, so that one whose server is gone does not hold up the others.
  void keep(Message message) {
    const bool isRefused = arrived > message.arrivedBefore && ++message.refusals >= mostRefusals;
    if (++message.tries >= mostTries || isRefused) {
      message.tell({VASTSent::Result::GivenUp});
      return pauseAndRetry();
    }
    if (message.tries == 1) message.tell({VASTSent::Result::Waits});
    message.arrivedBefore = arrived;
    waiting.push_back(std::move(message));
    if (waiting.size() > mostWaiting) {
      waiting.front().tell({VASTSent::Result::GivenUp});
      waiting.pop_front();
    }
    pauseAndRetry();
  }
  void pauseAndRetry() {
    auto* platform = Platform::currentOrNull();
    if (isPausing || waiting.empty() || !platform) return;
    isPausing = true;
    platform->mainQueue().postAfter(pause, [weak = weak_from_this()] {
      if (const auto self = weak.lock()) self->retry();
    });
    pause = std::min<std::chrono::seconds>(pause * 2, longestPause);
  }
  void retry() {
    const auto message = waiting.front();
    waiting.pop_front();
    send(message, true);
  }
};

std::shared_ptr<VASTSender> VASTSender::shared() {
  return Platform::shared<VASTSender>();
}

VASTSender::VASTSender() : state_(std::make_shared<State>()) {}
VASTSender::~VASTSender() = default;

void VASTSender::send(const std::vector<std::string>& urls, const VASTMacros& macros, const Heard& heard) {
  std::vector<NSURL> all;
  for (const auto& url : urls) {
    auto address = NSURL::URLByEscaping(macros.expanded(url));
    if (address && schemeOf(*address).starts_with("http"))
      all.push_back(std::move(*address));
    else if (heard)
      Platform::current().mainQueue().post([heard] { heard({VASTSent::Result::GivenUp}); });
  }
  std::stable_partition(all.begin(), all.end(), [](const auto& url) { return schemeOf(url) == "https"; });
  for (const auto& url : all) state_->send({url, state_->arrived, 0, 0, heard}, false);
}

size_t VASTSender::waiting() const {
  return state_->waiting.size();
}

}  // namespace velto
