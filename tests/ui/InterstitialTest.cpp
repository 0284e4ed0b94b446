// An interstitial's life: load, ready, show, countdown, press, every way to close, and what goes wrong.
#include "velto/ads/VeltoAdManager.h"
#include "velto/platform/ui/UIVisualEffectView.h"

#include "UITest.h"

namespace velto {
namespace {

using namespace std::chrono_literals;
using headless::Answer;
using test::Heard;

class InterstitialTest : public test::UITest {
 protected:
  static Answer fullScreen(const std::string& milliseconds = "") {
    auto answer = markup("<p>full</p>", 0, 0);
    return milliseconds.empty() ? answer : with(std::move(answer), {{"x-fst", milliseconds}});
  }
  std::shared_ptr<VeltoInterstitialViewController> loaded(const Answer& answer) {
    auto made = interstitial();
    load(*made, answer);
    return made;
  }
  // Until the screen has come, and until it has gone.
  void show(VeltoInterstitialViewController& interstitial) {
    interstitial.show();
    platform->advance(1s);
  }
  void close(VeltoInterstitialViewController& interstitial) {
    interstitial.vc()->_tapCloseButton();
    platform->advance(1s);
  }
};

TEST_F(InterstitialTest, ReadyFirstAndTheMarkupOnlyAtShow) {
  const auto i = interstitial();
  i->show();
  platform->urlSession().enqueue("/sdk/", with(fullScreen("250"), {{"x-ttl", "9"}}));
  i->load();
  EXPECT_EQ(platform->views().contentHeld(), 1) << "the web process starts while the request is on its way";
  platform->runUntilIdle();
  EXPECT_EQ(full->heard, Heard{"finish"}) << "to show what is not ready does nothing";
  EXPECT_TRUE(page().usedPreparedContent());
  EXPECT_TRUE(page().loads().empty());
  EXPECT_EQ(VeltoAdManager::shared()->ads().size(), 1U);

  i->setAnimation(VeltoAnimationFromLeft);
  i->show();
  platform->advance(450ms);
  EXPECT_EQ(page().html(), "<p>full</p>");
  EXPECT_TRUE(VeltoAdManager::shared()->ads().empty());
  const auto& own = *i->vc()->view();
  const double underway = headless::RecordingViewPeer::of(own).frame().minX();
  EXPECT_LT(underway, 0) << "it slides in from the left";
  EXPECT_GT(underway, -390);
  i->show();
  platform->advance(500ms);
  EXPECT_EQ(full->heard, (Heard{"finish", "appear"})) << "to show it again does nothing";
  EXPECT_EQ(page().loads().size(), 1U);
  EXPECT_EQ(frameInWindow(*i->vc()->webView()), (CGRect{{0, 47}, {390, 763}}));

  platform->advance(300ms);
  EXPECT_TRUE(i->vc()->hasCloseTimer()) << "0.05 s are left";
  platform->advance(100ms);
  EXPECT_FALSE(i->vc()->hasCloseTimer());
  EXPECT_DOUBLE_EQ(headless::RecordingViewPeer::of(*i->vc()->webView()).alpha(), 1)
      << "the page has faded in";

  EXPECT_EQ(window->tapLink(page(), "https://shop.example/"), WKNavigationActionPolicy::Cancel);
  const auto button = i->vc()->veltoCloseButton();
  for (int presses = 0; presses < 2; ++presses) button->sendTouchUpInside();
  EXPECT_FALSE(i->isReady());
  EXPECT_EQ(full->heard.back(), "close");
  platform->advance(1s);
  EXPECT_EQ(full->heard, (Heard{"finish", "appear", "press", "close", "dismissed"}));
  EXPECT_TRUE(window->view().subviews().empty());
  EXPECT_EQ(full->lastController, i->vc().get());
}

TEST_F(InterstitialTest, TheCountdownHoldsTheCloseButtonBack) {
  const auto i = loaded(fullScreen("2500"));
  i->show();
  platform->advance(1100ms);
  const auto button = i->vc()->veltoCloseButton();
  EXPECT_FALSE(button->isEnabled());
  EXPECT_EQ(button->title(), "2");
  EXPECT_TRUE(window->pressEscape());
  window->tap({360, 80});
  EXPECT_EQ(full->heard, (Heard{"finish", "appear"}))
      << "neither a key nor a finger closes it yet, nor is that a press";
  platform->advance(1600ms);
  EXPECT_EQ(button->title(), "X") << "whole seconds, truncated";
  EXPECT_TRUE(window->pressEscape());
  platform->advance(1s);
  EXPECT_EQ(full->heard, (Heard{"finish", "appear", "close", "dismissed"}));
  EXPECT_FALSE(window->pressEscape());
}

TEST_F(InterstitialTest, EveryWayToCloseAndAgainFromTheStart) {
  const auto i = interstitial();
  const std::vector<std::function<void()>> ways{[&] { i->vc()->veltoCloseButton()->sendTouchUpInside(); },
                                                [&] { page().navigate("velto://failLoad"); },
                                                [&] { i->vc()->shownAd()->veltoMRAIDCloseInterstitial(); },
                                                [&] { i->vc()->shownAd()->mediationBannerDidClose(); },
                                                [&] { i->vc()->shownAd()->veltoMRAIDCloseExpand(); }};
  full->onCall = [&] {
    EXPECT_EQ(page().isMuted(), full->heard.back() == "close" || full->heard.back() == "dismissed")
        << "and not only when it has gone";
  };
  for (const auto& way : ways) {
    full->heard.clear();
    load(*i, fullScreen());
    show(*i);
    EXPECT_EQ(closeButtons(window->view()), 1U);
    EXPECT_TRUE(i->vc()->veltoCloseButton()->isEnabled()) << "an ad without timer counts nothing down";
    way();
    window->tap({100, 400});
    platform->advance(1s);
    EXPECT_EQ(full->heard, (Heard{"finish", "appear", "close", "dismissed"}))
        << "nor pressed when it has closed";
    EXPECT_TRUE(platform->webViews().empty());
  }
  full->heard.clear();
  load(*i, fullScreen());
  i->vc()->dismissInterstitialViewController(true);
  platform->advance(1s);
  EXPECT_EQ(full->heard, Heard{"finish"}) << "never presented, so neither closed nor dismissed";
  EXPECT_TRUE(platform->webViews().empty());
}

TEST_F(InterstitialTest, WhatCannotBeShownFailsAndMayBeShownLater) {
  const auto i = interstitial();
  load(*i, status(204));
  EXPECT_EQ(full->heard, Heard{"fail 0"});
  EXPECT_EQ(platform->views().contentHeld(), 0);
  full->heard.clear();

  // No view controller to present it; the delegate is asked again at each show.
  const auto lost = std::make_shared<test::RecordingInterstitialDelegate>();
  const auto homeless = VeltoInterstitialViewController::initWithDelegate(lost);
  load(*homeless, fullScreen());
  show(*homeless);
  lost->host = window->controller();
  show(*homeless);
  EXPECT_EQ(lost->heard, (Heard{"finish", "fail 2", "appear"}));

  // One at a time.
  const auto why = [&](const std::shared_ptr<UIViewController>& over) {
    const auto refused = i->show(over);
    return refused ? refused->error->localizedDescription : "";
  };
  EXPECT_EQ(why(window->controller()), "no interstitial is ready");
  load(*i, fullScreen());
  EXPECT_EQ(why(window->controller()), "its window shows another screen");
  EXPECT_EQ(why(nullptr), "its window is not on the screen");
  const headless::HostWindow other;
  EXPECT_EQ(i->state(), VeltoInterstitialStateReady);
  EXPECT_EQ(why(other.controller()), "");
  EXPECT_EQ(why(other.controller()), "the interstitial is on the screen already");
  platform->advance(1s);
  EXPECT_EQ(i->state(), VeltoInterstitialStatePresented);
  EXPECT_EQ(other.controller()->presentedViewController(), i->vc());
  close(*i);
  EXPECT_EQ(i->state(), VeltoInterstitialStateEmpty);
  EXPECT_EQ(full->heard, (Heard{"finish", "appear", "close", "dismissed"}));
  load(*i, fullScreen());
  i->vc()->ad()->html.reset();
  EXPECT_EQ(why(other.controller()), "the ad is empty");
  full->heard.clear();
  load(*i, fullScreen());
  show(*i);
  close(*homeless);
  window->hide();
  show(*i);
  EXPECT_EQ(full->heard, (Heard{"finish", "fail 2", "fail 2"})) << "no window to show it in";
  window->show();
  i->show();
  platform->advance(300ms);
  window->hide();
  platform->advance(1s);
  EXPECT_EQ(full->heard, (Heard{"finish", "fail 2", "fail 2", "fail 2"}))
      << "the window went while it was coming";
  EXPECT_EQ(i->vc()->presentingViewController(), window->controller().get()) << "it stays presented";

  window->show();
  platform->advance(1s);
  EXPECT_DOUBLE_EQ(headless::RecordingViewPeer::of(*i->vc()->webView()).alpha(), 1)
      << "and is seen when it is back";
  window->setSight({.painted = false});
  platform->advance(3s);
  EXPECT_FALSE(page().isInSight()) << "held back as any other";

  page().fail(NSError{"WebKitNetworkError", 399, "crashed"});
  EXPECT_EQ(full->heard.back(), "fail 1");
  EXPECT_EQ(full->lastError->error->code, 399);
  EXPECT_NE(i->vc()->presentingViewController(), nullptr) << "and its screen stays as well";
}

TEST_F(InterstitialTest, ANewAdReplacesOneThatWaitsAndWaitsForOneThatIsShown) {
  const auto i = loaded(fullScreen());
  load(*i, markup("<p>second</p>", 0, 0));
  EXPECT_EQ(platform->webViews().size(), 1U);
  EXPECT_EQ(closeButtons(*i->vc()->view()), 1U);
  show(*i);
  load(*i, markup("<p>third</p>", 0, 0));
  EXPECT_EQ(page().html(), "<p>second</p>");
  close(*i);
  EXPECT_EQ(full->heard, (Heard{"finish", "finish", "appear", "close", "dismissed", "finish"}));
  show(*i);
  EXPECT_EQ(page().html(), "<p>third</p>");
}

TEST_F(InterstitialTest, AnotherNetworksAdIsShownByItsAdapter) {
  const auto i = interstitial();
  const auto adapter = test::FakeAdapter::make(VeltoAdTypeInterstitial);
  const auto ad = VeltoAd::adWithMediation(adapter, VeltoBannerSizeInterstitial, nullptr);
  ad->timer = 2;
  i->vc()->presentMediationBanner(ad);
  EXPECT_EQ(full->heard, Heard{"finish"});
  const auto screen = std::make_shared<UIViewController>();
  adapter->onRoot = [&](UIViewController& root) { root.presentViewController(screen, false, nullptr); };
  show(*i);
  EXPECT_EQ(full->heard, (Heard{"finish", "appear"}));
  EXPECT_EQ(screen->presentingViewController(), i->vc().get());
  window->pressEscape();
  EXPECT_EQ(full->heard.back(), "appear") << "not before its time";
  platform->advance(20s);
  EXPECT_EQ(full->heard.back(), "appear") << "a network that shows its ad may take its time";
  window->pressEscape();
  platform->advance(1s);
  EXPECT_EQ(full->heard, (Heard{"finish", "appear", "close", "dismissed"}))
      << "Escape goes to the screen below one that makes nothing of it";

  // A network that says that its ad is broken, or says nothing and presents nothing: nobody is caught.
  for (const bool broken : {true, false}) {
    full->heard.clear();
    adapter->onRoot = nullptr;
    adapter->root.reset();
    i->vc()->presentMediationBanner(ad);
    if (broken)
      for (const auto& from : {test::FakeAdapter::make(VeltoAdTypeInterstitial), adapter})
        post("constNotificationAdMobAdapterGADInterstitialErrorVelto", from);
    i->show();
    platform->advance(1900ms);
    EXPECT_EQ(adapter->root.expired(), broken);
    EXPECT_FALSE(i->vc()->veltoCloseButton()->isEnabled());
    platform->advance(1s);
    EXPECT_TRUE(i->vc()->veltoCloseButton()->isEnabled());
    platform->advance(10s);
    EXPECT_EQ(full->heard, (Heard{"finish", "appear", "close", "dismissed"})) << broken;
  }
}

TEST_F(InterstitialTest, ShownAsSoonAsItIsReadyItKeepsTheOrientationOfThatMoment) {
  const auto i = interstitial();
  i->setAutoShowWhenReady(true);
  for (const auto& [orientation, mask] :
       std::vector<std::pair<int64_t, uint64_t>>{{1, 2}, {3, 8}, {5, 8}, {4, 16}, {6, 16}, {2, 16}}) {
    platform->device().facts.orientation = orientation;
    load(*i, fullScreen());
    platform->advance(1s);
    EXPECT_EQ(full->heard.back(), "appear");
    EXPECT_EQ(i->vc()->supportedInterfaceOrientations(), mask) << orientation;
    close(*i);
  }
}

TEST_F(InterstitialTest, GlassOrPlainByTheDesktopsSetting) {
  const auto glass = interstitial();
  EXPECT_NE(dynamic_cast<UIVisualEffectView*>(glass->vc()->view()->subviews().at(0).get()), nullptr);
  EXPECT_EQ(glass->vc()->view()->backgroundColor(), UIColor::colorWithWhite(0, 0.1));
  platform->application().reduceTransparency = true;
  const auto plain = interstitial();
  EXPECT_TRUE(plain->vc()->view()->subviews().empty());
  EXPECT_EQ(plain->vc()->view()->backgroundColor(), UIColor::colorWithWhite(0, 0.8));
}

TEST_F(InterstitialTest, AWindowThatIsDestroyedTakesItAlong) {
  const auto i = loaded(fullScreen());
  i->show();
  platform->advance(300ms);
  window.reset();
  platform->advance(2s);
  EXPECT_EQ(full->heard, (Heard{"finish", "fail 2"}));
  EXPECT_EQ(i->vc()->presentingViewController(), nullptr);
  close(*i);
  EXPECT_TRUE(platform->webViews().empty());

  // A window that was hidden by then has nothing to say of the view in it.
  window = std::make_unique<headless::HostWindow>();
  full->host = window->controller();
  const auto hidden = loaded(fullScreen());
  std::vector<VeltoInterstitialState> told;
  full->onState = [&] { told.push_back(hidden->state()); };
  window->hide();
  hidden->show();
  platform->advance(1s);
  window.reset();
  platform->runUntilIdle();
  EXPECT_EQ(told, (std::vector{VeltoInterstitialStatePresented, VeltoInterstitialStateReady}));
}

}  // namespace
}  // namespace velto
