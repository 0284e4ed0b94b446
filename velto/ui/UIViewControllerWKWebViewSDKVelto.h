// The web view of an ad: made with a fixed configuration, loaded after web data was cleared, and policed:
// what the page navigates to becomes signals, rich-media commands, or links opened outside the application. A
// mixin of the shown ad, which is its web views' navigation delegate; main thread.
#pragma once

#include "velto/ads/VeltoAd.h"
#include "velto/platform/ui/WKWebView.h"
#include "velto/timeline/VeltoTimelineEntry.h"

#include <functional>
#include <memory>

namespace velto {

class PreparedPage;
class UIViewController;

// What a shown ad hears of its web views.
class UIViewControllerWKWebViewVeltoSDKProtocol {
 public:
  virtual ~UIViewControllerWKWebViewVeltoSDKProtocol() = default;
  virtual void veltoBannerInjected(WKWebView& /*webView*/) {}    // the markup was handed to it
  virtual void veltoAdLoaded(WKWebView& /*webView*/) {}          // the page said so: velto://loadFinished
  virtual void veltoDismissWKWebView(WKWebView& /*webView*/) {}  // the page gave up: velto://failLoad
  virtual void veltoWKWebViewDidFinishNavigation(WKWebView& /*webView*/) {}
  virtual void veltoWKWebViewDidFailNavigation(const NSError& /*error*/) {}
};

class UIViewControllerWKWebViewSDKVelto : public UIViewControllerWKWebViewVeltoSDKProtocol,
                                          public WKNavigationDelegate {
 public:
  using WebView = std::shared_ptr<WKWebView>;

  std::shared_ptr<WKWebView> createWKWebViewInstance(std::weak_ptr<WKNavigationDelegate> navigationDelegate);

  // Loads the ad's markup once web data is cleared; nothing without an ad or without markup. The page gets
  // the measurement script and, for rich media, the page script.
  void loadBannerDataIn(const WebView& webView, const std::shared_ptr<VeltoAd>& ad);
  void _cleanWKWebViewCache(std::function<void()> completion);

  static WebView getActiveWebView(const WebView& main, const WebView& secondaryWebView) {
    return secondaryWebView ? secondaryWebView : main;
  }

  void webView(WKWebView& webView, const WKNavigationAction& action,
               const DecisionHandler& decisionHandler) override;
  void webView(WKWebView& webView, const WKNavigation& navigation) override;
  void webView(WKWebView& webView, const WKNavigation& navigation, const NSError& error) override;

 protected:
  virtual UIViewController& viewController() = 0;
  virtual std::weak_ptr<UIViewControllerWKWebViewSDKVelto> self() = 0;
  // False when nothing of all this may happen any more.
  virtual bool isShown() const = 0;
  // Used up by the next web view.
  virtual PreparedPage& preparedPage() = 0;
  // With whose pages the next web view may share a process; empty: with none of other places.
  virtual std::string site() const = 0;
  // A person's link.
  virtual void linkTapped(VeltoTap outcome) = 0;
  // A rich-media command of the page.
  virtual void handleMRAIDAction(const NSURL& url, WKWebView& webView) = 0;

 private:
  WKNavigationActionPolicy decide(WKWebView& webView, const WKNavigationAction& action);
  void load(const WebView& webView, const std::shared_ptr<VeltoAd>& ad);
};

}  // namespace velto
