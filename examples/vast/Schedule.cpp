// See Schedule.h.
#include "Schedule.h"

#include <velto/platform/MainQueue.h>
#include <velto/platform/NSURLSession.h>
#include <velto/platform/Platform.h>
#include <velto/vast/VASTSender.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace player {
namespace {

using velto::VMAPOffset;

constexpr size_t mostBreaks = 1000;  // of one film, however often they come again

std::optional<double> secondsOf(const VMAPOffset& offset, std::optional<double> duration,
                                const std::vector<double>& opportunities) {
  constexpr auto never = std::numeric_limits<double>::infinity();
  switch (offset.kind) {
    case VMAPOffset::Kind::End:
      return duration.value_or(never);
    case VMAPOffset::Kind::Time:
      return offset.value;
    case VMAPOffset::Kind::Position: {
      const auto number = static_cast<size_t>(offset.value);
      return number <= opportunities.size() ? std::optional(opportunities[number - 1]) : std::nullopt;
    }
    default:
      if (offset.kind == VMAPOffset::Kind::Percent && offset.value >= 100) return duration.value_or(never);
      return offset.secondsOf(duration);
  }
}

}  // namespace

velto::VMAPAdBreak breakAt(VMAPOffset offset, const std::string& address) {
  velto::VMAPAdBreak made;
  made.offset = offset;
  made.types = {"linear"};
  made.source.emplace();
  made.source->adTag = address;
  return made;
}

std::deque<Due> breaksOf(const velto::VMAPDocument& schedule, std::optional<double> duration,
                         const std::vector<double>& opportunities) {
  const double end = duration.value_or(std::numeric_limits<double>::infinity());
  std::deque<Due> all;
  const auto add = [&](double at, const velto::VMAPAdBreak& plan) { all.push_back({at, &plan, end}); };
  for (const auto& plan : schedule.breaks) {
    const auto first = secondsOf(plan.offset, duration, opportunities);
    if (!first || *first > end) continue;
    add(*first, plan);
    if (!plan.repeatAfter || !duration) continue;
    for (double at = *first + *plan.repeatAfter; at < end && all.size() < mostBreaks; at += *plan.repeatAfter)
      add(at, plan);
  }
  // The end comes behind all that is at the same time.
  const auto orderOf = [](const Due& one) {
    return std::pair(one.at, one.plan->offset.kind == VMAPOffset::Kind::End);
  };
  std::stable_sort(all.begin(), all.end(),
                   [&](const Due& a, const Due& b) { return orderOf(a) < orderOf(b); });
  return all;
}

velto::Handle fetchSchedule(const std::string& address, std::function<void(velto::VMAPDocument)> done) {
  auto wanted = std::make_shared<bool>(true);
  const auto answer = [weak = std::weak_ptr(wanted), done = std::move(done)](const std::string& text) {
    auto* platform = velto::Platform::currentOrNull();
    if (!platform) return;
    platform->mainQueue().post([weak, done, document = velto::VMAPDocument::read(text)] {
      if (!weak.expired()) done(document);
    });
  };
  const auto url = velto::NSURL::URLByEscaping(address);
  if (url && url->host()) {
    velto::NSURLRequest request{*url, "GET", {}, std::nullopt, velto::VASTDocument::mostBytes};
    velto::Platform::current().urlSession().dataTask(
        std::move(request),
        [answer](std::optional<std::string> body, const auto& response, const auto& error) {
          const bool isThere = !error && response && response->statusCode / 100 == 2;
          answer(isThere ? body.value_or("") : "");
        });
  } else {
    answer("");
  }
  return velto::Handle([wanted]() mutable { wanted.reset(); });
}

void tell(const std::vector<std::string>& addresses, double filmAt, std::optional<velto::VMAPError> error) {
  velto::VASTMacros macros;
  macros.setTime(velto::VASTMacro::MediaPlayhead, filmAt);
  if (error) macros.set(velto::VASTMacro::ErrorCode, std::to_string(static_cast<int>(*error)));
  velto::VASTSender::shared()->send(addresses, macros);
}

}  // namespace player
