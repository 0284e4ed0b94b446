// The web view and its data store: loads, statements, navigations, clearing.
#include "velto/platform/WKWebsiteDataStore.h"
#include "velto/platform/ui/WKWebView.h"

#include <limits>

#include "PlatformUnderTest.h"

namespace velto {
namespace {

using Policy = WKNavigationActionPolicy;

// Notes what it is told; cancels or allows every navigation to another scheme than about.
struct Delegate : WKNavigationDelegate, UIGestureRecognizerDelegate {
  std::vector<std::string> navigations;
  std::vector<WKNavigationType> types;
  int finished = 0;
  int failed = 0;
  Policy policy = Policy::Cancel;

  void webView(WKWebView&, const WKNavigationAction& action, const DecisionHandler& decide) override {
    const std::string url = action.requestURL ? action.requestURL->absoluteString() : "";
    if (url.empty() || url.starts_with("about:")) return decide(Policy::Allow);
    navigations.push_back(url);
    types.push_back(action.navigationType);
    decide(policy);
  }
  void webView(WKWebView&, const WKNavigation&) override { ++finished; }
  void webView(WKWebView&, const WKNavigation&, const NSError&) override { ++failed; }
  bool gestureRecognizer(UITapGestureRecognizer&) override { return true; }
};

class WebViewContract : public WindowContract {
 protected:
  void SetUp() override {
    WindowContract::SetUp();
    view_ = addWebView({});
  }
  void TearDown() override {
    view_.reset();
    WindowContract::TearDown();
  }
  std::shared_ptr<WKWebView> addWebView(WKWebViewConfiguration configuration) {
    auto view = WKWebView::initWithFrame({{20, 40}, {320, 250}}, std::move(configuration));
    view->setNavigationDelegate(delegate_);
    window_->view()->addSubview(view);
    return view;
  }
  bool load(WKWebView& view, const std::string& html, const std::optional<NSURL>& base = std::nullopt) {
    const int before = delegate_->finished;
    view.loadHTMLString(html, base);
    EXPECT_EQ(delegate_->finished, before) << "finished inside the call";
    return runUntil([&] { return delegate_->finished > before; });
  }
  // The value of a statement, or the text "error".
  JSON value(WKWebView& view, const std::string& script) {
    std::optional<JSON> result;
    view.evaluateJavaScript(
        script, [&](auto json, auto error) { result = error ? JSON("error") : json.value_or(JSON()); });
    EXPECT_FALSE(result) << "completed inside the call";
    EXPECT_TRUE(runUntil([&] { return result.has_value(); })) << script;
    return result.value_or(JSON("nothing"));
  }

  std::shared_ptr<Delegate> delegate_ = std::make_shared<Delegate>();
  std::shared_ptr<WKWebView> view_;
};

TEST_F(WebViewContract, EachLoadFinishesOnceAndANewViewFollowsTheOld) {
  EXPECT_FALSE(platform().views().webContentFailure());
  view_->loadHTMLString("<p>overtaken", std::nullopt);
  EXPECT_TRUE(load(*view_, "<p>one"));
  runFor(std::chrono::milliseconds(50));
  EXPECT_EQ(delegate_->finished, 1);
  EXPECT_TRUE(load(*view_, "<p>two", NSURL::URLWithString("https://ads.velto.example/")));
  EXPECT_TRUE(load(*view_, ""));
  WKWebViewConfiguration related;
  related.relatedWebView = view_;
  related.preparedContent = platform().views().prepareWebContent(view_.get(), WebContentUse::AtOnce);
  auto next = addWebView(related);
  view_->removeFromSuperview();
  view_.reset();
  EXPECT_TRUE(load(*next, "<p>three"));
  runFor(std::chrono::milliseconds(50));
  EXPECT_EQ(delegate_->finished, 4);
  EXPECT_EQ(delegate_->failed, 0);
}

TEST_F(WebViewContract, StatementsGiveTheirValuesInOrder) {
  ASSERT_TRUE(load(*view_, "<p>page"));
  const JSON nested = JSON::Array{1, JSON::Array{"two", 2.5, true}, JSON()};
  EXPECT_EQ(value(*view_, "[1,[\"two\",2.5,true],null]"), nested);
  EXPECT_EQ(value(*view_, "\"π \\ud800\""), JSON("π \ufffd"))
      << "half of a pair of surrogates is no character";
  for (const char* wrong : {"nonsense(", "noSuchFunction()"}) EXPECT_EQ(value(*view_, wrong), JSON("error"));
  std::string order;
  for (int i = 0; i < 10; ++i)
    view_->evaluateJavaScript(std::to_string(i), [&](auto json, auto) {
      EXPECT_TRUE(queue().isCurrent());
      order += std::to_string(static_cast<int>(json.value().number().value()));
    });
  view_->evaluateJavaScript("10", nullptr);
  EXPECT_TRUE(runUntil([&] { return order.size() == 10; }));
  EXPECT_EQ(order, "0123456789");
}

TEST_F(WebViewContract, StatementsThatNobodyAsksAfterRunInTheirPlace) {
  if (!subject().runsPages()) GTEST_SKIP() << "this platform runs no pages";
  const std::string noEval =
      "<meta http-equiv=Content-Security-Policy content=\"script-src 'unsafe-inline'\">";
  JSON early;  // the first page answers what was asked before there was one
  view_->evaluateJavaScript("typeof String", [&](auto json, auto) { early = json.value_or(JSON()); });
  ASSERT_TRUE(load(*view_, "first"));
  EXPECT_TRUE(runUntil([&] { return early != JSON(); }));
  for (const auto& policy : {std::string(), noEval}) {
    *delegate_ = {};
    ASSERT_TRUE(load(*view_, policy + "<script>said = ''</script>"));
    for (const char* statement : {"said += 'a'", "nonsense(", "throw said += 'b'"})
      view_->evaluateJavaScript(statement, nullptr);
    EXPECT_EQ(value(*view_, "said += 'c'"), JSON("abc")) << policy;
    // What comes after a statement that takes eval() away still runs, and needs nobody to wait for it.
    view_->evaluateJavaScript("document.head.innerHTML = `" + noEval + "`", nullptr);
    view_->evaluateJavaScript("said += 'd'", nullptr);
    view_->evaluateJavaScript("location = 'velto://' + said", nullptr);
    EXPECT_TRUE(runUntil([&] { return !delegate_->navigations.empty(); }));
    EXPECT_EQ(delegate_->navigations, std::vector<std::string>{"velto://abcd"});
    // Those of later turns, too, whenever it becomes known that there is no eval().
    ASSERT_TRUE(load(*view_, policy + "<script>said = ''</script>"));
    std::string answers;
    for (int turn = 0; turn < 9; ++turn)
      queue().post([this, turn, &answers] {
        view_->evaluateJavaScript("said += " + std::to_string(turn),
                                  [&answers](auto json, auto) { answers = *json.value().string(); });
      });
    EXPECT_TRUE(runUntil([&] { return answers == "012345678"; })) << answers;
  }
}

TEST_F(WebViewContract, APageStandsStillAsOftenAsItIsTold) {
  if (!subject().runsPages()) GTEST_SKIP() << "this platform runs no pages";
  ASSERT_TRUE(load(*view_, "<p style='height:2000px'>page"));
  for (const bool scrolls : {true, false, true, false}) {
    view_->setScrollView({.scrollEnabled = scrolls});
    EXPECT_EQ(value(*view_, "getComputedStyle(document.documentElement).overflowY"),
              JSON(scrolls ? "visible" : "hidden"));
  }
}

TEST_F(WebViewContract, AViewThatIsGoneCallsNobody) {
  ASSERT_TRUE(load(*view_, "<p>page"));
  view_->evaluateJavaScript("1", [](auto, auto) { ADD_FAILURE() << "called for a view that is gone"; });
  view_->loadHTMLString("<p>never finishes", std::nullopt);
  view_->removeFromSuperview();
  view_.reset();
  EXPECT_TRUE(load(*addWebView({}), "<p>next"));
  runFor(std::chrono::milliseconds(50));
  EXPECT_EQ(delegate_->finished, 2);
}

TEST_F(WebViewContract, AnEngineThatDiesIsAFailedNavigation) {
  ASSERT_TRUE(load(*view_, "<p>page"));
  subject().killPages();
  EXPECT_TRUE(runUntil([&] { return delegate_->failed == 1; }));
  EXPECT_TRUE(load(*view_, "<p>again"));
  EXPECT_EQ(delegate_->failed, 1);
}

TEST_F(WebViewContract, CommandsOfThePageArriveAndLeaveItAlone) {
  if (!subject().runsPages()) GTEST_SKIP() << "this platform runs no pages";
  for (const auto policy : {Policy::Cancel, Policy::Allow}) {
    *delegate_ = {};
    delegate_->policy = policy;
    ASSERT_TRUE(
        load(*view_,
             "<body id=mine><a id=l href='velto://third'></a><iframe src='velto://first'></iframe><script>"
             "onload = () => { let f = document.createElement('iframe'); f.src = 'velto://second';"
             "document.body.appendChild(f); document.getElementById('l').click(); }</script>"));
    EXPECT_TRUE(runUntil([&] { return delegate_->navigations.size() == 3; }));
    EXPECT_EQ(delegate_->navigations,
              (std::vector<std::string>{"velto://first", "velto://second", "velto://third"}));
    EXPECT_EQ(delegate_->types, std::vector(3, WKNavigationType::Other)) << "no person clicked";
    EXPECT_EQ(value(*view_, "document.body.id"), JSON("mine"));
    EXPECT_TRUE(delegate_->finished == 1 && delegate_->failed == 0);
  }
}

TEST_F(WebViewContract, APageThatWorksIsHeardOfAndOneOutOfSightIsToldSo) {
  if (!subject().runsPages()) GTEST_SKIP() << "this platform runs no pages";
  int heard = 0;
  const auto wait = [&](double seconds) {
    return view_->webPeer().afterUse(seconds, [&] { heard += queue().isCurrent() ? 1 : 100; });
  };
  const auto spin = [&] { value(*view_, "{ const end = Date.now() + 50; while (Date.now() < end); }"); };
  Handle work = wait(1000);
  ASSERT_TRUE(load(*view_, "<p>page"));
  EXPECT_TRUE(runUntil([&] { return heard == 1; })) << "it has got a process";
  const auto before = view_->webPeer().use();
  work = wait(0.05);
  EXPECT_TRUE(runUntil([&] {
    spin();
    return heard == 2;
  }));
  const auto after = view_->webPeer().use();
  EXPECT_EQ(after.process, before.process);
  EXPECT_GE(after.processorSeconds.value(), before.processorSeconds.value() + 0.05);
  spin();
  spin();
  EXPECT_EQ(heard, 2) << "once";
  work = wait(0.01);
  work.cancel();
  spin();
  EXPECT_EQ(heard, 2);

  for (const bool inSight : {false, true}) {
    view_->webPeer().setInSight(inSight);
    const JSON state = inSight ? "visible" : "hidden";
    EXPECT_TRUE(runUntil([&] { return value(*view_, "document.visibilityState") == state; }));
    EXPECT_NE(view_->webPeer().use().hidden, inSight);
  }
}

TEST_F(WebViewContract, ATapOnALinkIsALinkActivation) {
  if (!subject().runsPages()) GTEST_SKIP() << "this platform runs no pages";
  int taps = 0;
  auto recognizer = std::make_shared<UITapGestureRecognizer>([&] { ++taps; });
  recognizer->setDelegate(delegate_);
  window_->view()->addGestureRecognizer(recognizer);
  for (const std::string target : {"_self", "_blank"}) {
    *delegate_ = {};
    ASSERT_TRUE(load(*view_, "<a href='https://shop.example/' target=" + target +
                                 " style='position:fixed;inset:0'>shop</a>"));
    runUntilShown();
    taps = 0;
    subject().tap({180, 165});
    EXPECT_TRUE(runUntil([&] { return taps == 1 && delegate_->navigations.size() == 1; })) << target;
    EXPECT_TRUE(view_->webPeer().use().touched);
    EXPECT_EQ(delegate_->navigations, std::vector<std::string>{"https://shop.example/"});
    EXPECT_EQ(delegate_->types, std::vector{WKNavigationType::LinkActivated});
  }
}

TEST_F(WebViewContract, ClearingTakesCookiesAndDataAway) {
  auto& store = platform().websiteDataStore();
  const auto base = NSURL::URLWithString(subject().server() + "/");
  const auto kept = [&] { return value(*view_, "document.cookie + localStorage.length"); };
  if (subject().runsPages()) {
    const char* keep = "<script>document.cookie = 'a=1;max-age=99'; localStorage.setItem('b', '2')</script>";
    ASSERT_TRUE(load(*view_, keep, base));
    // A server is asked by the process that keeps all that, after what the page before has told it.
    ASSERT_TRUE(load(*view_, "<script src='/'></script>", base));
    EXPECT_EQ(kept(), JSON("a=11")) << "without clearing it stays";
  }
  const auto types = store.allWebsiteDataTypes();
  EXPECT_FALSE(types.empty());
  bool cleared = false;
  store.fetchDataRecordsOfTypes(types, [&](auto records) {
    store.removeDataOfTypes(types, records, [&] { cleared = queue().isCurrent(); });
    EXPECT_FALSE(cleared);
  });
  EXPECT_FALSE(cleared);
  EXPECT_TRUE(runUntil([&] { return cleared; }));
  store.removeCookiesSinceDate(-std::numeric_limits<double>::infinity());
  ASSERT_TRUE(load(*view_, "<p>", base));
  if (subject().runsPages()) {
    EXPECT_EQ(kept(), JSON("0"));
  }
}

}  // namespace
}  // namespace velto
