// The commands of a page: what is allowed in which state, and how it is done. Refusals are silent, but for
// two errors of resize.
#include "velto/core/VeltoInspector.h"
#include "velto/mraid/MRAIDSDKVelto.h"
#include "velto/mraid/UIViewControllerMRAIDSDKVelto.h"
#include "velto/mraid/VeltoMRAIDBridge.h"
#include "velto/mraid/VeltoMRAIDPropertyCalendar.h"
#include "velto/network/NSURLSDKVelto.h"
#include "velto/platform/Platform.h"
#include "velto/platform/UIApplication.h"
#include "velto/platform/UIDevice.h"
#include "velto/platform/ui/WKWebView.h"
#include "velto/ui/UIViewControllerUISDKVelto.h"

namespace velto {
namespace {

// Why a command is not carried out, for whoever looks on; the page hears of few of these.
constexpr char noAddress[] = "Its argument is no address.";
constexpr char nothingOpensIt[] = "Nothing on the device opens such an address.";
constexpr char nobodyTouched[] = "Nobody has touched the ad.";
constexpr char noProperties[] = "Its argument cannot be read.";

constexpr char resizeWithoutProperties[] = "Resize() cannot be called before setResizeProperties().";
constexpr char resizeOffScreen[] =
    "Current resize properties would result in the close region being off screen. Ignoring resize.";

int64_t orientationCode(const VeltoMRAIDHandler& handler) {
  const auto& forced = handler.orientationProperty().forceOrientation;
  if (forced == MRAIDOrientation[MRAIDOrientationPortrait]) return UIDeviceOrientationPortrait;
  return forced == MRAIDOrientation[MRAIDOrientationLandscape] ? UIDeviceOrientationLandscapeRight
                                                               : UIDeviceOrientationUnknown;
}

// An address for a request: what no URL holds is escaped, what is none goes as it is.
std::string address(const std::string& text) {
  const auto url = MRAIDSDKVelto::URLFromPage(text);
  return url ? url->absoluteString() : text;
}

// Whether the corner or edge that the close region keeps to stays on the screen. Without a position every
// word counts as named.
bool keepsCloseRegion(const VeltoMRAIDPropertyResize& property, const CGRect& current, CGSize screen) {
  const auto& position = property.customClosePosition;
  const auto names = [&](const char* word) { return !position || position->find(word) != std::string::npos; };
  const auto isOutside = [](double value, double least, double most) {
    return value < least || value > most;
  };
  const CGRect& wanted = property.frame;
  constexpr double margin = VeltoMRAIDMinDp;
  const double lowest = screen.height - margin;
  const double rightmost = screen.width - margin;

  if (names("top")) {
    if (isOutside(current.minY() + wanted.minY(), 0, lowest)) return false;
  } else if (names("bottom") && isOutside(current.minY() + wanted.maxY(), margin, lowest)) {
    return false;
  }
  if (names("right")) return !isOutside(current.minX() + wanted.maxX(), margin, rightmost);
  return !names("left") || !isOutside(current.minX() + wanted.minX(), 0, rightmost);
}

}  // namespace

// --- leaving for elsewhere

void UIViewControllerMRAIDSDKVelto::_open(const VeltoMRAIDAction& action) {
  const auto url = action.args() ? MRAIDSDKVelto::URLFromPage(*action.args()) : std::nullopt;
  if (!url) return inspectRefusal("open", noAddress);
  const NSURL resolved = SDKVelto::URLByResolvingImplicitScheme(*url);
  if (!Platform::current().application().canOpenURL(resolved)) return inspectRefusal("open", nothingOpensIt);
  SDKVelto::open(resolved);
  linkTapped(VeltoTap::LinkOpened);
}

void UIViewControllerMRAIDSDKVelto::_playVideo(const VeltoMRAIDAction& action) {
  const auto url = action.args() ? MRAIDSDKVelto::URLFromPage(*action.args()) : std::nullopt;
  if (!url) return inspectRefusal("playVideo", noAddress);
  if (!Platform::current().application().canOpenURL(*url)) return inspectRefusal("playVideo", nothingOpensIt);
  playVideoAt(*url);
}

void UIViewControllerMRAIDSDKVelto::_unload() {
  veltoMRAIDUnload();
}

// --- close

void UIViewControllerMRAIDSDKVelto::_close(const VeltoMRAIDAction&, VeltoMRAIDHandler& handler,
                                           const WebView& wkWebView) {
  veltoMRAIDRemoveCloseCustomButton();
  if (handler.state == MRAIDState[MRAIDStateExpanded])
    _closeExpand();
  else if (handler.state == MRAIDState[MRAIDStateResized])
    _closeResize();
  else if (handler.placementType.isEntry(MRAIDPlacementType[MRAIDPlacementInterstitial]))
    _closeInterstitial(handler, wkWebView);
}

void UIViewControllerMRAIDSDKVelto::_closeInterstitial(VeltoMRAIDHandler& handler, const WebView& wkWebView) {
  handler.closeInterstitial(wkWebView);
  veltoMRAIDCloseInterstitial();
}

void UIViewControllerMRAIDSDKVelto::_closeExpand() {
  veltoMRAIDCloseExpand();
}

void UIViewControllerMRAIDSDKVelto::_closeResize() {
  veltoMRAIDCloseResize();
}

// --- expand

void UIViewControllerMRAIDSDKVelto::_expand(const VeltoMRAIDAction& action, VeltoMRAIDHandler& handler,
                                            const WebView&) {
  if (handler.state != MRAIDState[MRAIDStateDefault])
    return inspectRefusal("expand", "The ad is in state " + handler.state + ".");
  forceOrientation(orientationCode(handler));
  // A page that said it has no close button of its own gets none of ours either.
  CloseButton configuration;
  if (!handler.expandProperty || handler.expandProperty->useCustomClose)
    configuration = VeltoCloseButtonUIConfiguration::defaultForMRAID();
  veltoMRAIDExpand(action.args() ? std::optional(address(*action.args())) : std::nullopt, configuration);
}

// --- resize

void UIViewControllerMRAIDSDKVelto::_resize(const VeltoMRAIDAction&, VeltoMRAIDHandler& handler,
                                            const WebView& wkWebView) {
  const auto property = handler.resizeProperty;
  if (!property) VeltoMRAIDBridge::mradFireError(wkWebView, resizeWithoutProperties);
  if (handler.state != MRAIDState[MRAIDStateDefault] && handler.state != MRAIDState[MRAIDStateResized])
    return handler.resize(wkWebView, {}, false);
  veltoMRAIDRemoveCloseCustomButton();
  if (property && property->allowOffscreen.value_or(0) != 0) {
    const CGSize screen = veltoMRAIDGetFullscreenFrame().size;
    if (!keepsCloseRegion(*property, wkWebView->frame(), screen))
      return VeltoMRAIDBridge::mradFireError(wkWebView, resizeOffScreen);
  }
  const auto configuration =
      property && property->customClosePosition
          ? VeltoCloseButtonUIConfiguration::defaultForMRAIDWith(property->customClosePositionType)
          : VeltoCloseButtonUIConfiguration::defaultForMRAID();
  veltoMRAIDResize(property, configuration);
}

// --- properties

void UIViewControllerMRAIDSDKVelto::forceOrientation(int64_t orientation) {
  UIViewControllerUISDKVelto::setOrientation(orientation, true);
}

void UIViewControllerMRAIDSDKVelto::_setOrientationProperties(const VeltoMRAIDAction& action,
                                                              VeltoMRAIDHandler& handler) {
  auto property = action.args() ? VeltoMRAIDPropertyOrientation::decode(*action.args()) : nullptr;
  if (!property) return inspectRefusal("setOrientationProperties", noProperties);
  handler.setOrientationProperty(std::move(property));
  const bool interstitial = handler.placementType == MRAIDPlacementType[MRAIDPlacementInterstitial];
  const bool expandedInline = handler.placementType == MRAIDPlacementType[MRAIDPlacementInline] &&
                              handler.state == MRAIDState[MRAIDStateExpanded];
  if ((interstitial || expandedInline) && handler.isViewable) forceOrientation(handler.orientation);
}

void UIViewControllerMRAIDSDKVelto::_setExpandProperties(const VeltoMRAIDAction& action,
                                                         VeltoMRAIDHandler& handler) {
  if (action.args()) handler.expandProperty = VeltoMRAIDPropertyExpand::decode(*action.args());
}

void UIViewControllerMRAIDSDKVelto::_setResizeProperties(const VeltoMRAIDAction& action,
                                                         VeltoMRAIDHandler& handler) {
  if (action.args()) handler.resizeProperty = VeltoMRAIDPropertyResize::decode(*action.args());
}

void UIViewControllerMRAIDSDKVelto::_setCurrentAppOrientation(const VeltoMRAIDAction& action,
                                                              VeltoMRAIDHandler& handler) {
  if (action.args())
    handler.currentAppOrientation = VeltoMRAIDPropertyCurrentAppOrientation::decode(*action.args());
}

// --- pictures and calendar

void UIViewControllerMRAIDSDKVelto::_storePicture(const VeltoMRAIDAction& action,
                                                  VeltoMRAIDHandler& handler) {
  if (!action.args()) return inspectRefusal("storePicture", noAddress);
  if (!Platform::current().application().mayActForPage())
    return inspectRefusal("storePicture", nobodyTouched);
  handler.downloadImageContent(address(*action.args()));
}

void UIViewControllerMRAIDSDKVelto::_storeCalendarEvent(const VeltoMRAIDAction& action,
                                                        VeltoMRAIDHandler& handler) {
  const auto event = action.args() ? VeltoMRAIDPropertyCalendarEvent::decode(*action.args()) : nullptr;
  if (!event) return inspectRefusal("createCalendarEvent", noProperties);
  if (!Platform::current().application().mayActForPage())
    return inspectRefusal("createCalendarEvent", nobodyTouched);
  handler.storeCalendarEvent(*event);
}

}  // namespace velto
