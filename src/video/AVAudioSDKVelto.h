// The device's output volume, told to the page and to the measurement session of a controller. Main thread.
#pragma once

#include <memory>

namespace velto {

class UIViewController;
class WKWebView;

// The volume is not watched yet: starting and stopping do nothing so far.
class AVAudioSDKVelto {
 public:
  virtual ~AVAudioSDKVelto() = default;

  void startAudioVolumeObserverForContext(const void* /*context*/) {}
  void stopAudioVolumeObserverForContext(const void* /*context*/) {}
  void audioVolumeChange(float volume, const std::shared_ptr<WKWebView>& mraidWebView);

 protected:
  virtual UIViewController& viewController() = 0;
};

}  // namespace velto
