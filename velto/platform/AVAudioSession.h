// Supplied by the platform: the device's output volume. Main thread only, and calls back on it.
#pragma once

#include "velto/Export.h"
#include "velto/platform/Handle.h"

#include <cstdint>
#include <functional>
#include <string>

namespace velto {

enum : uint64_t { NSKeyValueObservingOptionNew = 1 };

class VELTO_EXPORT AVAudioSession {
 public:
  using Observer = std::function<void(const std::string& keyPath, float newValue, const void* context)>;

  // The platform's one session.
  static AVAudioSession& sharedInstance();
  virtual ~AVAudioSession() = default;

  // 0 (also when muted) … 1. On a device without sound, before
  // the session is active, and when the volume cannot be told: 1.
  virtual float outputVolume() const = 0;

  // Calls back with each new value, until the handle goes. Throws std::invalid_argument for a key path other
  // than "outputVolume". Observing alone costs nothing: changes come while the session is active.
  virtual Handle addObserver(const std::string& forKeyPath, uint64_t options, const void* context,
                             Observer observer) = 0;

  // Connects, in a later turn, to what knows the volume. The library asks for it once a page or a player is
  // there that cares: most ads make no sound, and connecting takes time and memory. It stays active while
  // there are observers; absent services are tried again with the next call.
  virtual void setActive() = 0;
};

}  // namespace velto
