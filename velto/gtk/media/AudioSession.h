// The output volume, as the desktop's sound server tells it. The server is asked once somebody observes and
// the session was made active, by a module that is opened then (modules/VolumeService.h): a process that
// only shows silent ads has nothing of it. Made by the platform; main thread.
#pragma once

#include "velto/gtk/modules/VolumeService.h"
#include "velto/platform/AVAudioSession.h"
#include "velto/platform/MainQueue.h"

#include <map>
#include <memory>
#include <optional>

namespace velto::gtk {

class AudioSession final : public AVAudioSession {
 public:
  explicit AudioSession(MainQueue& queue);
  ~AudioSession() override;

  float outputVolume() const override;
  Handle addObserver(const std::string& forKeyPath, uint64_t options, const void* context,
                     Observer observer) override;
  void setActive() override;

 private:
  class Core;
  std::shared_ptr<Core> core_;
};

}  // namespace velto::gtk
