// What a page is told, and which command means which operation.
#include "velto/mraid/UIViewControllerMRAIDSDKVelto.h"

#include "velto/core/VeltoInspector.h"
#include "velto/mraid/MRAIDSDKVelto.h"
#include "velto/mraid/VeltoMRAIDBridge.h"
#include "velto/platform/ui/UIViewControllerTransitioning.h"
#include "velto/platform/ui/WKWebView.h"
#include "velto/ui/UIViewControllerCoreSDKVelto.h"
#include "velto/ui/UIViewControllerUISDKVelto.h"

namespace velto {

std::string UIViewControllerMRAIDSDKVelto::htmlForAvoidLoadMRAIDLocalScript(std::string html) {
  return MRAIDSDKVelto::withoutLocalScript(html);
}

const std::string& UIViewControllerMRAIDSDKVelto::MRAIDJs() {
  return MRAIDSDKVelto::MRAIDJs();
}

// --- telling the page

void UIViewControllerMRAIDSDKVelto::mraidReady(const WebView& webView, bool forcedPlacement, CGSize maxSize,
                                               const Handler& handler) {
  if (!handler) return;
  auto* kind = dynamic_cast<UIViewControllerCoreSDKVelto*>(&viewController());
  if (forcedPlacement || (kind && kind->bannerController()))
    handler->readyInlinePlacementType(webView, maxSize);
  else if (kind && kind->interstitialController())
    handler->readyInterstitialPlacementType(webView, maxSize);
}

void UIViewControllerMRAIDSDKVelto::mraidViewWillTransitionWithCoordinator(
    UIViewControllerTransitionCoordinator& coordinator, const std::shared_ptr<UIView>& viewAd,
    const std::shared_ptr<UIViewController>& vc, const WebView& wkWebView, const Handler& handler) {
  if (!handler || handler->state != MRAIDState[MRAIDStateExpanded]) return;
  coordinator.animateAlongsideTransition(
      [viewAd, vc, weakView = std::weak_ptr(wkWebView), weakHandler = std::weak_ptr(handler)] {
        const auto view = weakView.lock();
        const auto alive = weakHandler.lock();
        if (view && alive)
          alive->changeOrientation(view, UIViewControllerUISDKVelto::getFullScreenFrameFor(viewAd, vc).size);
      });
}

std::shared_ptr<VeltoCloseButton> UIViewControllerMRAIDSDKVelto::mraidExpandFor(
    const WebView& webView, const std::shared_ptr<UIView>& viewAd,
    const std::shared_ptr<UIViewController>& vc, const CloseButton& closeButtonConfiguration,
    std::function<void()> action, const Handler& handler) {
  const CGRect frame = UIViewControllerUISDKVelto::getFullScreenFrameFor(viewAd, vc);
  std::shared_ptr<VeltoCloseButton> button;
  auto* layout = dynamic_cast<UIViewControllerUISDKVelto*>(&viewController());
  if (webView && closeButtonConfiguration && layout) {
    veltoMRAIDRemoveCloseCustomButton();
    button =
        layout->addCloseButtonInView(webView, *closeButtonConfiguration, std::move(action), std::nullopt);
  }
  if (handler) handler->expand(webView, frame);
  return button;
}

void UIViewControllerMRAIDSDKVelto::mraidIsViewable(bool viewable, const WebView& wkWebView,
                                                    const Handler& handler) {
  if (wkWebView && handler) handler->setIsViewable(viewable, wkWebView);
}

void UIViewControllerMRAIDSDKVelto::mraidCloseExpandFor(const WebView& webView, const CGRect& frame,
                                                        const Handler& handler) {
  veltoMRAIDRemoveCloseCustomButton();
  if (handler) handler->closeExpand(webView, frame);
}

void UIViewControllerMRAIDSDKVelto::mraidResizeFor(const WebView& webView, const CGRect& frame,
                                                   const Handler& handler) {
  if (handler) handler->resize(webView, frame, true);
}

void UIViewControllerMRAIDSDKVelto::mraidCloseResizeFor(const WebView& webView, const CGRect& frame,
                                                        const Handler& handler) {
  if (handler) handler->closeResize(webView, frame);
}

void UIViewControllerMRAIDSDKVelto::mraidAudioVolumeChange(const WebView& webView, float volumePercentage) {
  if (webView) VeltoMRAIDBridge::mradAudioVolumeChange(webView, volumePercentage);
}

// --- commands

void UIViewControllerMRAIDSDKVelto::mraidHandleAction(const NSURL& url, WKWebView& wkWebView) {
  // A command may end the controller, the ad and the view that it came from.
  const auto alive = viewController().shared_from_this();
  const auto view = std::static_pointer_cast<WKWebView>(wkWebView.shared_from_this());
  const auto owner = veltoGetMRAIDHandler();
  if (!owner) return;
  auto& handler = *owner;
  const auto action = VeltoMRAIDAction::actionFrom(url);
  if (!action) return inspectRefusal(url.absoluteString(), "It names no command.");
  inspect("command", [&] {
    JSON::Object details{{"name", action->actionValue().value_or("")}};
    if (action->args()) details["args"] = *action->args();
    return details;
  });
  switch (action->actionType()) {
    case VeltoMRAIDActionOpen:
      return _open(*action);
    case VeltoMRAIDActionExpand:
      return _expand(*action, handler, view);
    case VeltoMRAIDActionPlayVideo:
      return _playVideo(*action);
    case VeltoMRAIDActionResize:
      return _resize(*action, handler, view);
    case VeltoMRAIDActionStorePicture:
      return _storePicture(*action, handler);
    case VeltoMRAIDActionCreateCalendarEvent:
      return _storeCalendarEvent(*action, handler);
    case VeltoMRAIDActionSetOrientationProperties:
      return _setOrientationProperties(*action, handler);
    case VeltoMRAIDActionSetExpandProperties:
      return _setExpandProperties(*action, handler);
    case VeltoMRAIDActionSetResizeProperties:
      return _setResizeProperties(*action, handler);
    case VeltoMRAIDActionSetCurrentAppOrientation:
      return _setCurrentAppOrientation(*action, handler);
    case VeltoMRAIDActionClose:
      return _close(*action, handler, view);
    case VeltoMRAIDActionUnload:
      return _unload();
    default:
      return inspectRefusal(action->actionValue().value_or(""), "There is no such command.");
  }
}

}  // namespace velto
