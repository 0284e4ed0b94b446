// Real pages in a real window: a banner whose ad a test writes itself, a page that keeps a log.
#pragma once

#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"
#include "velto/ui/VeltoBannerViewControllerPrivate.h"
#include "velto/velto.h"

#include "../../examples/demo/LinkTrap.h"
#include "../support/AdWindow.h"
#include "../support/LoopbackServer.h"

namespace velto::test {

// Writes down each event with the state and size that the getters answer at that moment.
inline const std::string logging = R"(<script src="mraid.js"></script><script>
  window.log = [];
  ['ready', 'error', 'sizeChange', 'stateChange', 'exposureChange', 'audioVolumeChange', 'viewableChange'].forEach(event =>
    mraid.addEventListener(event, (...args) => log.push([event, ...args].join(' ') + ' @' + mraid.getState() + ' ' +
      mraid.getCurrentPosition().width + 'x' + mraid.getCurrentPosition().height)));
</script>)";

class PageTest : public testing::Test, public VeltoBannerViewControllerDelegate {
 protected:
  PageTest() {
    trap();
    gtk_init();
    gtk::install({.applicationIdentifier = "org.example.pages",
                  .refusedToOpen = [this](const auto& address) { refused.push_back(address); },
                  .mayAddCalendarEvents = true});
    VeltoFramework::addVeltoKey("key");
    window = newWindow(400, 600, gtk_label_new("content"));
    host = present(window);
    banner = VeltoBannerViewControllerPrivate::initWithDelegate(
        std::shared_ptr<VeltoBannerViewControllerDelegate>(std::shared_ptr<void>(), this),
        VeltoBannerSize320x50, VeltoBannerPositionTop, {}, nullptr);
  }
  ~PageTest() override {
    banner->removeBanner();
    runUntil([&] { return host->view()->subviews().empty(); });
    banner.reset();
    host.reset();
    gtk::uninstall();
    gtk_window_destroy(window);
  }
  std::shared_ptr<UIViewController> presentViewController() override { return host; }

  static std::shared_ptr<VeltoAd> ad(const std::string& body, int width = 320, int height = 50) {
    NSURLResponse response{"https://ads.example/", true, 200, {}};
    response.allHeaderFields.set("x-content", "html");
    response.allHeaderFields.set("x-width", std::to_string(width));
    response.allHeaderFields.set("x-height", std::to_string(height));
    return VeltoAd::adWithHTML("<html><head></head><body>" + body + "</body></html>", VeltoBannerSize320x50,
                               VeltoTaskResponseHeaders::headersFor(response));
  }
  // Shows it and waits until its page has heard that it is ready. `before` runs in the page before the page
  // script.
  void show(const std::string& body, const std::string& before = "") {
    banner->fetchBannerSuccess(ad(logging + body));
    if (!before.empty()) web()->addUserScript({before, WKUserScriptInjectionTime::AtDocumentStart, true});
    ASSERT_TRUE(holds("typeof mraid === 'object' && mraid.getState() !== 'loading'"));
  }
  // Waits for the expression to be true in the page.
  bool holds(const std::string& expression) {
    return runUntil([&] { return value(expression) == JSON(true); });
  }
  JSON value(const std::string& expression, std::shared_ptr<WKWebView> page = nullptr) {
    std::optional<JSON> result;
    bool answered = false;
    (page ? page : web())->evaluateJavaScript(expression, [&](const auto& found, const auto&) {
      result = found;
      answered = true;
    });
    while (!answered) g_main_context_iteration(nullptr, TRUE);
    return result.value_or(JSON());
  }
  std::string text(const std::string& expression, std::shared_ptr<WKWebView> page = nullptr) {
    const JSON found = value(expression, std::move(page));
    return found.string() ? *found.string() : "(no text)";
  }
  // What was logged since the last call, one event a line.
  std::string log(std::shared_ptr<WKWebView> page = nullptr) {
    return text("log.splice(0).join('\\n')", std::move(page));
  }
  void run(const std::string& statements) { value("(() => {" + statements + "})()"); }
  void tap(CGPoint point) { click(window, point); }
  std::string state() { return banner->veltoGetMRAIDHandler()->state; }
  CGRect frame() { return {host->view()->convertPointFromView({0, 0}, *web()), web()->frame().size}; }
  std::shared_ptr<WKWebView> web() { return banner->webView(); }
  std::shared_ptr<WKWebView> secondWeb() {
    for (const auto& view : banner->view()->subviews())
      if (auto page = std::dynamic_pointer_cast<WKWebView>(view); page && page != web()) return page;
    return nullptr;
  }

  static demo::LinkTrap& trap() {
    static demo::LinkTrap made;  // before anything asks for the applications of this desktop
    return made;
  }
  std::vector<std::string> refused;
  GtkWindow* window = nullptr;
  std::shared_ptr<UIViewController> host;
  std::shared_ptr<VeltoBannerViewControllerPrivate> banner;
};

}  // namespace velto::test
