// Rich-media (MRAID) operations of a controller that shows ads: what its page asks for, and what its page is
// told. Main thread.
#pragma once

#include "velto/mraid/VeltoMRAIDHandler.h"
#include "velto/platform/Geometry.h"
#include "velto/platform/foundation/NSURL.h"
#include "velto/ui/VeltoCloseButton.h"

#include <functional>
#include <memory>
#include <string>

namespace velto {

class UIView;
class UIViewController;
class UIViewControllerTransitionCoordinator;
class WKWebView;

// Pages are not spoken to yet: the operations are called where they will be needed and change nothing so far.
class UIViewControllerMRAIDSDKVelto {
 public:
  using Handler = std::shared_ptr<VeltoMRAIDHandler>;
  using WebView = std::shared_ptr<WKWebView>;
  using CloseButton = std::optional<VeltoCloseButtonUIConfiguration>;

  virtual ~UIViewControllerMRAIDSDKVelto() = default;

  static std::string htmlForAvoidLoadMRAIDLocalScript(std::string html) { return html; }
  static std::string MRAIDJs() { return {}; }

  void mraidReady(const WebView& /*webView*/, bool /*forcedPlacement*/, CGSize /*maxSize*/, const Handler&) {}
  void mraidViewWillTransitionWithCoordinator(UIViewControllerTransitionCoordinator& /*coordinator*/,
                                              const std::shared_ptr<UIView>& /*viewAd*/,
                                              const std::shared_ptr<UIViewController>& /*vc*/,
                                              const WebView& /*wkWebView*/, const Handler&) {}
  std::shared_ptr<VeltoCloseButton> mraidExpandFor(const WebView&, const std::shared_ptr<UIView>& /*viewAd*/,
                                                   const std::shared_ptr<UIViewController>& /*vc*/,
                                                   const CloseButton& /*closeButtonConfiguration*/,
                                                   std::function<void()> /*action*/, const Handler&) {
    return nullptr;
  }
  void mraidIsViewable(bool /*viewable*/, const WebView& /*wkWebView*/, const Handler&) {}
  void mraidCloseExpandFor(const WebView&, const CGRect& /*frame*/, const Handler&) {}
  void mraidResizeFor(const WebView&, const CGRect& /*frame*/, const Handler&) {}
  void mraidCloseResizeFor(const WebView&, const CGRect& /*frame*/, const Handler&) {}
  void mraidHandleAction(const NSURL& /*url*/, WKWebView& /*wkWebView*/) {}
  static void mraidAudioVolumeChange(const WebView& /*webView*/, float /*volumePercentage*/) {}

  // What a controller does for its page; one that does not, leaves it.
  virtual std::shared_ptr<VeltoMRAIDHandler> veltoGetMRAIDHandler() { return nullptr; }
  virtual CGRect veltoMRAIDGetFullscreenFrame() { return {}; }
  virtual void veltoMRAIDRemoveCloseCustomButton() {}
  virtual void veltoMRAIDUnload() {}
  virtual void veltoMRAIDResize(const std::shared_ptr<VeltoMRAIDPropertyResize>& /*property*/,
                                const VeltoCloseButtonUIConfiguration& /*btnCloseConfiguration*/) {}
  virtual void veltoMRAIDCloseResize() {}
  virtual void veltoMRAIDExpand(const std::optional<std::string>& /*secondPartURL*/,
                                const CloseButton& /*btnCloseConfiguration*/) {}
  virtual void veltoMRAIDCloseExpand() {}
  virtual void veltoMRAIDCloseInterstitial() {}
  virtual void playVideoAt(const NSURL& /*url*/) {}

 protected:
  virtual UIViewController& viewController() = 0;
};

}  // namespace velto
