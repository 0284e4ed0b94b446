// The headless platform under the contract, and what only it promises.
#include "velto/headless/VeltoHeadless.h"

#include <stdexcept>

#include "PlatformUnderTest.h"
#include "TestServer.h"

namespace velto {
namespace {

class HeadlessUnderTest : public PlatformUnderTest {
 public:
  void install() override { setUp(headless::Platform::install()); }
  void relaunch() override { setUp(headless::Platform::install(platform_->defaults())); }
  void uninstall() override {
    window_.reset();
    platform_.reset();
    headless::Platform::uninstall();
  }
  bool runUntil(const std::function<bool()>& condition) override {
    // As an engine that runs statements which are literals, and refuses the others.
    for (auto* view : platform_->webViews())
      view->answerScripts([](const auto& script) { return readJSONOfPage(script); });
    return platform_->mainQueue().runUntil(condition, std::chrono::seconds(10));
  }
  std::shared_ptr<UIViewController> showWindow() override {
    window_ = std::make_unique<headless::HostWindow>(CGSize{400, 700});
    return window_->controller();
  }
  void tap(CGPoint point) override { window_->tap(point); }
  std::string server() override { return "http://server.example:8080"; }
  std::string refusingServer() override { return "http://refusing.example"; }
  bool runsPages() const override { return false; }
  void killPages() override { platform_->views().runShortOfMemory(); }

 private:
  void setUp(std::shared_ptr<headless::Platform> platform) {
    platform_ = std::move(platform);
    platform_->setPagesFinishByThemselves(true);
    auto& session = platform_->urlSession();
    session.respond(refusingServer(), headless::Answer::failure({"NSURLErrorDomain", -1004, "refused"}));
    session.respond(
        [](const auto& request) { return request.url.path() != "/never"; },
        [](const NSURLRequest& request) {
          const auto answer = serverAnswer(
              request.httpMethod, request.url.path(),
              [&](const char* name) { return request.allHTTPHeaderFields.value(name).value_or(""); },
              request.httpBody.value_or(""));
          if (answer.cutShort) return headless::Answer::failure({"NSURLErrorDomain", -1005, "cut"});
          return headless::Answer{answer.status, {answer.headers.begin(), answer.headers.end()}, answer.body};
        });
  }

  std::shared_ptr<headless::Platform> platform_;
  std::unique_ptr<headless::HostWindow> window_;
};

TEST(Headless, ACompletionThatTouchesAViewWithoutHoppingIsCaught) {
  auto platform = headless::Platform::install();
  auto view = UIView::make();
  const NSURLRequest request{*NSURL::URLWithString("https://a.example/"), "GET", {}, {}};
  platform->urlSession().dataTask(request, [view](auto, auto, auto) { view->setAlpha(0); });
  platform->runUntilIdle();
  EXPECT_EQ(platform->urlSession().pending().size(), 1u);
  platform->urlSession().pending()[0]->answer({.delay = std::chrono::seconds(1)});
  platform->runUntilIdle();
  EXPECT_THROW(platform->advance(std::chrono::seconds(1)), std::logic_error);
  EXPECT_THROW(platform->urlSession().tasks()[0]->answer({}), std::logic_error) << "answered before";

  platform->urlSession().enqueue({});
  platform->urlSession().dataTask(request, [last = std::exchange(view, nullptr)](auto, auto, auto) {});
  EXPECT_THROW(platform->runUntilIdle(), std::logic_error)
      << "the last pointer went on the transport's thread";
}

TEST(Headless, TimeThatPassesWhileNothingRunsMakesRepeatingTasksLateOnce) {
  using namespace std::chrono_literals;
  headless::VirtualQueue queue;
  int came = 0;
  auto timer = queue.every(1s, [&] { ++came; });
  EXPECT_EQ(queue.timers(), 1U);
  const double wall = queue.secondsSince1970();
  queue.suspend(1h);
  queue.runUntilIdle();
  EXPECT_EQ(queue.monotonicSeconds(), 0);
  queue.stall(1h);
  EXPECT_EQ(came, 0);
  queue.runUntilIdle();
  EXPECT_EQ(came, 1);
  EXPECT_EQ(queue.monotonicSeconds(), 3600);
  EXPECT_EQ(queue.secondsSince1970(), wall + 7200);
  timer.cancel();
  EXPECT_EQ(queue.timers(), 0U);
}

TEST(Headless, AStoreFailsAsAFileDoes) {
  headless::MemoryDefaults store;
  store.setObject("read", 1.0);
  store.setObject("unread", 2.0);
  store.relaunched();
  EXPECT_EQ(store.objectForKey("read"), DefaultsValue(1.0));
  store.failReads(true);
  EXPECT_EQ(store.objectForKey("read"), DefaultsValue(1.0)) << "as it was last known";
  EXPECT_FALSE(store.objectForKey("unread"));
  store.failReads(false);
  store.breakFile();
  EXPECT_EQ(store.objectForKey("read"), DefaultsValue(1.0));
  EXPECT_FALSE(store.objectForKey("unread"));
  store.failWritesAfter(1);
  store.setEntry("entries", "a", "b");
  EXPECT_THROW(store.synchronize(), std::runtime_error);
  EXPECT_THROW(store.setObject("read", 3.0), std::runtime_error);
  EXPECT_THROW(store.removeObjectForKey("read"), std::runtime_error);
  EXPECT_EQ(store.objectForKey("read"), DefaultsValue(1.0));
}

// Counts failures, and asks for an address to be opened.
struct Opener : WKNavigationDelegate {
  void webView(WKWebView&, const WKNavigationAction& action, const DecisionHandler& decide) override {
    Platform::current().application().openURL(*action.requestURL, {}, nullptr);
    decide(WKNavigationActionPolicy::Cancel);
  }
  void webView(WKWebView&, const WKNavigation&) override {}
  void webView(WKWebView&, const WKNavigation&, const NSError& error) override {
    causes.push_back(error.cause);
  }
  std::vector<NSErrorCause> causes;
};

TEST(Headless, PagesDieWithTheirProcessAndOpenNothingUntouched) {
  auto platform = headless::Platform::install();
  headless::HostWindow window;
  const auto delegate = std::make_shared<Opener>();
  const auto made = [&](std::weak_ptr<WKWebView> related) {
    WKWebViewConfiguration configuration;
    configuration.relatedWebView = std::move(related);
    auto view = WKWebView::initWithFrame({{0, 0}, {100, 100}}, std::move(configuration));
    view->setNavigationDelegate(delegate);
    window.view().addSubview(view);
    return view;
  };
  const auto alone = made({}), first = made({}), second = made(first);
  auto& page = headless::RecordingWebView::of(*second);
  platform->views().endProcess(page);
  EXPECT_EQ(delegate->causes, (std::vector{NSErrorCause::ProcessCrashed, NSErrorCause::ProcessCrashed}));
  EXPECT_FALSE(page.hasProcess());
  second->loadHTMLString("", std::nullopt);
  EXPECT_TRUE(page.hasProcess());
  platform->views().runShortOfMemory();
  EXPECT_EQ(delegate->causes.size(), 5U);
  EXPECT_EQ(delegate->causes.back(), NSErrorCause::ProcessOutOfMemory);

  auto& application = platform->application();
  application.setPagesNeedTouch(true);
  page.navigate("https://a.example/");
  EXPECT_EQ(application.refused.size(), 1U);
  window.tap({10, 10});
  page.navigate("https://b.example/");
  EXPECT_EQ(application.opened.size(), 1U);
  platform->advance(std::chrono::seconds(3));
  page.navigate("https://c.example/");
  EXPECT_EQ(application.refused.size(), 2U);
  Platform::current().application().openURL(*NSURL::URLWithString("https://d.example/"), {}, nullptr);
  EXPECT_EQ(application.opened.size(), 2U) << "the application itself may";
}

}  // namespace

std::unique_ptr<PlatformUnderTest> makePlatformUnderTest() {
  return std::make_unique<HeadlessUnderTest>();
}

}  // namespace velto
