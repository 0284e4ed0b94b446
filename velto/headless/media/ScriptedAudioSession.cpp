// Observers, and the volume they hear of.
#include "velto/headless/media/ScriptedAudioSession.h"

#include "velto/headless/VirtualQueue.h"

#include <map>
#include <stdexcept>
#include <utility>

namespace velto::headless {

struct ScriptedAudioSession::State {
  struct Observation {
    std::string keyPath;
    const void* context = nullptr;
    Observer observer;
  };
  std::shared_ptr<VirtualQueue> queue;
  std::map<uint64_t, Observation> observations;  // by the order of registration
  uint64_t last = 0;
  float volume = 1;
  bool active = false;
};

ScriptedAudioSession::ScriptedAudioSession(std::shared_ptr<VirtualQueue> queue)
    : state_(std::make_shared<State>()) {
  state_->queue = std::move(queue);
}

void ScriptedAudioSession::setOutputVolume(float volume) {
  state_->queue->requireMain("ScriptedAudioSession::setOutputVolume");
  if (std::exchange(state_->volume, volume) == volume || !state_->active) return;
  const auto observations = state_->observations;  // which an observer may end
  for (const auto& [number, observation] : observations)
    if (state_->observations.contains(number))
      observation.observer(observation.keyPath, volume, observation.context);
}

size_t ScriptedAudioSession::observers() const {
  return state_->observations.size();
}
bool ScriptedAudioSession::isActive() const {
  return state_->active;
}

float ScriptedAudioSession::outputVolume() const {
  return state_->active ? state_->volume : 1;
}

Handle ScriptedAudioSession::addObserver(const std::string& forKeyPath, uint64_t, const void* context,
                                         Observer observer) {
  state_->queue->requireMain("AVAudioSession::addObserver");
  if (forKeyPath != "outputVolume" || failObserving)
    throw std::invalid_argument("velto::headless: an audio session has no " + forKeyPath + " to observe");
  const auto number = ++state_->last;
  state_->observations[number] = {forKeyPath, context, std::move(observer)};
  return Handle([weak = std::weak_ptr(state_), number] {
    if (const auto state = weak.lock()) state->observations.erase(number);
  });
}

void ScriptedAudioSession::setActive() {
  state_->queue->requireMain("AVAudioSession::setActive");
  state_->active = true;
}

}  // namespace velto::headless
