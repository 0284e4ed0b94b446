// The device's output volume, told to the page and to the measurement session of a controller. A mixin of the
// working controllers; main thread.
#pragma once

#include "velto/platform/Handle.h"

#include <memory>
#include <string>

namespace velto {

class UIViewController;
class WKWebView;

class AVAudioSDKVelto {
 public:
  virtual ~AVAudioSDKVelto() = default;

  // Once for each controller, however often it is called; the context comes back with each observation.
  void startAudioVolumeObserverForContext(const void* context);
  void stopAudioVolumeObserverForContext(const void* context);
  bool isAudioVolumeObserving() const { return isAudioVolumeObserving_; }

  // A new volume, 0 … 1: for the page, where there is one, and for the measurement session in every case.
  void audioVolumeChange(float volume, const std::shared_ptr<WKWebView>& mraidWebView);

  // A new value of what is observed.
  virtual void observeValueForKeyPath(const std::string& keyPath, float newValue, const void* context) = 0;

 protected:
  virtual UIViewController& viewController() = 0;
  // A change, for the measurement session of the controller.
  virtual void tellMeasurement(float volume) = 0;

  // A page is there that wants to hear: only now is it worth while to connect to the sound service.
  static void activateAudioSession();

 private:
  bool isAudioVolumeObserving_ = false;
  Handle observation_;
};

}  // namespace velto
