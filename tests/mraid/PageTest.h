// Real pages in a real window: a banner whose ad a test writes itself, a page that keeps a log, a server for
// second parts.
#pragma once

#include "velto/gtk/VeltoGtk.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"
#include "velto/ui/VeltoBannerViewControllerPrivate.h"
#include "velto/velto.h"

#include <gtest/gtest.h>
#include <gtk/gtk.h>
#include <httplib.h>

#include <map>
#include <thread>

#include "../../examples/demo/LinkTrap.h"

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
    server_.Get(".*", [this](const auto& request, auto& response) {
      response.set_header("x-content", "html");
      response.set_content(pages[request.path], "text/html");
    });
    server_.set_keep_alive_max_count(1);
    port_ = server_.bind_to_any_port("127.0.0.1");
    thread_ = std::thread([this] { server_.listen_after_bind(); });
    while (!server_.is_running()) std::this_thread::yield();
  }
  ~SecondParts() {
    server_.stop();
    thread_.join();
  }
  std::string address(const std::string& path) const {
    return "http://127.0.0.1:" + std::to_string(port_) + path;
  }
  std::map<std::string, std::string> pages;

 private:
  httplib::Server server_;
  int port_ = 0;
  std::thread thread_;
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
  static bool runUntil(const std::function<bool()>& condition);
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
  void tap(CGPoint point);
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
