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
  void killPages() override {
    for (auto* view : platform_->webViews()) view->fail({"WKErrorDomain", 2, "The web process died."});
  }

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

}  // namespace

std::unique_ptr<PlatformUnderTest> makePlatformUnderTest() {
  return std::make_unique<HeadlessUnderTest>();
}

}  // namespace velto
