// A web view on the screen: the engine's web view fills the peer's widget. Made by the view system for
// WKWebView; main thread only. See WebProcesses.h for where its process comes from, PageScripts.h for
// statements, WebGuards.h for what a page may not.
#pragma once

#include "velto/gtk/views/Peer.h"
#include "velto/gtk/web/CommandQueue.h"
#include "velto/gtk/web/FloodGuard.h"
#include "velto/gtk/web/PageCost.h"
#include "velto/gtk/web/PageFocus.h"
#include "velto/gtk/web/PageScripts.h"
#include "velto/gtk/web/PageSight.h"
#include "velto/gtk/web/PlaceWatch.h"
#include "velto/gtk/web/TouchShare.h"
#include "velto/gtk/web/WebProcesses.h"
#include "velto/gtk/web/WheelShare.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velto {
class WKWebView;
struct WKNavigationAction;
struct WKWebViewConfiguration;
enum class WKNavigationActionPolicy;
}  // namespace velto

namespace velto::gtk {

class WebView final : public Peer, public WebViewPeer {
 public:
  WebView(Engine engine, const WKWebViewConfiguration& configuration);
  ~WebView() override;

  void addUserScript(const WKUserScript& script) override;
  void loadHTMLString(const std::string& html, const std::optional<NSURL>& baseURL) override;
  void evaluateJavaScript(const std::string& script, PageScripts::Completion completion) override;
  void setMuted(bool muted) override { webkit_web_view_set_is_muted(engine_.view, muted); }
  void setScrollBehavior(const ScrollBehavior& behavior) override;

  const Engine& engine() const { return engine_; }
  bool hasWarmProcess() const override { return engine_.warm; }
  WebPageUse use() const override;
  Handle afterUse(double processorSeconds, std::function<void()> then) override {
    return cost_.afterUse(*engine_.process, processorSeconds, std::move(then));
  }
  void setInSight(bool inSight) override { sight_.set(inSight); }
  // Whether the view that takes this one's place would do well to share its process.
  bool canShareProcess(const std::string& site) const;

 private:
  // Where the latest load stands. Events of an older one, still under way, belong to nobody any more.
  enum class Load { None, Requested, Started, Ended };

  static gboolean decidePolicy(WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
                               WebView* self) noexcept;
  static GtkWidget* createView(WebKitWebView*, WebKitNavigationAction* action, WebView* self) noexcept;
  static void loadChanged(WebKitWebView*, WebKitLoadEvent event, WebView* self) noexcept;
  static gboolean loadFailed(WebKitWebView*, WebKitLoadEvent, const char* address, GError* error,
                             WebView* self) noexcept;
  static gboolean loadFailedWithTLSErrors(WebKitWebView*, const char* address, GTlsCertificate*,
                                          GTlsCertificateFlags, WebView* self) noexcept;
  static void responsivenessChanged(WebKitWebView* view, GParamSpec*, WebView* self) noexcept;
  static void processTerminated(WebKitWebView*, WebKitWebProcessTerminationReason reason,
                                WebView* self) noexcept;

  static void said(WebView* self) noexcept { self->flood_.hear(); }
  static void messageReceived(WebKitUserContentManager*, JSCValue* message, WebView* self) noexcept;
  static gboolean touched(GtkEventController*, GdkEvent* event, WebView* self) noexcept;

  void configure(const WKWebViewConfiguration& configuration);
  void command(const WKNavigationAction& action);
  bool wasTouched() const;
  bool isMeant(GdkEvent* touch) const;
  WKNavigationActionPolicy ask(const WKNavigationAction& action, bool mayOpen);
  void decideNavigation(WebKitPolicyDecision* decision, bool inNewWindow);
  bool isOwnNavigation(const WKNavigationAction& action, const std::string& address);
  void fail(const NSError& error);
  void endFlood();
  std::shared_ptr<WKWebView> owner() const;
  static gboolean waitsForPage(gpointer self) noexcept;
  void waitNoMore();

  Engine engine_;
  guint processStart_ = 0;  // while the first page may yet come before it
  std::shared_ptr<PageScripts> scripts_;
  WheelShare wheel_;
  TouchShare touch_;
  PageFocus focus_;
  PageSight sight_;
  PlaceWatch place_;
  PageCost cost_;
  GPtr<WebKitWebsitePolicies> policies_;
  GOwned<WebKitUserStyleSheet, webkit_user_style_sheet_unref> noScrolling_;  // while it does not scroll
  std::shared_ptr<CommandQueue> commands_;
  FloodGuard flood_;
  GtkEventController* touches_ = nullptr;  // the engine view's
  std::optional<gint64> lastTouch_;        // monotonic, microseconds
  std::optional<gint64> touchBefore_;      // the finger that is down
  bool isMeant_ = true;                    // by who touches
  Load load_ = Load::None;
  std::vector<std::string> ownNavigations_;  // told to the engine, not yet asked about
};

}  // namespace velto::gtk
