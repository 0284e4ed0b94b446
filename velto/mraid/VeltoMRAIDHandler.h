// The rich-media state of one displayed ad: where it stands, what its page has asked for, the orientations
// that it allows. It guards no transition, the controller decides what is allowed; it tells the page of each.
// Owned by its ad and, while that is shown, by the controller. Main thread.
#pragma once

#include "velto/mraid/VeltoMRAIDProperties.h"

#include <cstdint>
#include <memory>
#include <string>

namespace velto {

class EKEventStore;
struct EKEvent;
class VeltoMRAIDPropertyCalendarEvent;
class WKWebView;

class VeltoMRAIDHandler {
 public:
  using WebView = std::shared_ptr<WKWebView>;

  // Posts the lock notification, with all orientations.
  static std::shared_ptr<VeltoMRAIDHandler> handler();
  VeltoMRAIDHandler(const VeltoMRAIDHandler&) = delete;
  VeltoMRAIDHandler& operator=(const VeltoMRAIDHandler&) = delete;
  ~VeltoMRAIDHandler();

  bool isViewable = false;
  std::string state = MRAIDState[MRAIDStateLoading];
  MRAIDText placementType = MRAIDText::entry(MRAIDPlacementType[MRAIDPlacementUnknown]);
  int64_t orientation = 0;        // that the ad forces, UIDeviceOrientation…; 0 for none
  uint64_t orientationMask = 30;  // that the ad allows, a bit for each UIDeviceOrientation…; at first all
  std::shared_ptr<VeltoMRAIDPropertyExpand> expandProperty;
  std::shared_ptr<VeltoMRAIDPropertyResize> resizeProperty;
  std::shared_ptr<VeltoMRAIDPropertyCurrentAppOrientation> currentAppOrientation;
  CGRect rect;  // for the controller's use

  const VeltoMRAIDPropertyOrientation& orientationProperty() const { return *orientationProperty_; }
  const std::shared_ptr<VeltoMRAIDPropertyOrientation>& heldOrientationProperty() const {
    return orientationProperty_;
  }
  // Computes the lock anew and posts it.
  void setOrientationProperty(std::shared_ptr<VeltoMRAIDPropertyOrientation> property);

  void readyInlinePlacementType(const WebView& webView, CGSize maxSize);
  void readyInterstitialPlacementType(const WebView& webView, CGSize maxSize);
  void setIsViewable(bool viewable, const WebView& wkWebView);
  void expand(const WebView& webView, const CGRect& frame);
  void closeExpand(const WebView& webView, const CGRect& frame);
  void resize(const WebView& webView, const CGRect& frame, bool notify);
  void closeResize(const WebView& webView, const CGRect& frame);
  void closeInterstitial(const WebView& webView);
  void changeOrientation(const WebView& webView, CGSize size);

  // Each only with access granted before; nobody hears how it went.
  void downloadImageContent(const std::string& url);
  void storeCalendarEvent(const VeltoMRAIDPropertyCalendarEvent& event) { _storeCalendarEvent(event); }

 private:
  VeltoMRAIDHandler() = default;
  void _ready(const WebView& webView, CGSize maxSize, const char* placementType);
  void _updateOrientation();
  static void postLock(uint64_t mask);
  static void _resetOrientationLock();
  static void _storeCalendarEvent(const VeltoMRAIDPropertyCalendarEvent& property);
  static void _handleCalendarRecurrence(const VeltoMRAIDPropertyCalendarEvent& property, EKEventStore& store,
                                        EKEvent& event);
  static void _handleCalendarReminder(const VeltoMRAIDPropertyCalendarEvent& property, EKEventStore& store,
                                      EKEvent& event);

  std::shared_ptr<VeltoMRAIDPropertyOrientation> orientationProperty_;
};

}  // namespace velto
