// Real pages in a real window: a banner whose ad a test writes itself, a page that keeps a log, a server for
// second parts.
#pragma once

#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"
#include "velto/ui/VeltoBannerViewControllerPrivate.h"
#include "velto/velto.h"

#include <map>

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

class SecondParts {
 public:
  SecondParts() {
    server_->Get(".*", [this](const auto& request, auto& response) {
      response.set_header("x-content", "html");
      response.set_content(pages[request.path], "text/html");
    });
    server_.start();
  }
  std::string address(const std::string& path) const { return server_.address(path); }
  std::map<std::string, std::string> pages;

 private:
  LoopbackServer server_;
};

class PageTest : public testing::Test, public VeltoBannerViewControllerDelegate {
 protected:
  PageTest();
  ~PageTest() override;
  std::shared_ptr<UIViewController> presentViewController() override { return host; }

  static std::shared_ptr<VeltoAd> ad(const std::string& body, int width = 320, int height = 50);
  // Shows it and waits until its page has heard that it is ready. `before` runs in the page before the page
  // script.
  void show(const std::string& body, const std::string& before = "");
  // Waits for the expression to be true in the page.
  bool holds(const std::string& expression) {
    return runUntil([&] { return value(expression) == JSON(true); });
  }
  JSON value(const std::string& expression, std::shared_ptr<WKWebView> page = nullptr);
  std::string text(const std::string& expression, std::shared_ptr<WKWebView> page = nullptr);
  // What was logged since the last call, one event a line.
  std::string log(std::shared_ptr<WKWebView> page = nullptr) {
    return text("log.splice(0).join('\\n')", std::move(page));
  }
  void run(const std::string& statements) { value("(() => {" + statements + "})()"); }
  void tap(CGPoint point) { click(window, point); }
  std::string state() { return banner->veltoGetMRAIDHandler()->state; }
  CGRect frame() { return {host->view()->convertPointFromView({0, 0}, *web()), web()->frame().size}; }
  std::shared_ptr<WKWebView> web() { return banner->webView(); }
  std::shared_ptr<WKWebView> secondWeb();

  static demo::LinkTrap& trap();
  std::vector<std::string> refused;
  GtkWindow* window = nullptr;
  std::shared_ptr<UIViewController> host;
  std::shared_ptr<VeltoBannerViewControllerPrivate> banner;
};

}  // namespace velto::test
