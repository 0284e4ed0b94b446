// A web view: loads markup, runs statements in the page, tells its delegate where the page wants to go. Main
// thread only.
#pragma once

#include "velto/Export.h"
#include "velto/platform/WebViewPeer.h"
#include "velto/platform/ui/UIView.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velto {

class PreparedWebContent;
class WKWebView;

enum class WKUserScriptInjectionTime { AtDocumentStart = 0, AtDocumentEnd = 1 };

struct WKUserScript {
  std::string source;
  WKUserScriptInjectionTime injectionTime = WKUserScriptInjectionTime::AtDocumentEnd;
  bool forMainFrameOnly = true;
};

struct WKUserContentController {
  std::vector<WKUserScript> userScripts;
  void addUserScript(WKUserScript script) { userScripts.push_back(std::move(script)); }
};

struct WKWebViewConfiguration {
  bool allowsInlineMediaPlayback = false;
  bool allowsAirPlayForMediaPlayback = true;
  uint64_t dataDetectorTypes = 0;                                    // 2 turns links in plain text into links
  uint64_t mediaTypesRequiringUserActionForPlayback = ~uint64_t{0};  // 0 none, all bits all
  bool requiresUserActionForMediaPlayback = true;                    // the same, where the above is not known
  WKUserContentController userContentController;
  // Wishes that save time: content to start from, and a view whose web process to share.
  std::shared_ptr<PreparedWebContent> preparedContent;
  std::weak_ptr<WKWebView> relatedWebView;
  // Not empty: the page may live in one process with others of this site, and with none of another.
  std::string site;
};

enum class WKNavigationType {
  LinkActivated = 0,
  FormSubmitted = 1,
  BackForward = 2,
  Reload = 3,
  FormResubmitted = 4,
  Other = -1
};
enum class WKNavigationActionPolicy { Cancel = 0, Allow = 1 };

struct WKNavigationAction {
  std::optional<NSURL> requestURL;
  WKNavigationType navigationType = WKNavigationType::Other;
};

// A load that the main frame went through. It carries nothing that the library reads.
struct WKNavigation {};

class VELTO_EXPORT WKNavigationDelegate {
 public:
  using DecisionHandler = std::function<void(WKNavigationActionPolicy)>;

  virtual ~WKNavigationDelegate() = default;
  // webView:decidePolicyForNavigationAction:decisionHandler: for
  // every navigation of every frame; the handler is called inside.
  virtual void webView(WKWebView& webView, const WKNavigationAction& action,
                       const DecisionHandler& decisionHandler) = 0;
  // webView:didFinishNavigation:
  virtual void webView(WKWebView& webView, const WKNavigation& navigation) = 0;
  // webView:didFailNavigation:withError:
  virtual void webView(WKWebView& webView, const WKNavigation& navigation, const NSError& error) = 0;
};

class VELTO_EXPORT WKWebView : public UIView {
 public:
  static std::shared_ptr<WKWebView> initWithFrame(const CGRect& frame, WKWebViewConfiguration configuration);

  const WKWebViewConfiguration& configuration() const { return configuration_; }
  // For documents that are loaded from now on.
  void addUserScript(WKUserScript script);
  void setNavigationDelegate(std::weak_ptr<WKNavigationDelegate> delegate) {
    delegate_ = std::move(delegate);
  }

  void loadHTMLString(const std::string& html, const std::optional<NSURL>& baseURL);
  // See WebViewPeer. The completion may be empty; it is not called once the view is gone.
  void evaluateJavaScript(
      const std::string& script,
      std::function<void(std::optional<JSON> result, std::optional<NSError> error)> completion);

  void setMuted(bool muted) { webPeer_->setMuted(muted); }
  const ScrollBehavior& scrollView() const { return scroll_; }
  void setScrollView(const ScrollBehavior& behavior);

  // For peers. The decision is what the engine is to do with the navigation.
  WKNavigationActionPolicy peerDecidePolicy(const WKNavigationAction& action);
  void peerDidFinishNavigation();
  void peerDidFailNavigation(const NSError& error);
  WebViewPeer& webPeer() const { return *webPeer_; }

 private:
  WKWebView(WebViewPeer* webPeer, std::unique_ptr<ViewPeer> peer, WKWebViewConfiguration configuration);

  WebViewPeer* webPeer_;
  WKWebViewConfiguration configuration_;
  ScrollBehavior scroll_;
  std::weak_ptr<WKNavigationDelegate> delegate_;
};

}  // namespace velto
