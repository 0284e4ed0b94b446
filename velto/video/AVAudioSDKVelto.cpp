// Who hears of the volume.
#include "velto/video/AVAudioSDKVelto.h"

#include "velto/core/VeltoUtilities.h"
#include "velto/mraid/UIViewControllerMRAIDSDKVelto.h"
#include "velto/platform/AVAudioSession.h"
#include "velto/platform/ui/UIViewController.h"

#include <exception>

namespace velto {

void AVAudioSDKVelto::startAudioVolumeObserverForContext(const void* context) {
  if (isAudioVolumeObserving_) return;
  try {
    observation_ = AVAudioSession::sharedInstance().addObserver(
        VeltoUtilities::keypathVolumeObserver, NSKeyValueObservingOptionNew, context,
        [this, weak = viewController().weak_from_this()](const std::string& keyPath, float newValue,
                                                         const void* ofContext) {
          if (const auto alive = weak.lock()) observeValueForKeyPath(keyPath, newValue, ofContext);
        });
    isAudioVolumeObserving_ = true;
  } catch (const std::exception&) {
    // A device whose volume cannot be watched; the next ad tries again.
  }
}

void AVAudioSDKVelto::stopAudioVolumeObserverForContext(const void*) {
  if (!isAudioVolumeObserving_) return;
  isAudioVolumeObserving_ = false;
  observation_.cancel();
}

void AVAudioSDKVelto::audioVolumeChange(float volume, const std::shared_ptr<WKWebView>& mraidWebView) {
  UIViewControllerMRAIDSDKVelto::mraidAudioVolumeChange(mraidWebView, volume);
  tellMeasurement(volume);
}

void AVAudioSDKVelto::activateAudioSession() {
  AVAudioSession::sharedInstance().setActive();
}

}  // namespace velto
