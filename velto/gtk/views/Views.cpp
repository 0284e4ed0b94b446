// The view system: which peer for which view.
#include "velto/gtk/views/Views.h"

#include "velto/gtk/views/ButtonPeer.h"
#include "velto/gtk/views/DisplayLink.h"
#include "velto/gtk/views/Peer.h"
#include "velto/gtk/web/EarlyStart.h"
#include "velto/gtk/web/WebProcesses.h"
#include "velto/gtk/web/WebSession.h"
#include "velto/gtk/web/WebView.h"
#include "velto/platform/ui/WKWebView.h"

namespace velto::gtk {
namespace {

class Views final : public ViewSystem {
 public:
  explicit Views(std::shared_ptr<WebSession> session) : session_(std::move(session)), earlyStart_(session_) {}

  std::unique_ptr<ViewPeer> makeView() override { return std::make_unique<Peer>(); }
  std::unique_ptr<ButtonPeer> makeButton() override { return std::make_unique<PushButtonPeer>(); }

  std::unique_ptr<WebViewPeer> makeWebView(const WKWebViewConfiguration& configuration) override {
    return std::make_unique<WebView>(engineFor(configuration), configuration);
  }

  std::shared_ptr<PreparedWebContent> prepareWebContent(WKWebView* replacing) override {
    if (const auto* view = webViewOf(replacing); view && view->canShareProcess()) return nullptr;
    if (auto early = earlyStart_.take(); early && early->isUp()) return early;
    return std::make_shared<PreparedEngine>(*session_);
  }

  void expectWebContent() override { earlyStart_.expect(); }

  Handle displayLink(std::function<void(double)> tick) override { return displayLink_->add(std::move(tick)); }

 private:
  static const WebView* webViewOf(const WKWebView* view) {
    return view ? dynamic_cast<const WebView*>(&view->webPeer()) : nullptr;
  }

  Engine engineFor(const WKWebViewConfiguration& configuration) {
    if (auto* prepared = dynamic_cast<PreparedEngine*>(configuration.preparedContent.get()))
      if (auto engine = prepared->take()) return std::move(*engine);
    const auto related = configuration.relatedWebView.lock();
    const auto* view = webViewOf(related.get());
    return view && view->canShareProcess() ? relatedEngine(view->engine()) : freshEngine(*session_);
  }

  std::shared_ptr<WebSession> session_;
  EarlyStart earlyStart_;
  std::shared_ptr<DisplayLink> displayLink_ = std::make_shared<DisplayLink>();
};

}  // namespace

std::unique_ptr<ViewSystem> makeViewSystem(std::shared_ptr<WebSession> session) {
  return std::make_unique<Views>(std::move(session));
}

}  // namespace velto::gtk
