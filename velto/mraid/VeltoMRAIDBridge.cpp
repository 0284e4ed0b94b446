// Statements for pages, byte for byte.
#include "velto/mraid/VeltoMRAIDBridge.h"

#include "velto/core/VeltoInspector.h"
#include "velto/mraid/VeltoMRAIDHandler.h"
#include "velto/network/JSONSDKVelto.h"
#include "velto/network/VeltoDevice.h"
#include "velto/platform/EKEventStore.h"
#include "velto/platform/PHPhotoLibrary.h"
#include "velto/platform/Platform.h"
#include "velto/platform/UIApplication.h"
#include "velto/platform/UIDevice.h"
#include "velto/platform/foundation/Text.h"
#include "velto/platform/ui/WKWebView.h"

#include <array>
#include <initializer_list>

namespace velto {
namespace {

enum Function {
  IsViewable,
  FireEvent,
  ScreenSize,
  MaxSize,
  Version,
  State,
  DefaultPosition,
  CurrentPosition,
  PlacementType,
  Supports,
  Location
};
enum Feature { Sms, Tel, StorePicture, InlineVideo, Calendar, Vpaid, LocationFeature };
enum Event { Error, Ready, SizeChange, StateChange, ExposureChange, AudioVolumeChange, ViewableChange };
enum Value { Position, Size, Volume, LocationValue, Exposure, True, False, TelProbe, SmsProbe };

// The template with its conversions ("%@", "%.2f" …) replaced in turn by texts made for them.
std::string filled(std::string_view format, std::initializer_list<std::string> values) {
  std::string text;
  const auto* value = values.begin();
  while (!format.empty()) {
    const size_t percent = format.find('%');
    text += format.substr(0, percent);
    if (percent == std::string_view::npos) break;
    const size_t conversion = format.find_first_of("@fd", percent);
    text += *value++;
    format.remove_prefix(conversion + 1);
  }
  return text;
}

// A zero is written without sign, whichever way the layout arrived at it.
std::string number(double value, int decimals) {
  return fixedDecimals(value + 0.0, decimals);
}

bool opens(const char* probe) {
  const auto url = NSURL::URLWithString(probe);
  return url && Platform::current().application().canOpenURL(*url);
}

// The numbers of "{{x, y}, {width, height}}", zero for those that are missing.
CGRect rectFromString(const std::string& text) {
  std::array<double, 4> values{};
  size_t at = 0;
  for (auto& value : values) {
    at = text.find_first_of("+-.0123456789", at);
    if (at == std::string::npos) return {};
    value = leadingNumber(std::string_view(text).substr(at));
    at = text.find_first_of(",}", at);
    if (at == std::string::npos) return {};
  }
  return {{values[0], values[1]}, {values[2], values[3]}};
}

}  // namespace

// --- sequences

void VeltoMRAIDBridge::mraidReady(const WebView& webView, CGSize maxSize, Handler handler) {
  const CGRect frame = webView ? webView->frame() : CGRect{};
  _setSupportFeatures(webView);
  _setScreenSize(Platform::current().mainScreen().bounds().size, webView);
  _setMaxSize(maxSize, webView);
  _setDefaultPosition(frame, webView);
  _setCurrentPosition(frame, webView);
  _setMRAIDVersion(webView);
  _setPlacementType(handler.placementType.text(), webView);
  _setIsViewable(handler.isViewable, webView);
  _setState(handler.state, webView);
  _setLocation(webView);
  _fireViewableChangeEvent(handler.isViewable, webView);
  _fireSizeChangeEvent(frame.size, webView);
  _fireExposureChangeEvent(VeltoMRAIDExposedPercentageFullVisible, frame, {}, webView);
  _fireReadyEvent(webView);
}

void VeltoMRAIDBridge::mraidIsViewable(const WebView& webView, const CGRect& visibleRect, bool fireEvent,
                                       Handler handler) {
  _setIsViewable(handler.isViewable, webView);
  if (!fireEvent) return;
  _fireExposureChangeEvent(
      handler.isViewable ? VeltoMRAIDExposedPercentageFullVisible : VeltoMRAIDExposedPercentageNoVisible,
      visibleRect, {}, webView);
  _fireViewableChangeEvent(handler.isViewable, webView);
}

void VeltoMRAIDBridge::mraidExpand(const WebView& webView, const CGRect& frame, Handler handler) {
  _setPlacementType(handler.placementType.text(), webView);
  _setCurrentPosition(frame, webView);
  _fireSizeChangeEvent(frame.size, webView);
  _fireExposureChangeEvent(VeltoMRAIDExposedPercentageFullVisible, frame, {}, webView);
  _setState(handler.state, webView);
}

void VeltoMRAIDBridge::mraidCloseExpand(const WebView& webView, const CGRect& frame, Handler handler) {
  _setDefaultPosition(frame, webView);
  _setCurrentPosition(frame, webView);
  _fireSizeChangeEvent(frame.size, webView);
  _fireExposureChangeEvent(VeltoMRAIDExposedPercentageFullVisible, frame, {}, webView);
  _setState(handler.state, webView);
}

void VeltoMRAIDBridge::mraidResize(const WebView& webView, const CGRect& frame,
                                   const VeltoMRAIDPropertyResize* resize, Handler handler) {
  if (resize) {
    _setCurrentPosition(frame, webView);
    _fireSizeChangeEvent(resize->frame.size, webView);
    _fireExposureChangeEvent(VeltoMRAIDExposedPercentageFullVisible, frame, {}, webView);
  }
  _setState(handler.state, webView);
}

void VeltoMRAIDBridge::mraidCloseResize(const WebView& webView, const CGRect& frame, Handler handler) {
  _setCurrentPosition(frame, webView);
  _fireSizeChangeEvent(frame.size, webView);
  _fireExposureChangeEvent(VeltoMRAIDExposedPercentageFullVisible, frame, {}, webView);
  _setState(handler.state, webView);
}

void VeltoMRAIDBridge::mraidCloseInterstitial(const WebView& webView, Handler handler) {
  _setState(handler.state, webView);
  _setIsViewable(handler.isViewable, webView);
}

void VeltoMRAIDBridge::mraidChangeOrientation(const WebView& webView, CGSize size, Handler) {
  const CGRect frame{{0, 0}, size};
  _setCurrentPosition(frame, webView);
  _setScreenSize(size, webView);
  _fireSizeChangeEvent(size, webView);
  _fireExposureChangeEvent(VeltoMRAIDExposedPercentageFullVisible, frame, {}, webView);
}

void VeltoMRAIDBridge::mradAudioVolumeChange(const WebView& webView, float volumePercentage) {
  _fireEvent(MRAIDEvents[AudioVolumeChange], _volume(volumePercentage), webView);
}

void VeltoMRAIDBridge::mradFireError(const WebView& webView, const std::string& args) {
  _fireEvent(MRAIDEvents[Error], args, webView);
}

// --- setters

void VeltoMRAIDBridge::_setSupportFeatures(const WebView& wkWebView) {
  auto& platform = Platform::current();
  // The two are crossed on purpose.
  _setSupportFeature(MRAIDFeature[Sms], opens(MRAIDValue[TelProbe]), wkWebView);
  _setSupportFeature(MRAIDFeature[Tel], opens(MRAIDValue[SmsProbe]), wkWebView);
  _setSupportFeature(MRAIDFeature[StorePicture],
                     platform.photoLibrary().authorizationStatus() == AuthorizationStatusAuthorized,
                     wkWebView);
  _setSupportFeature(MRAIDFeature[Calendar],
                     platform.eventStore().authorizationStatusForEntityType(EKEntityType::Event) ==
                         AuthorizationStatusAuthorized,
                     wkWebView);
  _setSupportFeature(MRAIDFeature[InlineVideo], true, wkWebView);
  _setSupportFeature(MRAIDFeature[Vpaid], false, wkWebView);
  _setSupportFeature(MRAIDFeature[LocationFeature], VeltoDevice::isLocationServiceEnabled(), wkWebView);
}

void VeltoMRAIDBridge::_setSupportFeature(const std::string& feature, bool isSupported,
                                          const WebView& wkWebView) {
  _callMRAIDBridge(filled(MRAIDFunction[Supports], {feature, _BOOL(isSupported)}), wkWebView);
}
void VeltoMRAIDBridge::_setMRAIDVersion(const WebView& wkWebView) {
  _callMRAIDBridge(filled(MRAIDFunction[Version], {MRAIDBridge[0]}), wkWebView);
}
void VeltoMRAIDBridge::_setState(const std::string& state, const WebView& wkWebView) {
  _callMRAIDBridge(filled(MRAIDFunction[State], {state}), wkWebView);
}
void VeltoMRAIDBridge::_setScreenSize(CGSize size, const WebView& wkWebView) {
  _callMRAIDBridge(filled(MRAIDFunction[ScreenSize], {_size(size)}), wkWebView);
}
void VeltoMRAIDBridge::_setMaxSize(CGSize size, const WebView& wkWebView) {
  _callMRAIDBridge(filled(MRAIDFunction[MaxSize], {_size(size)}), wkWebView);
}
void VeltoMRAIDBridge::_setDefaultPosition(const CGRect& position, const WebView& wkWebView) {
  _callMRAIDBridge(filled(MRAIDFunction[DefaultPosition], {_position(position)}), wkWebView);
}
void VeltoMRAIDBridge::_setCurrentPosition(const CGRect& position, const WebView& wkWebView) {
  _callMRAIDBridge(filled(MRAIDFunction[CurrentPosition], {_position(position)}), wkWebView);
}
void VeltoMRAIDBridge::_setPlacementType(const std::string& placementType, const WebView& wkWebView) {
  _callMRAIDBridge(filled(MRAIDFunction[PlacementType], {placementType}), wkWebView);
}
void VeltoMRAIDBridge::_setIsViewable(bool isViewable, const WebView& wkWebView) {
  _callMRAIDBridge(filled(MRAIDFunction[IsViewable], {_BOOL(isViewable)}), wkWebView);
}
void VeltoMRAIDBridge::_setLocation(const WebView& wkWebView) {
  if (VeltoDevice::isLocationServiceEnabled())
    _callMRAIDBridge(filled(MRAIDFunction[Location], {_location()}), wkWebView);
}

// --- events

void VeltoMRAIDBridge::_fireSizeChangeEvent(CGSize size, const WebView& wkWebView) {
  _fireEvent(MRAIDEvents[SizeChange], _size(size), wkWebView);
}
void VeltoMRAIDBridge::_fireExposureChangeEvent(float percentage, const CGRect& visibleRect,
                                                const Rectangles& occlusionRectangles,
                                                const WebView& wkWebView) {
  _fireEvent(MRAIDEvents[ExposureChange], _exposure(percentage, visibleRect, occlusionRectangles), wkWebView);
}
void VeltoMRAIDBridge::_fireViewableChangeEvent(bool isViewable, const WebView& wkWebView) {
  _fireEvent(MRAIDEvents[ViewableChange], _BOOL(isViewable), wkWebView);
}
void VeltoMRAIDBridge::_fireReadyEvent(const WebView& wkWebView) {
  _fireEvent(MRAIDEvents[Ready], std::nullopt, wkWebView);
}

void VeltoMRAIDBridge::_fireEvent(const std::string& event, const std::optional<std::string>& args,
                                  const WebView& wkWebView) {
  _callMRAIDBridge(filled(MRAIDFunction[FireEvent], {'"' + event + '"' + _appendArgs(args)}), wkWebView);
}

// --- values

std::string VeltoMRAIDBridge::_position(const CGRect& rect) {
  return filled(MRAIDValue[Position], {number(rect.origin.x, 2), number(rect.origin.y, 2),
                                       number(rect.size.width, 2), number(rect.size.height, 2)});
}

std::string VeltoMRAIDBridge::_size(CGSize size) {
  return filled(MRAIDValue[Size], {number(size.width, 2), number(size.height, 2)});
}

std::string VeltoMRAIDBridge::_volume(float volume) {
  return filled(MRAIDValue[Volume], {number(static_cast<double>(volume) * 100, 1)});
}

std::string VeltoMRAIDBridge::_location() {
  return filled(MRAIDValue[LocationValue],
                {number(VeltoDevice::locationLatitude().value_or(0), 6),
                 number(VeltoDevice::locationLongitude().value_or(0), 6), MRAIDLocationType[0],
                 number(VeltoDevice::locationAccuracy().value_or(0), 6),
                 number(VeltoDevice::locationTimestampInSeconds().value_or(0), 6), "null"});
}

std::string VeltoMRAIDBridge::_exposure(float percentage, const CGRect& visibleRect,
                                        const Rectangles& occlusionRectangles) {
  std::string occlusion = "null";
  if (!occlusionRectangles.empty()) {
    JSON::Array encoded;
    for (const auto& rectangle : occlusionRectangles)
      encoded.emplace_back(_position(rectFromString(rectangle)));
    occlusion = JSONSDKVelto::JSONString(encoded).value_or("null");
  }
  return filled(MRAIDValue[Exposure], {number(percentage, 1), _position(visibleRect), occlusion});
}

std::string VeltoMRAIDBridge::_BOOL(bool value) {
  return MRAIDValue[value ? True : False];
}

std::string VeltoMRAIDBridge::_appendArgs(const std::optional<std::string>& args) {
  return args ? "," + *args : "";
}

void VeltoMRAIDBridge::_callMRAIDBridge(const std::string& call, const WebView& wkWebView) {
  if (!wkWebView) return;
  const auto statement = filled(MRAIDBridge[1], {call});
  inspect("statement", [&] { return JSON::Object{{"text", statement}}; });
  wkWebView->evaluateJavaScript(statement, nullptr);
}

}  // namespace velto
