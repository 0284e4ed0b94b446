// The state machine of a rich-media ad, its orientation lock, and what it stores for the user.
#include "velto/mraid/VeltoMRAIDHandler.h"

#include "velto/ads/VeltoAdManager.h"
#include "velto/core/VeltoConstants.h"
#include "velto/core/VeltoInspector.h"
#include "velto/mraid/VeltoMRAIDBridge.h"
#include "velto/mraid/VeltoMRAIDPropertyCalendar.h"
#include "velto/platform/EKEventStore.h"
#include "velto/platform/PHPhotoLibrary.h"
#include "velto/platform/Platform.h"
#include "velto/platform/UIDevice.h"
#include "velto/platform/ui/WKWebView.h"

namespace velto {
namespace {

// A bit for each orientation.
constexpr uint64_t portraitOnly = 1 << UIDeviceOrientationPortrait;
constexpr uint64_t landscapeOnly = 1 << UIDeviceOrientationLandscapeRight;
constexpr uint64_t allOrientations = portraitOnly | 1 << UIDeviceOrientationPortraitUpsideDown |
                                     1 << UIDeviceOrientationLandscapeLeft | landscapeOnly;

}  // namespace

std::shared_ptr<VeltoMRAIDHandler> VeltoMRAIDHandler::handler() {
  std::shared_ptr<VeltoMRAIDHandler> made(new VeltoMRAIDHandler);
  made->setOrientationProperty(VeltoMRAIDPropertyOrientation::orientation());
  return made;
}

VeltoMRAIDHandler::~VeltoMRAIDHandler() {
  _resetOrientationLock();
}

// --- states

void VeltoMRAIDHandler::readyInlinePlacementType(const WebView& webView, CGSize maxSize) {
  _ready(webView, maxSize, MRAIDPlacementType[MRAIDPlacementInline]);
}

void VeltoMRAIDHandler::readyInterstitialPlacementType(const WebView& webView, CGSize maxSize) {
  _ready(webView, maxSize, MRAIDPlacementType[MRAIDPlacementInterstitial]);
}

void VeltoMRAIDHandler::_ready(const WebView& webView, CGSize maxSize, const char* type) {
  placementType = MRAIDText::entry(type);
  isViewable = true;
  if (state == MRAIDState[MRAIDStateLoading]) state = MRAIDState[MRAIDStateDefault];
  VeltoMRAIDBridge::mraidReady(webView, maxSize, *this);
}

void VeltoMRAIDHandler::setIsViewable(bool viewable, const WebView& wkWebView) {
  const bool changed = isViewable != viewable;
  isViewable = viewable;
  const CGRect visible = viewable && wkWebView ? wkWebView->frame() : CGRect{};
  VeltoMRAIDBridge::mraidIsViewable(wkWebView, visible, changed, *this);
}

void VeltoMRAIDHandler::expand(const WebView& webView, const CGRect& frame) {
  state = MRAIDState[MRAIDStateExpanded];
  VeltoMRAIDBridge::mraidExpand(webView, frame, *this);
}

// Told with the statements of an expansion: the default position stays as the page knows it.
void VeltoMRAIDHandler::closeExpand(const WebView& webView, const CGRect& frame) {
  state = MRAIDState[MRAIDStateDefault];
  VeltoMRAIDBridge::mraidExpand(webView, frame, *this);
  _resetOrientationLock();
}

void VeltoMRAIDHandler::resize(const WebView& webView, const CGRect& frame, bool notify) {
  state = MRAIDState[MRAIDStateResized];
  VeltoMRAIDBridge::mraidResize(webView, frame, notify ? resizeProperty.get() : nullptr, *this);
}

void VeltoMRAIDHandler::closeResize(const WebView& webView, const CGRect& frame) {
  state = MRAIDState[MRAIDStateDefault];
  VeltoMRAIDBridge::mraidCloseResize(webView, frame, *this);
}

void VeltoMRAIDHandler::closeInterstitial(const WebView& webView) {
  state = MRAIDState[MRAIDStateHidden];
  isViewable = false;
  VeltoMRAIDBridge::mraidCloseInterstitial(webView, *this);
}

void VeltoMRAIDHandler::changeOrientation(const WebView& webView, CGSize size) {
  VeltoMRAIDBridge::mraidChangeOrientation(webView, size, *this);
}

// --- orientation

void VeltoMRAIDHandler::setOrientationProperty(std::shared_ptr<VeltoMRAIDPropertyOrientation> property) {
  orientationProperty_ = std::move(property);
  _updateOrientation();
}

void VeltoMRAIDHandler::_updateOrientation() {
  const MRAIDText& forced = orientationProperty_->forceOrientation;
  if (forced.isEntry(MRAIDOrientation[MRAIDOrientationNone])) orientationMask = allOrientations;
  if (placementType == MRAIDPlacementType[MRAIDPlacementInterstitial] ||
      state == MRAIDState[MRAIDStateExpanded]) {
    orientation = UIDeviceOrientationUnknown;
    orientationMask = allOrientations;
    if (forced == MRAIDOrientation[MRAIDOrientationPortrait]) {
      orientation = UIDeviceOrientationPortrait;
      orientationMask = portraitOnly;
    } else if (forced == MRAIDOrientation[MRAIDOrientationLandscape]) {
      orientation = UIDeviceOrientationLandscapeRight;
      orientationMask = landscapeOnly;
    }
  }
  postLock(orientationMask);
}

void VeltoMRAIDHandler::postLock(uint64_t mask) {
  if (auto* platform = Platform::currentOrNull())
    platform->notificationCenter().postNotification(
        {VeltoNotificationUIInterfaceOrientationMaskLock, static_cast<int64_t>(mask)});
}

void VeltoMRAIDHandler::_resetOrientationLock() {
  postLock(allOrientations);
}

// --- pictures and calendar

void VeltoMRAIDHandler::downloadImageContent(const std::string& url) {
  if (Platform::current().photoLibrary().authorizationStatus() != AuthorizationStatusAuthorized)
    return inspectRefusal("storePicture", "The application may not store pictures.");
  VeltoAdManager::fetchForMRAIDImageContent(url, [url](bool stored) {
    if (!stored) inspectRefusal("storePicture", url + " could not be had or stored.");
  });
}

void VeltoMRAIDHandler::_storeCalendarEvent(const VeltoMRAIDPropertyCalendarEvent& property) {
  auto& store = Platform::current().eventStore();
  if (store.authorizationStatusForEntityType(EKEntityType::Event) != AuthorizationStatusAuthorized)
    return inspectRefusal("createCalendarEvent", "The application may not write into the calendar.");
  EKEvent event;
  event.calendar = store.defaultCalendarForNewEvents();
  event.title = property.descriptionEvent;
  event.location = property.location;
  event.startDate = property.start;
  event.endDate = property.end;
  _handleCalendarRecurrence(property, store, event);
  store.saveEvent(event, EKSpan::ThisEvent, nullptr);
  inspect("calendar", [&] {
    return JSON::Object{{"title", property.descriptionEvent},
                        {"location", property.location.value_or("")},
                        {"repeats", property.recurrence != nullptr}};
  });
  _handleCalendarReminder(property, store, event);
}

void VeltoMRAIDHandler::_handleCalendarRecurrence(const VeltoMRAIDPropertyCalendarEvent& property,
                                                  EKEventStore&, EKEvent& event) {
  const auto& repeat = property.recurrence;
  if (!repeat || !repeat->frequency) return;
  EKRecurrenceRule rule;
  rule.frequency = repeat->frequencyEvent;
  rule.interval = 1;
  rule.daysOfTheWeek = repeat->daysInWeek;
  rule.daysOfTheMonth = repeat->daysInMonth;
  rule.monthsOfTheYear = repeat->monthsInYear;
  rule.weeksOfTheYear = repeat->weeksInYear;
  rule.daysOfTheYear = repeat->daysInYear;
  if (repeat->expires) rule.recurrenceEnd = EKRecurrenceEnd::recurrenceEndWithEndDate(*repeat->expires);
  event.addRecurrenceRule(std::move(rule));
}

// Access is looked at and no alarm is added.
void VeltoMRAIDHandler::_handleCalendarReminder(const VeltoMRAIDPropertyCalendarEvent& property,
                                                EKEventStore& store, EKEvent&) {
  if (property.reminder) static_cast<void>(store.authorizationStatusForEntityType(EKEntityType::Reminder));
}

}  // namespace velto
