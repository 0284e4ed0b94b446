// What a host application implements to hear of its ads. All calls come on the main
// thread. The controller given is the working controller inside the public one
// (VeltoBannerViewController::vc()). Delegates are held weakly, but for the time that a
// request is on its way. An application that is done with an ad lets the ad go first.
#pragma once

#include "velto/Export.h"
#include "velto/core/VeltoErrorAd.h"

#include <memory>
#include <variant>

namespace velto {

class UIViewController;
class VeltoBannerViewControllerPrivate;
class VeltoInterstitialViewControllerPrivate;

class VELTO_EXPORT VeltoBannerViewControllerDelegate {
 public:
  virtual ~VeltoBannerViewControllerDelegate() = default;
  // The view controller into which the banner goes; asked once, when the banner is created.
  virtual std::shared_ptr<UIViewController> presentViewController() = 0;
  // The page said that it has loaded, or another network's banner is in place.
  virtual void veltoBannerViewControllerDidFinishLoad(VeltoBannerViewControllerPrivate& /*controller*/) {}
  // A person tapped the banner.
  virtual void veltoBannerViewControllerDidPress(VeltoBannerViewControllerPrivate& /*controller*/) {}
  // A load failed. Refreshes fail silently, and leave an empty banner.
  virtual void veltoBannerViewControllerDidFail(VeltoBannerViewControllerPrivate& /*controller*/,
                                                const VeltoErrorAd& /*withError*/) {}
  // Another network's banner was closed.
  virtual void veltoBannerViewControllerDidClose(VeltoBannerViewControllerPrivate& /*controller*/) {}
  // state() of the public object is another one, or adSize() is; comes before what is told of the same event.
  virtual void veltoBannerViewControllerDidChangeState(VeltoBannerViewControllerPrivate& /*controller*/) {}
};

class VELTO_EXPORT VeltoInterstitialViewControllerDelegate {
 public:
  virtual ~VeltoInterstitialViewControllerDelegate() = default;
  virtual std::shared_ptr<UIViewController> presentViewController() = 0;
  virtual void veltoInterstitialViewControllerDidFinishLoad(
      VeltoInterstitialViewControllerPrivate& /*controller*/) {}
  virtual void veltoInterstitialViewControllerDidFail(VeltoInterstitialViewControllerPrivate& /*controller*/,
                                                      const VeltoErrorAd& /*withError*/) {}
  virtual void veltoInterstitialViewControllerDidAppear(
      VeltoInterstitialViewControllerPrivate& /*controller*/) {}
  virtual void veltoInterstitialViewControllerDidPress(
      VeltoInterstitialViewControllerPrivate& /*controller*/) {}
  virtual void veltoInterstitialViewControllerDidClose(
      VeltoInterstitialViewControllerPrivate& /*controller*/) {}
  virtual void onVeltoInterstitialDismissed(VeltoInterstitialViewControllerPrivate& /*controller*/) {}
  // state() of the public object is another one; comes before what is told of the same event.
  virtual void veltoInterstitialViewControllerDidChangeState(
      VeltoInterstitialViewControllerPrivate& /*controller*/) {}
};

// A delegate of either kind, or none. A null pointer is none.
using VeltoControllerDelegate =
    std::variant<std::monostate, std::shared_ptr<VeltoBannerViewControllerDelegate>,
                 std::shared_ptr<VeltoInterstitialViewControllerDelegate>>;

}  // namespace velto
