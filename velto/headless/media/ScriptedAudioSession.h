// The output volume of the headless platform: what a test sets. Main thread.
#pragma once

#include "velto/Export.h"
#include "velto/platform/AVAudioSession.h"

#include <memory>

namespace velto::headless {

class VirtualQueue;

class VELTO_EXPORT ScriptedAudioSession : public AVAudioSession {
 public:
  explicit ScriptedAudioSession(std::shared_ptr<VirtualQueue> queue);

  // The person turns a knob. While the session is active, observers hear of it before this returns.
  void setOutputVolume(float volume);
  // While true, observing throws, as on a device without sound.
  bool failObserving = false;

  size_t observers() const;
  bool isActive() const;

  float outputVolume() const override;
  Handle addObserver(const std::string& forKeyPath, uint64_t options, const void* context,
                     Observer observer) override;
  void setActive() override;

 private:
  struct State;
  std::shared_ptr<State> state_;
};

}  // namespace velto::headless
