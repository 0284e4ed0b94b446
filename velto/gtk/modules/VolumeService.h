// What watches the output volume, between the platform's audio session (AudioSession.h) and the module
// velto-volume, which has libpulse. Main thread only; everything is called back on it, in a later turn, until
// the service is destroyed. It must not be destroyed inside a call back.
#pragma once

namespace velto::gtk {

class VolumeEvents {
 public:
  virtual void volumeIs(float volume) = 0;  // once connected, and after each change; 0 (or muted) … 1
  virtual void volumeUnknown() = 0;         // there is no sound service, or not any more. The last call

 protected:
  ~VolumeEvents() = default;
};

class VolumeService {
 public:
  virtual ~VolumeService() = default;
};

inline constexpr char volumeModule[] = "volume";
inline constexpr char makeVolumeServiceName[] = "velto_make_volume_service";

// Begins to connect. The caller owns what comes back.
using MakeVolumeService = VolumeService* (*)(VolumeEvents* events);

}  // namespace velto::gtk
