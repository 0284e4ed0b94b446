// Speaks to the rich-media script of a page: each operation has the web view run statements made from fixed
// templates. No state of its own, no answers, nothing repeated; without a web view nothing happens. Called by
// the handler and the controllers, on the main thread.
#pragma once

#include "velto/platform/Geometry.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velto {

class VeltoMRAIDHandler;
class VeltoMRAIDPropertyResize;
class WKWebView;

class VeltoMRAIDBridge {
 public:
  using WebView = std::shared_ptr<WKWebView>;
  using Handler = const VeltoMRAIDHandler&;
  using Rectangles = std::vector<std::string>;  // "{{x, y}, {width, height}}"

  static void mraidReady(const WebView& webView, CGSize maxSize, Handler handler);
  static void mraidIsViewable(const WebView& webView, const CGRect& visibleRect, bool fireEvent,
                              Handler handler);
  static void mraidExpand(const WebView& webView, const CGRect& frame, Handler handler);
  static void mraidCloseExpand(const WebView& webView, const CGRect& frame, Handler handler);
  // Without a resize record only the state is told.
  static void mraidResize(const WebView& webView, const CGRect& frame, const VeltoMRAIDPropertyResize* resize,
                          Handler handler);
  static void mraidCloseResize(const WebView& webView, const CGRect& frame, Handler handler);
  static void mraidCloseInterstitial(const WebView& webView, Handler handler);
  static void mraidChangeOrientation(const WebView& webView, CGSize size, Handler handler);
  static void mradAudioVolumeChange(const WebView& webView, float volumePercentage);  // 0 … 1
  // The message stands in the statement without quotes, so a page never gets to hear it.
  static void mradFireError(const WebView& webView, const std::string& args);

  static void _setSupportFeatures(const WebView& wkWebView);
  static void _setMRAIDVersion(const WebView& wkWebView);
  static void _setSupportFeature(const std::string& feature, bool isSupported, const WebView& wkWebView);
  static void _setState(const std::string& state, const WebView& wkWebView);
  static void _setScreenSize(CGSize size, const WebView& wkWebView);
  static void _setMaxSize(CGSize size, const WebView& wkWebView);
  static void _setDefaultPosition(const CGRect& position, const WebView& wkWebView);
  static void _setCurrentPosition(const CGRect& position, const WebView& wkWebView);
  static void _setPlacementType(const std::string& placementType, const WebView& wkWebView);
  static void _setIsViewable(bool isViewable, const WebView& wkWebView);
  static void _setLocation(const WebView& wkWebView);
  static void _fireSizeChangeEvent(CGSize size, const WebView& wkWebView);
  static void _fireExposureChangeEvent(float percentage, const CGRect& visibleRect,
                                       const Rectangles& occlusionRectangles, const WebView& wkWebView);
  static void _fireViewableChangeEvent(bool isViewable, const WebView& wkWebView);
  static void _fireReadyEvent(const WebView& wkWebView);
  static void _fireEvent(const std::string& event, const std::optional<std::string>& args,
                         const WebView& wkWebView);

  static std::string _position(const CGRect& rect);
  static std::string _size(CGSize size);
  static std::string _volume(float volume);
  static std::string _location();
  static std::string _exposure(float percentage, const CGRect& visibleRect,
                               const Rectangles& occlusionRectangles);
  static std::string _BOOL(bool value);
  static std::string _appendArgs(const std::optional<std::string>& args);
  static void _callMRAIDBridge(const std::string& call, const WebView& wkWebView);
};

}  // namespace velto
