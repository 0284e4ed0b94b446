// The view system: which peer for which view.
#include "velto/gtk/views/Views.h"

#include "velto/gtk/views/ButtonPeer.h"
#include "velto/gtk/views/DisplayLink.h"
#include "velto/gtk/views/Peer.h"
#include "velto/gtk/web/EarlyStart.h"
#include "velto/gtk/web/EngineProbe.h"
#include "velto/gtk/web/SharedProcesses.h"
#include "velto/gtk/web/WebProcesses.h"
#include "velto/gtk/web/WebSession.h"
#include "velto/gtk/web/WebView.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"
#include "velto/platform/ui/WKWebView.h"

#include <functional>
#include <utility>

namespace velto::gtk {
namespace {

NSError failureOf(const std::string& hindrance) {
  return {"velto-engine", 1, hindrance, NSErrorCause::EngineUnavailable};
}

// Where the engine cannot start: stays empty.
class EmptyWebView final : public Peer, public WebViewPeer {
 public:
  explicit EmptyWebView(NSError why) : why_(std::move(why)) {}

  void loadHTMLString(const std::string&, const std::optional<NSURL>&) override {
    later([](WKWebView& view, const NSError& why) { view.peerDidFailNavigation(why); });
  }
  void addUserScript(const WKUserScript&) override {}
  void evaluateJavaScript(const std::string&, PageScripts::Completion completion) override {
    if (completion)
      later([completion = std::move(completion)](WKWebView&, const NSError& why) {
        completion(std::nullopt, why);
      });
  }
  void setMuted(bool) override {}
  void setScrollBehavior(const ScrollBehavior&) override {}

 private:
  // In a turn of its own, unless the view is gone by then.
  void later(std::function<void(WKWebView&, const NSError&)> work) {
    auto* platform = Platform::currentOrNull();
    if (!platform) return;
    platform->mainQueue().post(
        [view = std::weak_ptr(owner_->shared_from_this()), why = why_, work = std::move(work)] {
          if (const auto alive = std::static_pointer_cast<WKWebView>(view.lock())) work(*alive, why);
        });
  }

  const NSError why_;
};

class Views final : public ViewSystem {
 public:
  explicit Views(std::shared_ptr<WebSession> session) : session_(std::move(session)), earlyStart_(session_) {}

  std::unique_ptr<ViewPeer> makeView() override { return std::make_unique<Peer>(); }
  std::unique_ptr<ButtonPeer> makeButton() override { return std::make_unique<PushButtonPeer>(); }

  std::unique_ptr<WebViewPeer> makeWebView(const WKWebViewConfiguration& configuration) override {
    if (auto failure = webContentFailure()) return std::make_unique<EmptyWebView>(std::move(*failure));
    return std::make_unique<WebView>(engineFor(configuration), configuration);
  }

  std::shared_ptr<PreparedWebContent> prepareWebContent(WKWebView* replacing, WebContentUse use) override {
    const bool together = use == WebContentUse::Together;
    const auto* view = webViewOf(replacing);
    if (view && view->canShareProcess(together ? view->engine().process->site() : "")) {
      view->engine().process->ask();
      return nullptr;
    }
    if (together && shared_.isAny()) {
      shared_.ask();
      return nullptr;
    }
    if (auto coming = coming_.lock(); together && coming && !coming->isOver()) return coming;
    const auto& probe = EngineProbe::shared();
    if (probe.isOver() && probe.hindrance()) return nullptr;
    auto prepared = earlyStart_.take();
    if (!prepared || prepared->isOver()) prepared = std::make_shared<PreparedEngine>(session_);
    if (use != WebContentUse::Later) prepared->bringUp();
    if (together) coming_ = prepared;
    return prepared;
  }

  void expectWebContent(std::function<Handle()> meanwhile) override {
    EngineProbe::shared();  // over by the first load, if not before
    earlyStart_.expect(std::move(meanwhile));
  }

  std::optional<NSError> webContentFailure() override {
    const auto hindrance = EngineProbe::shared().hindrance();
    return hindrance ? std::optional(failureOf(*hindrance)) : std::nullopt;
  }

  Handle displayLink(std::function<void(double)> tick) override { return displayLink_->add(std::move(tick)); }

 private:
  static const WebView* webViewOf(const WKWebView* view) {
    return view ? dynamic_cast<const WebView*>(&view->webPeer()) : nullptr;
  }

  Engine engineFor(const WKWebViewConfiguration& configuration) {
    const auto& site = configuration.site;
    const auto related = configuration.relatedWebView.lock();
    const auto* view = webViewOf(related.get());
    const bool takesPlace = view && view->canShareProcess(site);
    if (!takesPlace && !site.empty())
      if (auto engine = shared_.viewOf(site)) return std::move(*engine);
    auto* prepared = dynamic_cast<PreparedEngine*>(configuration.preparedContent.get());
    auto engine = prepared ? prepared->take() : std::nullopt;
    if (!engine)
      engine =
          takesPlace ? relatedEngine(view->engine().view, view->engine().process) : freshEngine(*session_);
    shared_.add(*engine, site);
    return std::move(*engine);
  }

  std::shared_ptr<WebSession> session_;
  EarlyStart earlyStart_;
  SharedProcesses shared_;
  std::weak_ptr<PreparedEngine> coming_;  // what the next page of those that may live together takes over
  std::shared_ptr<DisplayLink> displayLink_ = std::make_shared<DisplayLink>();
};

}  // namespace

std::unique_ptr<ViewSystem> makeViewSystem(std::shared_ptr<WebSession> session) {
  return std::make_unique<Views>(std::move(session));
}

}  // namespace velto::gtk
