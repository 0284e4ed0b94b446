// The web view: passes orders down to its peer and events up to its delegate.
#include "velto/platform/ui/WKWebView.h"

#include "velto/platform/Platform.h"
#include "velto/platform/ViewSystem.h"

namespace velto {

std::shared_ptr<WKWebView> WKWebView::initWithFrame(const CGRect& frame,
                                                    WKWebViewConfiguration configuration) {
  auto peer = Platform::current().views().makeWebView(configuration);
  auto* webPeer = peer.get();
  std::shared_ptr<WKWebView> view(new WKWebView(webPeer, std::move(peer), std::move(configuration)));
  view->setFrame(frame);
  return view;
}

WKWebView::WKWebView(WebViewPeer* webPeer, std::unique_ptr<ViewPeer> peer,
                     WKWebViewConfiguration configuration)
    : UIView(std::move(peer)), webPeer_(webPeer), configuration_(std::move(configuration)) {
  configuration_.preparedContent.reset();  // taken over by the peer, or not wanted
}

void WKWebView::addUserScript(WKUserScript script) {
  webPeer_->addUserScript(script);
  configuration_.userContentController.addUserScript(std::move(script));
}

void WKWebView::loadHTMLString(const std::string& html, const std::optional<NSURL>& baseURL) {
  webPeer_->loadHTMLString(html, baseURL);
}

void WKWebView::evaluateJavaScript(
    const std::string& script, std::function<void(std::optional<JSON>, std::optional<NSError>)> completion) {
  webPeer_->evaluateJavaScript(script, std::move(completion));
}

void WKWebView::setScrollView(const ScrollBehavior& behavior) {
  scroll_ = behavior;
  webPeer_->setScrollBehavior(behavior);
}

// Delegates may remove this view while they are being told;
// the pointers keep both ends alive until they return.

WKNavigationActionPolicy WKWebView::peerDecidePolicy(const WKNavigationAction& action) {
  const auto self = shared_from_this();
  auto decision = WKNavigationActionPolicy::Cancel;
  if (auto delegate = delegate_.lock())
    delegate->webView(*this, action, [&](auto policy) { decision = policy; });
  return decision;
}

void WKWebView::peerDidFinishNavigation() {
  const auto self = shared_from_this();
  if (auto delegate = delegate_.lock()) delegate->webView(*this, WKNavigation{});
}

void WKWebView::peerDidFailNavigation(const NSError& error) {
  const auto self = shared_from_this();
  if (auto delegate = delegate_.lock()) delegate->webView(*this, WKNavigation{}, error);
}

}  // namespace velto
