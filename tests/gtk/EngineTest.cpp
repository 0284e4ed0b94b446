// A machine on which the web engine cannot start: run in a sandbox that lets nobody make another (see CMakeLists.txt).
#include "velto/gtk/web/EngineMemory.h"
#include "velto/gtk/web/EngineProbe.h"
#include "velto/platform/ui/WKWebView.h"

#include <future>

#include "../support/Program.h"
#include "../support/WebProcesses.h"
#include "DisplayTest.h"

namespace velto::test {
namespace {

class EngineTest : public DisplayTest {};

TEST_F(EngineTest, WhatKeepsAProgramFromRunningIsInItsWords) {
  EXPECT_EQ(gtk::hindranceOf({"/bin/true"}), std::nullopt);
  EXPECT_EQ(gtk::hindranceOf({"/bin/sh", "-c", "echo none here >&2; echo more >&2; exit 1"}), "none here");
  EXPECT_NE(gtk::hindranceOf({"/bin/false"}).value_or(""), "");
  EXPECT_NE(gtk::hindranceOf({"/nonexistent/program"}).value_or("").find("/nonexistent/program"),
            std::string::npos);
}

// Of so many some begin at the same moment as others.
TEST_F(EngineTest, ProcessesThatAreStartedMeanwhileAreNotWaitedFor) {
  auto looks = std::async(std::launch::async, [] {
    for (int i = 0; i < 200; ++i) gtk::hindranceOf({"/bin/true"});
  });
  std::vector<std::unique_ptr<Process>> others;
  const auto over = [&](int seconds) {
    return looks.wait_for(std::chrono::seconds(seconds)) == std::future_status::ready;
  };
  while (others.size() < 200 && !over(0))
    others.push_back(std::make_unique<Process>(std::vector<std::string>{"/bin/sleep", "1000"}));
  EXPECT_TRUE(over(60));
}

TEST_F(EngineTest, TheSandboxIsOffWithAnyValueButZero) {
  constexpr char variable[] = "WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS";
  gtk::EngineProbe::shared().hindrance();  // its thread reads the environment
  const bool isOff = gtk::isEngineWithoutSandbox();
  for (const char* value : {"", "1", "0"}) {
    g_setenv(variable, value, TRUE);
    EXPECT_EQ(gtk::isEngineWithoutSandbox(), isOff || *value != '0') << value;
  }
  g_unsetenv(variable);
}

TEST_F(EngineTest, WhatHangsIsNotWaitedForAndIsForgivenWhenItEnds) {
  std::promise<void> end;
  bool isTold = false;
  gtk::EngineProbe probe([&] { return end.get_future().wait(), std::nullopt; }, std::chrono::seconds(0));
  const auto call = probe.whenOver([&] { isTold = true; });
  EXPECT_TRUE(probe.hindrance());
  end.set_value();
  EXPECT_TRUE(runUntil([&] { return isTold; }));
  EXPECT_FALSE(probe.hindrance());
}

TEST_F(EngineTest, ThatItStartedIsKnownToLaterRunsWhereNothingHasChanged) {
  const gtk::EngineMemory here({"/bin/sh"});
  EXPECT_FALSE(here.recall());
  here.keep();
  EXPECT_TRUE(gtk::EngineMemory({"/bin/sh"}).recall());
  EXPECT_FALSE(gtk::EngineMemory({"/bin/cat"}).recall());
  here.forget();
  EXPECT_FALSE(here.recall()) << "that run has not come to a good end";
}

TEST_F(EngineTest, WithoutOneAdsFailAndTheApplicationGoesOn) {
  // Before it can be known.
  const auto prepared = Platform::current().views().prepareWebContent(nullptr, WebContentUse::AtOnce);
  auto* window = newWindow(400, 300);
  const auto banners = std::make_shared<RecordingDelegate>();
  const auto screens = std::make_shared<RecordingInterstitialDelegate>();
  banners->host = screens->host = present(window);
  const auto banner =
      VeltoBannerViewController::initWithDelegate(banners, VeltoBannerSize320x50, VeltoBannerPositionBottom);
  const auto interstitial = VeltoInterstitialViewController::initWithDelegate(screens);
  const auto ad = VeltoAd::adWithHTML("<p>an ad", {}, nullptr, std::nullopt);
  banner->vc()->_processAd(ad, std::nullopt, banners, true);
  interstitial->vc()->_processAd(ad, std::nullopt, screens, true);
  for (const auto& told : {banners->lastError, screens->lastError}) {
    ASSERT_TRUE(told);
    EXPECT_EQ(told->reason, VeltoAdEndReason::EngineUnavailable);
    EXPECT_NE(told->error->localizedDescription, "");
  }
  // As a page that comes in by another way.
  banner->vc()->fetchBannerSuccess(ad);
  EXPECT_TRUE(runUntil([&] { return banners->heard.size() == 2; }));
  EXPECT_EQ(banners->lastError->reason, VeltoAdEndReason::EngineUnavailable);
  WKWebView::initWithFrame({}, {})->evaluateJavaScript(
      "1", [](const auto&, const auto&) { ADD_FAILURE() << "called for a view that is gone"; });
  runFrames(GTK_WIDGET(window));
  EXPECT_TRUE(webProcesses().empty());
  gtk_window_destroy(window);
}

}  // namespace
}  // namespace velto::test
