// The entry animation of an ad view: prepared when the view is placed, run when the ad has loaded. A mixin of
// the working controllers; main thread.
#pragma once

#include "velto/platform/ui/UIViewController.h"

#include <cstdint>
#include <memory>

namespace velto {

class UIViewControllerUIAnimationSDKVelto {
 public:
  virtual ~UIViewControllerUIAnimationSDKVelto() = default;

  void prepareAnimationForAdView(const std::shared_ptr<UIView>& adView, int64_t animation);
  // Whether an animation was run, so that the next ad needs none.
  bool commitAnimationForAdView(const std::shared_ptr<UIView>& adView, int64_t animation);

 protected:
  virtual UIViewController& viewController() = 0;
  virtual bool animatesAsBanner() const = 0;  // else as an interstitial
};

}  // namespace velto
