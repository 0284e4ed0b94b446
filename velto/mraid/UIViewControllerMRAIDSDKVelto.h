// Rich-media (MRAID) operations of what shows ads in a controller: what its page asks for, and what its page
// is told. A mixin of the shown ad; main thread. Commands of the page stand in
// UIViewControllerMRAIDCommands.cpp.
#pragma once

#include "velto/mraid/VeltoMRAIDAction.h"
#include "velto/mraid/VeltoMRAIDHandler.h"
#include "velto/platform/Geometry.h"
#include "velto/platform/foundation/NSURL.h"
#include "velto/timeline/VeltoTimelineEntry.h"
#include "velto/ui/VeltoCloseButton.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace velto {

class UIView;
class UIViewController;
class UIViewControllerTransitionCoordinator;
class WKWebView;

class UIViewControllerMRAIDSDKVelto {
 public:
  using Handler = std::shared_ptr<VeltoMRAIDHandler>;
  using WebView = std::shared_ptr<WKWebView>;
  using CloseButton = std::optional<VeltoCloseButtonUIConfiguration>;

  virtual ~UIViewControllerMRAIDSDKVelto() = default;

  // The markup without its own script tags for the page script, and that script.
  static std::string htmlForAvoidLoadMRAIDLocalScript(std::string html);
  static const std::string& MRAIDJs();

  // Telling the page. A missing handler changes nothing, a missing web view only the handler.
  void mraidReady(const WebView& webView, bool forcedPlacement, CGSize maxSize, const Handler& handler);
  // The page hears of its new size beside the animation, if it is expanded.
  void mraidViewWillTransitionWithCoordinator(UIViewControllerTransitionCoordinator& coordinator,
                                              const std::shared_ptr<UIView>& viewAd,
                                              const std::shared_ptr<UIViewController>& vc,
                                              const WebView& wkWebView, const Handler& handler);
  // The button that was added, or null without a configuration.
  std::shared_ptr<VeltoCloseButton> mraidExpandFor(const WebView& webView,
                                                   const std::shared_ptr<UIView>& viewAd,
                                                   const std::shared_ptr<UIViewController>& vc,
                                                   const CloseButton& closeButtonConfiguration,
                                                   std::function<void()> action, const Handler& handler);
  void mraidIsViewable(bool viewable, const WebView& wkWebView, const Handler& handler);
  void mraidCloseExpandFor(const WebView& webView, const CGRect& frame, const Handler& handler);
  void mraidResizeFor(const WebView& webView, const CGRect& frame, const Handler& handler);
  void mraidCloseResizeFor(const WebView& webView, const CGRect& frame, const Handler& handler);
  static void mraidAudioVolumeChange(const WebView& webView, float volumePercentage);  // 0 … 1

  // Carries a command URL out; nothing without a handler.
  void mraidHandleAction(const NSURL& url, WKWebView& wkWebView);

  // What is done for the page.
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
  // The page wants the interface turned: 0 not, 1 portrait, 4 landscape.
  virtual void forceOrientation(int64_t orientation);
  // An address was handed to the system.
  virtual void linkTapped(VeltoTap /*outcome*/) {}

 private:
  void _open(const VeltoMRAIDAction& action);
  void _playVideo(const VeltoMRAIDAction& action);
  void _unload();
  void _close(const VeltoMRAIDAction& action, VeltoMRAIDHandler& handler, const WebView& wkWebView);
  void _closeInterstitial(VeltoMRAIDHandler& handler, const WebView& wkWebView);
  void _closeExpand();
  void _closeResize();
  void _expand(const VeltoMRAIDAction& action, VeltoMRAIDHandler& handler, const WebView& wkWebView);
  void _resize(const VeltoMRAIDAction& action, VeltoMRAIDHandler& handler, const WebView& wkWebView);
  void _setOrientationProperties(const VeltoMRAIDAction& action, VeltoMRAIDHandler& handler);
  void _setExpandProperties(const VeltoMRAIDAction& action, VeltoMRAIDHandler& handler);
  void _setResizeProperties(const VeltoMRAIDAction& action, VeltoMRAIDHandler& handler);
  void _setCurrentAppOrientation(const VeltoMRAIDAction& action, VeltoMRAIDHandler& handler);
  void _storePicture(const VeltoMRAIDAction& action, VeltoMRAIDHandler& handler);
  void _storeCalendarEvent(const VeltoMRAIDAction& action, VeltoMRAIDHandler& handler);
};

}  // namespace velto
