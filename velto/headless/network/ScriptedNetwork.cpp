// Reachability objects share one set of flags and one list of callbacks.
#include "velto/headless/network/ScriptedNetwork.h"

#include "velto/headless/VirtualQueue.h"

namespace velto::headless {

struct ScriptedNetwork::State {
  std::shared_ptr<VirtualQueue> queue;
  std::optional<uint32_t> flags = SCNetworkReachabilityFlagsReachable;
  bool watchable = true;
  std::list<std::shared_ptr<std::function<void()>>> callbacks;
};

class ScriptedNetwork::Reachability : public SCNetworkReachability {
 public:
  explicit Reachability(std::shared_ptr<State> state) : state_(std::move(state)) {}

  std::optional<uint32_t> flags() const override { return state_->flags; }

  Handle setCallback(std::function<void()> changed) override {
    if (!state_->watchable) return {};
    auto callback = std::make_shared<std::function<void()>>(std::move(changed));
    state_->callbacks.push_back(callback);
    return Handle([state = std::weak_ptr(state_), weak = std::weak_ptr(callback)] {
      if (auto alive = state.lock()) alive->callbacks.remove(weak.lock());
    });
  }

 private:
  std::shared_ptr<State> state_;
};

ScriptedNetwork::ScriptedNetwork(std::shared_ptr<VirtualQueue> queue) : state_(std::make_shared<State>()) {
  state_->queue = std::move(queue);
}

void ScriptedNetwork::setFlags(std::optional<uint32_t> flags) {
  if (std::exchange(state_->flags, flags) == flags) return;
  for (const auto& callback : state_->callbacks)
    state_->queue->post([weak = std::weak_ptr(callback)] {
      if (auto alive = weak.lock()) (*alive)();
    });
}

void ScriptedNetwork::setWatchable(bool watchable) {
  state_->watchable = watchable;
}

std::shared_ptr<SCNetworkReachability> ScriptedNetwork::reachabilityWithName(const std::string&) {
  return std::make_shared<Reachability>(state_);
}

std::shared_ptr<SCNetworkReachability> ScriptedNetwork::reachabilityWithAddress(const SocketAddress&) {
  return std::make_shared<Reachability>(state_);
}

}  // namespace velto::headless
