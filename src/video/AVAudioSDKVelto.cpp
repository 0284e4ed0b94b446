// Who hears of the volume.
#include "velto/video/AVAudioSDKVelto.h"

#include "velto/mraid/UIViewControllerMRAIDSDKVelto.h"

namespace velto {

void AVAudioSDKVelto::audioVolumeChange(float volume, const std::shared_ptr<WKWebView>& mraidWebView) {
  if (mraidWebView) UIViewControllerMRAIDSDKVelto::mraidAudioVolumeChange(mraidWebView, volume);
}

}  // namespace velto
