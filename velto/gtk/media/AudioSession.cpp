// When the sound server is asked, and who hears the answer.
#include "velto/gtk/media/AudioSession.h"

#include "velto/gtk/Modules.h"

#include <stdexcept>
#include <utility>

namespace velto::gtk {

// Handles and tasks know it weakly: they may outlive the session.
class AudioSession::Core final : public VolumeEvents, public std::enable_shared_from_this<Core> {
 public:
  explicit Core(MainQueue& queue) : queue_(queue) {}

  float volume() const { return volume_.value_or(1); }

  uint64_t add(const std::string& keyPath, const void* context, Observer observer) {
    observations_[++last_] = {keyPath, context, std::move(observer)};
    return last_;
  }
  void remove(uint64_t number) {
    observations_.erase(number);
    if (observations_.empty()) connectOrNotSoon();
  }
  void activate() {
    active_ = true;
    connectOrNotSoon();
  }

  void volumeIs(float volume) override {
    const auto before = std::exchange(volume_, volume);
    if (!before || *before == volume) return;  // what it was all along is no change
    const auto alive = shared_from_this();
    const auto observations = observations_;
    for (const auto& [number, observation] : observations)
      if (observations_.contains(number))
        observation.observer(observation.keyPath, volume, observation.context);
  }
  void volumeUnknown() override {
    volume_.reset();
    active_ = false;
    connectOrNotSoon();
  }

 private:
  struct Observation {
    std::string keyPath;
    const void* context = nullptr;
    Observer observer;
  };

  // Never inside a call back of the service, and never inside a load.
  void connectOrNotSoon() {
    if (std::exchange(posted_, true)) return;
    queue_.post([weak = weak_from_this()] {
      if (const auto alive = weak.lock()) alive->connectOrNot();
    });
  }
  void connectOrNot() {
    posted_ = false;
    if (observations_.empty()) active_ = false;
    if (!active_) {
      service_.reset();
      volume_.reset();
    } else if (!service_) {
      const auto make = moduleFunction<MakeVolumeService>(volumeModule, makeVolumeServiceName);
      if (make) service_.reset(make(this));
    }
  }

  MainQueue& queue_;
  std::map<uint64_t, Observation> observations_;  // by the order of registration
  uint64_t last_ = 0;
  std::optional<float> volume_;
  bool active_ = false;
  bool posted_ = false;
  std::unique_ptr<VolumeService> service_;
};

AudioSession::AudioSession(MainQueue& queue) : core_(std::make_shared<Core>(queue)) {}

AudioSession::~AudioSession() = default;

float AudioSession::outputVolume() const {
  return core_->volume();
}

Handle AudioSession::addObserver(const std::string& forKeyPath, uint64_t, const void* context,
                                 Observer observer) {
  if (forKeyPath != "outputVolume") throw std::invalid_argument("an audio session has no " + forKeyPath);
  const auto number = core_->add(forKeyPath, context, std::move(observer));
  return Handle([weak = std::weak_ptr(core_), number] {
    if (const auto core = weak.lock()) core->remove(number);
  });
}

void AudioSession::setActive() {
  core_->activate();
}

}  // namespace velto::gtk
