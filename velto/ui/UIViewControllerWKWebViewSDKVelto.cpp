// The ad's web view: configuration, loading and navigation policy.
#include "velto/ui/UIViewControllerWKWebViewSDKVelto.h"

#include "velto/ads/VeltoAdManager.h"
#include "velto/core/VeltoDataStore.h"
#include "velto/core/VeltoInspector.h"
#include "velto/measurement/OMSDK.h"
#include "velto/mraid/UIViewControllerMRAIDSDKVelto.h"
#include "velto/network/NSURLSDKVelto.h"
#include "velto/platform/Platform.h"
#include "velto/platform/UIApplication.h"
#include "velto/platform/UIDevice.h"
#include "velto/platform/WKWebsiteDataStore.h"
#include "velto/platform/ui/UIViewController.h"
#include "velto/ui/PreparedPage.h"

#include <limits>

namespace velto {
namespace {

constexpr char viewportScript[] =
    "var meta = document.createElement('meta'); meta.setAttribute('name', 'viewport'); "
    "meta.setAttribute('content', "
    "'width=device-width, initial-scale=1.0, maximum-scale=1.0, user-scalable=no'); "
    "document.getElementsByTagName('head')[0].appendChild(meta);";

constexpr char signalScheme[] = "velto";
constexpr char signalLoaded[] = "velto://loadFinished";
constexpr char signalFailed[] = "velto://failLoad";
constexpr uint64_t dataDetectorLinks = 2;
constexpr int insetAdjustmentNever = 2;

}  // namespace

std::shared_ptr<WKWebView> UIViewControllerWKWebViewSDKVelto::createWKWebViewInstance(
    std::weak_ptr<WKNavigationDelegate> navigationDelegate) {
  const auto& device = Platform::current().device();
  WKWebViewConfiguration configuration;
  configuration.userContentController.addUserScript(
      {viewportScript, WKUserScriptInjectionTime::AtDocumentEnd, true});
  configuration.allowsInlineMediaPlayback = true;
  configuration.allowsAirPlayForMediaPlayback = true;
  if (device.isSystemVersionAtLeast(10)) {
    configuration.dataDetectorTypes = dataDetectorLinks;
    configuration.mediaTypesRequiringUserActionForPlayback = 0;
  } else {
    configuration.requiresUserActionForMediaPlayback = false;
  }
  if (auto* inspector = VeltoInspector::current()) inspector->prepare(configuration);
  preparedPage().moveInto(configuration);
  configuration.site = site();

  auto webView = WKWebView::initWithFrame({}, std::move(configuration));
  webView->setBackgroundColor(UIColor::clearColor());
  webView->setNavigationDelegate(std::move(navigationDelegate));
  ScrollBehavior scroll;
  scroll.bounces = false;
  scroll.scrollEnabled = false;
  if (device.isSystemVersionAtLeast(11)) scroll.contentInsetAdjustmentBehavior = insetAdjustmentNever;
  webView->setScrollView(scroll);
  return webView;
}

void UIViewControllerWKWebViewSDKVelto::loadBannerDataIn(const WebView& webView,
                                                         const std::shared_ptr<VeltoAd>& ad) {
  if (!ad || !ad->html) return;
  _cleanWKWebViewCache([weak = self(), webView, ad] {
    const auto alive = weak.lock();
    if (alive && alive->isShown()) alive->load(webView, ad);
  });
}

void UIViewControllerWKWebViewSDKVelto::load(const WebView& webView, const std::shared_ptr<VeltoAd>& ad) {
  std::string markup = OMSDK::htmlWithOMSDKInjection(*ad->html);
  if (ad->sourceType == VeltoAdSourceMRAID) {
    markup = UIViewControllerMRAIDSDKVelto::htmlForAvoidLoadMRAIDLocalScript(std::move(markup));
    const auto& script = UIViewControllerMRAIDSDKVelto::MRAIDJs();
    webView->evaluateJavaScript(script, nullptr);
    // Not every engine carries what was evaluated over into the document that comes; the script itself sees
    // to it that it runs once in each. Frames of the same origin share what their page has.
    webView->addUserScript({script, WKUserScriptInjectionTime::AtDocumentStart, false});
  }
  if (auto* inspector = VeltoInspector::current()) inspector->willLoad(*webView);
  webView->loadHTMLString(markup, std::nullopt);
  VeltoDataStore::updateUserAgentFromWKWebView(webView);
  Platform::current().notificationCenter().postNotification({constNotificationAdShowed, ad});
  veltoBannerInjected(*webView);
}

void UIViewControllerWKWebViewSDKVelto::_cleanWKWebViewCache(std::function<void()> completion) {
  auto& store = Platform::current().websiteDataStore();
  store.removeCookiesSinceDate(-std::numeric_limits<double>::infinity());
  const auto types = store.allWebsiteDataTypes();
  store.fetchDataRecordsOfTypes(types, [types, completion = std::move(completion)](const auto& records) {
    Platform::current().websiteDataStore().removeDataOfTypes(types, records, [completion] {
      if (completion) completion();
    });
  });
}

void UIViewControllerWKWebViewSDKVelto::webView(WKWebView& webView, const WKNavigationAction& action,
                                                const DecisionHandler& decisionHandler) {
  const auto alive = viewController().shared_from_this();
  inspect("navigation", [&] {
    return JSON::Object{{"url", action.requestURL ? action.requestURL->absoluteString() : ""},
                        {"tapped", action.navigationType == WKNavigationType::LinkActivated}};
  });
  decisionHandler(decide(webView, action));
}

WKNavigationActionPolicy UIViewControllerWKWebViewSDKVelto::decide(WKWebView& webView,
                                                                   const WKNavigationAction& action) {
  if (!action.requestURL) return WKNavigationActionPolicy::Cancel;
  const NSURL& url = *action.requestURL;

  if (url.scheme() == signalScheme) {
    if (url.absoluteString() == signalLoaded)
      veltoAdLoaded(webView);
    else if (url.absoluteString() == signalFailed)
      veltoDismissWKWebView(webView);
    return WKNavigationActionPolicy::Cancel;
  }
  if (SDKVelto::isAdMRAIDHandler(url)) {
    handleMRAIDAction(url, webView);
    return WKNavigationActionPolicy::Allow;
  }
  if (action.navigationType == WKNavigationType::LinkActivated) {
    const NSURL resolved = SDKVelto::URLByResolvingImplicitScheme(url);
    const bool opens = Platform::current().application().canOpenURL(resolved);
    if (opens) SDKVelto::open(resolved);
    linkTapped(opens ? VeltoTap::LinkOpened : VeltoTap::LinkInPlace);
    if (opens) return WKNavigationActionPolicy::Cancel;
  }
  return WKNavigationActionPolicy::Allow;
}

void UIViewControllerWKWebViewSDKVelto::webView(WKWebView& webView, const WKNavigation&) {
  const auto alive = viewController().shared_from_this();
  inspect("load-finished", [] { return JSON::Object{}; });
  veltoWKWebViewDidFinishNavigation(webView);
}

void UIViewControllerWKWebViewSDKVelto::webView(WKWebView&, const WKNavigation&, const NSError& error) {
  const auto alive = viewController().shared_from_this();
  inspect("navigation-failed", [&] { return JSON::Object{{"error", error.localizedDescription}}; });
  veltoWKWebViewDidFailNavigation(error);
}

}  // namespace velto
