// Open Measurement sessions of a controller that shows ads. Main thread.
#pragma once

#include <memory>

namespace velto {

class UIView;
class UIViewController;

// Nothing is measured yet: the operations are called where they will be needed and do nothing so far.
class UIViewControllerOMSDKSDKVelto {
 public:
  virtual ~UIViewControllerOMSDKSDKVelto() = default;

  void startOMSDKSessionFor(const std::shared_ptr<UIView>& /*adView*/,
                            const std::shared_ptr<UIView>& /*friendlyObstructionView*/) {}
  void startOMSDKSessionForNativeWithFriendlyObstructionView(const std::shared_ptr<UIView>& /*view*/) {}
  void finishOMSDKSession() {}
  void addFriendlyObstructionOMSDKFor(const std::shared_ptr<UIView>& /*view*/) {}
  void removeFriendlyObstructionOMSDKFor(const std::shared_ptr<UIView>& /*view*/) {}
  void impressionOMSDK() {}
  void startOMSDKSessionForNativeVideo() {}
  void startPlaybackNativeVideoOMSDWith(float /*duration*/, float /*volume*/) {}
  void signalPlaybackNativeVideoOMSDK(float /*progress*/) {}
  void volumePlaybackNativeVideoChangeOMSD(float /*volume*/) {}

 protected:
  virtual UIViewController& viewController() = 0;
};

}  // namespace velto
