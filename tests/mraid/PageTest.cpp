// Creatives against the page script and the whole library: what their scripts see, and in which order.
#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"
#include "velto/ui/VeltoBannerViewControllerPrivate.h"
#include "velto/velto.h"

#include "../../examples/demo/LinkTrap.h"
#include "../support/AdWindow.h"
#include "../support/LoopbackServer.h"

namespace velto::test {
namespace {

// Writes down each event with the state and size that the getters answer at that moment.
const std::string logging = R"(<script src="mraid.js"></script><script>
  window.log = [];
  ['ready', 'error', 'sizeChange', 'stateChange', 'exposureChange', 'audioVolumeChange', 'viewableChange'].forEach(event =>
    mraid.addEventListener(event, (...args) => log.push([event, ...args].join(' ') + ' @' + mraid.getState() + ' ' +
      mraid.getCurrentPosition().width + 'x' + mraid.getCurrentPosition().height)));
</script>)";

class Page : public testing::Test, public VeltoBannerViewControllerDelegate {
 protected:
  Page() {
    trap();
    gtk_init();
    gtk::install({.applicationIdentifier = "org.example.pages",
                  .refusedToOpen = [this](const auto& address) { refused.push_back(address); }});
    VeltoFramework::addVeltoKey("key");
    window = newWindow(400, 600, gtk_label_new("content"));
    host = present(window);
    banner = VeltoBannerViewControllerPrivate::initWithDelegate(
        std::shared_ptr<VeltoBannerViewControllerDelegate>(std::shared_ptr<void>(), this),
        VeltoBannerSize320x50, VeltoBannerPositionTop, {}, nullptr);
  }
  ~Page() override {
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

TEST_F(Page, TheScriptIsThereFirstAndOnce) {
  show(R"(<script>
    window.first = [typeof mraid, mraid.getState(), MRAID_ENV.version, MRAID_ENV.sdkVersion].join();
    mraid.setIsViewable(true);
    mraid.setState('resized');
    mraid.fireEvent('sizeChange', {width: 1, height: 2});
    window.early = log.length;
  </script>)");
  EXPECT_EQ(value("early"), JSON(0)) << "nothing is told before the page is ready";
  EXPECT_EQ(text("first"), std::string("object,loading,3.0,") + kVeltoSDKVersion);
  EXPECT_EQ(log(),
            "ready @default 320x50\n"
            "viewableChange true @default 320x50\n"
            "stateChange default @default 320x50\n"
            "sizeChange 320 50 @default 320x50\n"
            "exposureChange 100 [object Object]  @default 320x50");
  EXPECT_EQ(
      text("[mraid.getVersion(), mraid.getPlacementType(), mraid.isViewable(), mraid.getMaxSize().height, "
           "mraid.supports('inlineVideo'), mraid.supports('storePicture'), "
           "mraid.supports('constructor'), mraid.getCurrentAppOrientation().orientation].join()"),
      "2.0,inline,true,600,true,false,false,landscape");
  banner->viewWillDisappear(false);
  banner->viewWillDisappear(false);
  EXPECT_TRUE(holds("log.length === 2"));
  EXPECT_EQ(log(), "viewableChange false @default 320x50\nexposureChange 0   @default 320x50");
  banner->observeValueForKeyPath("outputVolume", 0.5F, nullptr);
  UIViewControllerMRAIDSDKVelto::mraidAudioVolumeChange(web(), 0.5F);
  UIViewControllerMRAIDSDKVelto::mraidAudioVolumeChange(web(), 0.5F);
  EXPECT_TRUE(holds("log.length > 0"));
  EXPECT_EQ(log(), "audioVolumeChange 50 @default 320x50");
}

TEST_F(Page, ExpandAndCloseKeepThePageAndTellOnceAllIsInPlace) {
  show("<script>window.mark = 7;</script>");
  log();
  run("mraid.addEventListener('stateChange', () => { throw 'of one listener'; });"
      "mraid.addEventListener('stateChange', state => window.heard = state);"
      "mraid.expand(); mraid.expand();");
  ASSERT_TRUE(holds("window.heard === 'expanded'"));
  EXPECT_EQ(state(), "expanded");
  EXPECT_EQ(frame(), (CGRect{{0, 0}, {400, 600}}));
  EXPECT_EQ(log(),
            "sizeChange 400 600 @expanded 400x600\n"
            "exposureChange 100 [object Object]  @expanded 400x600\n"
            "stateChange expanded @expanded 400x600");
  EXPECT_TRUE(holds("innerWidth === 400 && innerHeight === 600"));
  run("mraid.expand(); mraid.resize();");
  EXPECT_TRUE(holds("log.length === 1"));
  EXPECT_EQ(log(), "error resize() is not possible in state expanded. resize @expanded 400x600");

  tap({375, 25});  // the host's area, under which the page shows its mark
  ASSERT_TRUE(holds("heard === 'default'"));
  EXPECT_EQ(frame(), (CGRect{{40, 0}, {320, 50}}));
  EXPECT_EQ(value("mark"), JSON(7)) << "the page was not loaded again";
  EXPECT_TRUE(web()->subviews().empty()) << "no close button stays";

  // With expand properties the host has no area, and the page's own mark closes.
  run("mraid.setExpandProperties({width: 300}); mraid.expand();");
  ASSERT_TRUE(holds("heard === 'expanded' && innerWidth === 400"));
  EXPECT_TRUE(web()->subviews().empty());
  tap({375, 25});
  ASSERT_TRUE(holds("heard === 'default'"));
  run("mraid.useCustomClose(true); mraid.setExpandProperties({height: 200}); mraid.expand();");
  ASSERT_TRUE(holds("heard === 'expanded'"));
  EXPECT_EQ(value("mraid.getExpandProperties().useCustomClose"), JSON(true));
  EXPECT_EQ(value("document.documentElement.children.length"), JSON(2)) << "a mark of the creative's own";
  EXPECT_EQ(web()->subviews().size(), 1U);
  run("mraid.close()");
  ASSERT_TRUE(holds("heard === 'default'"));
}

TEST_F(Page, ResizeAndItsClose) {
  show("");
  log();
  // As wide as the screen, which the host refuses when its offset counts.
  run("mraid.setResizeProperties({width: 400, height: 250, offsetX: 0, offsetY: 0}); mraid.resize();");
  ASSERT_TRUE(holds("mraid.getState() === 'resized'"));
  EXPECT_EQ(frame(), (CGRect{{0, 350}, {400, 250}}));
  EXPECT_EQ(log(),
            "sizeChange 400 250 @resized 400x250\n"
            "exposureChange 100 [object Object]  @resized 400x250\n"
            "stateChange resized @resized 400x250");
  EXPECT_EQ(value("mraid.getResizeProperties().allowOffscreen"), JSON(true));
  run("mraid.close();");
  ASSERT_TRUE(holds("mraid.getState() === 'default'"));
  EXPECT_EQ(frame(), (CGRect{{40, 0}, {320, 50}}));
  EXPECT_TRUE(web()->subviews().empty());
}

TEST_F(Page, CommandsArriveInOrderWithExactAddressesAndCutNothingOff) {
  const std::string twenty =
      "<script>for (let i = 0; i < 20; ++i) mraid.open('https://shop.example/' + i);</script>"
      "<p id=end></p>";
  // Where the engine takes no messages, hidden frames carry them.
  for (const char* before : {"window.webkit = {}", ""}) {
    refused.clear();
    show(twenty, before);
    EXPECT_EQ(text("typeof webkit.messageHandlers"), *before ? "undefined" : "object");
    EXPECT_TRUE(holds("document.getElementById('end') !== null"));
    ASSERT_TRUE(runUntil([&] { return refused.size() == 20; })) << refused.size();
    for (size_t i = 0; i < 20; ++i) EXPECT_EQ(refused[i], "https://shop.example/" + std::to_string(i));
    EXPECT_TRUE(holds("!document.querySelector('iframe:not([name^=omid])')"));
  }
  const std::vector<std::string> addresses = {"https://shop.example/?a=1&b=2,3+4%20%26#top",
                                              "https://shop.example/%C3%BC?q=mraid://close"};
  for (const auto& address : addresses) run("mraid.open('" + address + "')");
  ASSERT_TRUE(runUntil([&] { return refused.size() == 22; }));
  EXPECT_EQ(refused[20], addresses[0]);
  EXPECT_EQ(refused[21], addresses[1]);
  EXPECT_TRUE(trap().opened().empty()) << "nobody has touched the ad";
}

TEST_F(Page, OnlyATouchedAdOpens) {
  show(R"(<script>
    addEventListener('pointerdown', () => mraid.open('https://shop.example/tapped'));
    mraid.addEventListener('stateChange', () => mraid.open('https://shop.example/by-itself'));
  </script>)");
  ASSERT_TRUE(runUntil([&] { return refused.size() == 1; })) << "our own statements are nobody's touch";
  tap({200, 25});
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

TEST_F(Page, TwoParts) {
  LoopbackServer server;
  server->Get("/second", [](const auto&, auto& response) {
    response.set_header("x-content", "html");
    response.set_content("<html><head></head><body>" + logging + "second</body></html>", "text/html");
  });
  server.start();
  const std::string address = server.address("/second");
  show("");
  log();
  run("mraid.expand('" + address + "'); mraid.expand('" + address + "');");
  ASSERT_TRUE(runUntil([&] { return secondWeb() != nullptr; }));
  const auto second = secondWeb();
  ASSERT_TRUE(runUntil([&] { return value("!!window.log && log.length > 4", second) == JSON(true); }));
  EXPECT_EQ(log(second).substr(0, 22), "ready @expanded 400x60") << "expanded before it is ready";
  EXPECT_EQ(state(), "expanded");
  EXPECT_EQ(second->frame(), (CGRect{{0, 0}, {400, 600}}));
  value("mraid.setOrientationProperties({forceOrientation: 'landscape'}); mraid.useCustomClose(true)",
        second);
  ASSERT_TRUE(runUntil([&] { return value("mraid.getMaxSize().width === 600", second) == JSON(true); }));
  EXPECT_NE(log(second).find("sizeChange 600 400 @expanded 600x400"), std::string::npos);
  EXPECT_EQ(log(), "") << "what happens to the second part is no news of the first";
  value("mraid.close()", second);
  ASSERT_TRUE(runUntil([&] { return !secondWeb(); }));
  EXPECT_EQ(state(), "default");
  EXPECT_FALSE(banner->veltoGetMRAIDHandler()->expandProperty) << "nor is what it has set";
  ASSERT_TRUE(runUntil([&] { return frame() == CGRect{{40, 0}, {320, 50}}; }));
  EXPECT_EQ(banner->view()->subviews().size(), 1U) << "one second part for two commands";
}

TEST_F(Page, ForcedOrientationTurnsTheWindowAndGoesBack) {
  show("");
  run("mraid.setOrientationProperties({forceOrientation: 'landscape'}); mraid.expand();");
  ASSERT_TRUE(holds("innerWidth === 600 && innerHeight === 400"));
  ASSERT_TRUE(holds("mraid.getCurrentPosition().width === 600"));
  EXPECT_EQ(value("mraid.getScreenSize().height"), JSON(400));
  EXPECT_NE(log().find("sizeChange 600 400 @expanded 600x400"), std::string::npos);
  run("mraid.setOrientationProperties({forceOrientation: 'portrait'});");
  ASSERT_TRUE(holds("innerWidth === 400"));
  run("mraid.setOrientationProperties({forceOrientation: 'landscape'});");
  ASSERT_TRUE(holds("innerWidth === 600"));
  run("mraid.close()");
  ASSERT_TRUE(runUntil([&] { return host->view()->bounds().size == CGSize{400, 600}; }));
}

}  // namespace
}  // namespace velto::test
