// How the commands of a creative leave the page, and that only a touched ad opens: what needs the engine and a person's hand.
// The creatives that velto-preview plays (tests/preview, examples/creatives) show the rest.
#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"

#include "../../examples/demo/LinkTrap.h"
#include "../support/AdWindow.h"
#include "../support/Delegates.h"

namespace velto::test {
namespace {

class Page : public testing::Test {
 protected:
  Page() {
    trap();
    gtk_init();
    gtk::install({.applicationIdentifier = "org.example.pages",
                  .refusedToOpen = [this](const auto& address) { refused.push_back(address); },
                  .leastTimeUnderTouch = {}});
    window = newWindow(400, 600, gtk_label_new("content"));
    host = present(window);
    delegate->host = host;
    banner =
        VeltoBannerViewController::initWithDelegate(delegate, VeltoBannerSize320x50, VeltoBannerPositionTop);
  }
  ~Page() override {
    banner.reset();
    runUntil([&] { return host->view()->subviews().empty(); });
    host.reset();
    gtk::uninstall();
    gtk_window_destroy(window);
  }

  // Shows it and waits until its page is ready. `before` runs in the page before the page script.
  void show(const std::string& body, const std::string& before = "") {
    const auto ad = VeltoAd::adWithHTML("<html><head><script src='mraid.js'></script></head><body>" + body,
                                        VeltoBannerSize320x50, nullptr);
    ad->size = CGSize{320, 50};
    banner->vc()->fetchBannerSuccess(ad);
    web()->addUserScript({before, WKUserScriptInjectionTime::AtDocumentStart, true});
    ASSERT_TRUE(holds("typeof mraid === 'object' && mraid.getState() === 'default'"));
  }
  // Waits for the expression to be true in the page.
  bool holds(const std::string& expression) {
    return runUntil([&] {
      std::optional<JSON> result;
      web()->evaluateJavaScript(expression,
                                [&](const auto& found, auto) { result = found.value_or(JSON()); });
      while (!result) g_main_context_iteration(nullptr, TRUE);
      return result == JSON(true);
    });
  }
  void run(const std::string& statements) { web()->evaluateJavaScript(statements, nullptr); }
  std::shared_ptr<WKWebView> web() { return banner->vc()->webView(); }

  static demo::LinkTrap& trap() {
    static demo::LinkTrap made;  // before anything asks for the applications of this desktop
    return made;
  }
  std::vector<std::string> refused;
  GtkWindow* window = nullptr;
  std::shared_ptr<UIViewController> host;
  std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
  std::shared_ptr<VeltoBannerViewController> banner;
};

TEST_F(Page, CommandsArriveInOrderWithExactAddressesAndCutNothingOff) {
  const std::string address = "https://shop.example/%C3%BC?a=1&b=2,3+4%20%26&q=mraid://close#";
  // Where the engine takes no messages, hidden frames carry them.
  for (const std::string before : {"window.webkit = {}", ""}) {
    refused.clear();
    show("<script>for (let i = 0; i < 20; ++i) mraid.open('" + address + "' + i);</script><p id=end></p>",
         before);
    EXPECT_TRUE(holds(before.empty() ? "!!webkit.messageHandlers" : "!webkit.messageHandlers"));
    EXPECT_TRUE(holds("document.getElementById('end') !== null"));
    ASSERT_TRUE(runUntil([&] { return refused.size() == 20; })) << refused.size();
    for (size_t i = 0; i < 20; ++i) EXPECT_EQ(refused[i], address + std::to_string(i));
    EXPECT_TRUE(holds("!document.querySelector('iframe:not([name^=omid])')"));
  }
  EXPECT_TRUE(trap().opened().empty()) << "nobody has touched the ad";
}

TEST_F(Page, OnlyATouchedAdOpens) {
  show(R"(<script>
    addEventListener('pointerdown', () => mraid.open('https://shop.example/tapped'));
    mraid.addEventListener('stateChange', () => mraid.open('https://shop.example/by-itself'));
  </script>)");
  ASSERT_TRUE(runUntil([&] { return refused.size() == 1; })) << "our own statements are nobody's touch";
  click(window, {200, 25});
  ASSERT_TRUE(runUntil([&] { return !trap().opened().empty(); }));
  EXPECT_EQ(trap().opened(), (std::vector<std::string>{"https://shop.example/tapped"}));
  run("mraid.open('file:///etc/passwd')");
  bool later = false;
  Platform::current().mainQueue().postAfter(std::chrono::milliseconds(2100), [&] { later = true; });
  ASSERT_TRUE(runUntil([&] { return later; }));
  run("mraid.open('https://shop.example/too-late')");
  ASSERT_TRUE(runUntil([&] { return refused.size() == 2; }));
  EXPECT_EQ(refused[1], "https://shop.example/too-late");
}

}  // namespace
}  // namespace velto::test
