// Video ads while they play, in virtual time: persons, sight, icons and companions, measurement, and every way out.
#include "VideoAdFixture.h"

namespace velto::test {
namespace {

TEST_F(VideoAdTest, APersonSteersIt) {
  play({{.skip = "skipoffset=\"00:00:05\""}});
  sent();
  heard();
  platform->advance(2500ms);
  sent();
  EXPECT_EQ(controls().skipButton().title(), "Skip in 3");
  tap(controls().skipButton());
  EXPECT_FALSE(ad->skip());
  ad->pause();
  EXPECT_EQ(heard(), Lines{"1/4"}) << "never inside the application's call";
  ad->resume();
  platform->runUntilIdle();
  EXPECT_EQ(heard(), (Lines{"pause", "resume"}));
  sent();
  tap(controls().muteButton());
  EXPECT_EQ(controls().muteButton().title(), "Unmute");
  EXPECT_EQ(platform->media().players().back()->appliedVolume(), 0);
  ad->setVolume(0.5F);
  tap(controls().muteButton());
  EXPECT_EQ(platform->media().players().back()->appliedVolume(), 0.5F);
  EXPECT_EQ(sent(), "a-mute a-unmute ");
  ad->setMuted(true);
  ad->setMuted(false);
  EXPECT_EQ(sent(), "a-mute a-unmute ");
  EXPECT_EQ(heard(), (Lines{"muted", "heard"})) << "only what the person does";
  tap(controls().playButton());
  platform->advance(1h);
  EXPECT_EQ(platform->mainQueue().timers(), restingTimers) << "nothing is looked at while it waits";
  EXPECT_EQ(controls().playButton().title(), "Play");
  tap(controls().playButton());
  EXPECT_EQ(sent(), "a-pause a-resume ");
  EXPECT_EQ(heard(), (Lines{"pause", "resume"}));
  // On the ad, and beside it: both lead to the shop, and the ad waits there; pressed again, it goes on.
  window->tap({200, 200});
  window->tap({200, 200});
  EXPECT_EQ(controls().moreButton().title(), "Learn more");
  tap(controls().moreButton());
  EXPECT_EQ(sent(), "a-click200%2C100 a-pause a-resume a-click-1 a-pause ");
  EXPECT_EQ(platform->application().opened.size(), 2U);
  EXPECT_EQ(platform->application().opened.back().url.absoluteString(), "https://shop/a");
  EXPECT_EQ(linksOpened(), 2);
  EXPECT_EQ(heard(), (Lines{"press", "pause", "resume", "press", "pause"}));
  ad->resume();
  platform->runUntilIdle();
  ad->setFullscreen(true);
  platform->advance(2500ms);
  EXPECT_EQ(controls().skipButton().title(), "Skip");
  tap(controls().skipButton());
  EXPECT_EQ(sent(), "a-resume a-fullscreen a-midpoint a-skip ");
  EXPECT_EQ(heard(), (Lines{"resume", "2/4", "skip", "content resume", "end"}));
  expectClean();
}

bool overlap(const CGRect& a, const CGRect& b) {
  return a.minX() < b.maxX() && b.minX() < a.maxX() && a.minY() < b.maxY() && b.minY() < a.maxY();
}

// Each can be pressed, however small the view.
TEST_F(VideoAdTest, ControlsFindTheirPlacesInSmallViews) {
  for (const auto& [size, textScale] :
       {std::pair(CGSize{200, 112}, 1.0), {{150, 200}, 1.0}, {{220, 160}, 2.0}, {{390, 220}, 2.0}}) {
    SCOPED_TRACE(std::to_string(size.width) + " " + std::to_string(textScale));
    platform->application().scaleOfText = textScale;
    host->setFrame({{0, 100}, size});
    play({{.attributes = "sequence=\"1\"", .skip = "skipoffset=\"00:00:09\""},
          {.attributes = "sequence=\"2\""}});
    platform->runUntilIdle();
    const std::vector<const UIButton*> all{&controls().label(), &controls().moreButton(),
                                           &controls().playButton(), &controls().muteButton(),
                                           &controls().skipButton()};
    for (const auto* one : all) {
      EXPECT_FALSE(one->isHidden());
      const CGRect frame = one->frame();
      EXPECT_GE(frame.minX(), 0);
      EXPECT_LE(frame.maxX(), size.width);
      EXPECT_GE(frame.minY(), 0);
      EXPECT_LE(frame.maxY(), size.height);
      EXPECT_GT(frame.size.width * frame.size.height, 300);
      for (const auto* other : all)
        EXPECT_TRUE(one == other || !overlap(frame, other->frame())) << one->title() << " " << other->title();
    }
    ad->stop();
    platform->runUntilIdle();
  }
}

TEST_F(VideoAdTest, WholeWindowAndKeys) {
  load({{.skip = "skipoffset=\"00:00:02\""}});
  ASSERT_TRUE(ad->playOver(window->controller()));
  platform->runUntilIdle();
  const auto screen = window->controller()->presentedViewController();
  ASSERT_NE(screen, nullptr);
  EXPECT_EQ(screen->view()->frame().size, window->view().bounds().size);
  sent();
  heard();
  EXPECT_TRUE(window->pressEscape()) << "too early: stays";
  EXPECT_TRUE(window->pressKey(UIKey::M));
  EXPECT_TRUE(window->pressKey(UIKey::Space));
  EXPECT_TRUE(window->pressKey(UIKey::Space));
  EXPECT_FALSE(window->pressKey(UIKey::LeftArrow));
  EXPECT_EQ(sent(), "a-mute a-pause a-resume ");
  platform->advance(2s);
  EXPECT_TRUE(window->pressEscape());
  EXPECT_EQ(sent(), "a-viewable a-skip ");
  expectClean();
  platform->media().setVideo("https://v/endless.webm", {.duration = {100'000, 1}});
  load({{.files = file("endless.webm")}});
  ASSERT_TRUE(ad->playOver(window->controller()));
  platform->advance(15s);
  EXPECT_TRUE(window->pressEscape());
  platform->runUntilIdle();
  EXPECT_EQ(ad->state(), VeltoVideoAd::State::Playing);
  platform->advance(10s);
  EXPECT_TRUE(window->pressEscape());
  expectClean();
  EXPECT_EQ(heard().back(), "end");
}

// Nobody sees it: it waits. And it is only viewable where half of it is in sight for two seconds at a stretch.
TEST_F(VideoAdTest, PausesOutOfSight) {
  WindowSight gone;
  gone.minimized = true;
  window->setSight(gone);
  play({{}});
  platform->advance(5s);
  EXPECT_EQ(sent(), "a-loaded ") << "not seen, not begun";
  window->setSight({});
  platform->advance(1500ms);
  EXPECT_EQ(sent(), "a-impression a-start ");
  const auto cover = UIView::make();
  cover->setBackgroundColor(UIColor::blackColor());
  cover->setFrame({{0, 100}, {390, 120}});
  window->view().addSubview(cover);
  platform->advance(1s);
  cover->removeFromSuperview();
  platform->advance(1s);
  platform->application().setLocked(true);
  platform->advance(10s);
  platform->application().setLocked(false);
  platform->advance(250ms);
  window->hide();
  platform->advance(1h);
  window->show();
  platform->advance(250ms);
  EXPECT_EQ(sent(), "a-firstQuartile a-pause a-resume a-pause a-resume ");
  platform->advance(2s);
  EXPECT_EQ(sent(), "a-midpoint a-viewable ");
  tap(controls().playButton());
  window->hide();
  platform->advance(1s);
  window->show();
  platform->advance(1min);
  EXPECT_EQ(sent(), "a-pause ") << "the person's pause stays";
  // Taken out of its window it is over, also while it waits.
  heard();
  ad->resume();
  host->removeFromSuperview();
  platform->advance(5s);
  EXPECT_EQ(heard(), (Lines{"resume", "pause", "content resume", "end"}));
  EXPECT_EQ(sent(), "a-resume a-pause a-close ");
  EXPECT_EQ(host->subviews().size(), 0U);
}

// In each of its calls, and in each state between them, the application may be done with it.
TEST_F(VideoAdTest, EndsCleanlyAtAnyMoment) {
  const AdText pod{.attributes = "sequence=\"1\"", .skip = "skipoffset=\"0%\""};
  const AdText broken{.files = file("missing.webm"), .attributes = "sequence=\"2\""};
  platform->media().setVideo("https://v/missing.webm", {.loadFails = true});
  const auto run = [&](bool whole) {
    ad = VeltoVideoAd::make(told);
    load({pod, broken, pod});
    if (ad) whole ? ad->playOver(window->controller()) : ad->playIn(host);
    platform->runUntilIdle();
    if (ad) ad->pause();
    if (ad) ad->resume();
    platform->runUntilIdle();
    if (ad && find(window->view())) tap(find(window->view())->moreButton());
    if (ad) ad->resume();
    platform->advance(1min);
  };
  run(false);
  const auto calls = heard();
  ASSERT_EQ(calls.size(), 20U);
  for (size_t at = 0; at < calls.size(); ++at)
    for (const bool stops : {false, true}) {
      SCOPED_TRACE(std::to_string(at) + " " + calls[at]);
      told->during = [&](const std::string&, VeltoVideoAd& own) {
        if (told->heard.size() != at + 1) return;
        if (stops) return own.stop();
        ad.reset();
      };
      run(at % 2);
      const auto all = heard();
      ASSERT_GT(all.size(), at);
      EXPECT_EQ(all[at], calls[at]);
      EXPECT_TRUE(stops || all.size() == at + 1) << "silent afterwards";
      EXPECT_TRUE(!stops || at == 0 || all.back() == "end");
      expectClean();
    }
  told->during = nullptr;
  heard();

  // While it loads, while it is about to play, with its window, with the platform.
  platform->urlSession().respond("https://ads/", {.body = document({{}}), .delay = 1s});
  ad = VeltoVideoAd::make(told);
  ad->load("https://ads/");
  ad->stop();
  platform->advance(10s);
  load({{}});
  ASSERT_TRUE(ad->playIn(host));
  ad->stop();
  platform->advance(10s);
  EXPECT_EQ(heard(), (Lines{"loaded", "end"}));
  load({{}});
  ASSERT_TRUE(ad->playOver(window->controller()));
  platform->advance(1s);
  const auto before = told->heard;
  window->controller()->platformWindowGone();
  EXPECT_EQ(told->heard, before) << "never inside the toolkit's call";
  platform->advance(10s);
  EXPECT_EQ(heard(), (Lines{"loaded", "content pause", "start", "content resume", "end"}));
  expectClean();
  play({{}});
  headless::Platform::uninstall();
  EXPECT_FALSE(ad->playIn(host));
  ad->load("https://ads/");
  ad->stop();
  ad.reset();
  window.reset();
}

TEST_F(VideoAdTest, IconsAndCompanions) {
  const std::string icons =
      "<Icons><Icon program=\"choices\" width=\"20\" height=\"10\" xPosition=\"right\" yPosition=\"top\" "
      "offset=\"00:00:02\" "
      "duration=\"00:00:03\"><StaticResource "
      "creativeType=\"image/png\">https://i/a.png?a=1&amp;b=2</StaticResource><IconClicks>"
      "<IconClickThrough>https://choices/</IconClickThrough><IconClickTracking>https://t/icon-click</"
      "IconClickTracking>"
      "</IconClicks><IconViewTracking>https://t/icon-view</IconViewTracking></Icon></Icons>";
  const std::string companions =
      "</Linear></Creative><Creative><CompanionAds><Companion id=\"c\" width=\"300\" "
      "height=\"60\"><HTMLResource><![CDATA["
      "<a "
      "href='https://own/'>x</a>]]></HTMLResource><CompanionClickTracking>https://t/companion-click</"
      "CompanionClickTracking>"
      "<TrackingEvents><Tracking "
      "event=\"creativeView\">https://t/companion-view</Tracking></TrackingEvents></Companion>"
      "</CompanionAds></Creative><Creative><Linear>";
  platform->setPagesFinishByThemselves(true);
  play({{.linear = icons + companions}});
  EXPECT_TRUE(platform->webViews().empty());
  ASSERT_EQ(ad->companions().size(), 1U);
  EXPECT_EQ(ad->companions()[0].identifier, "c");
  const auto companion = ad->companionView(0);
  ASSERT_NE(companion, nullptr);
  EXPECT_EQ(companion, ad->companionView(0));
  EXPECT_EQ(ad->companionView(1), nullptr);
  platform->advance(1s);
  sent();
  window->view().addSubview(companion);
  EXPECT_EQ(sent(), "companion-view ");
  auto* page = platform->webViews().front();
  EXPECT_EQ(window->tapLink(*page, "https://own/"), WKNavigationActionPolicy::Cancel);
  EXPECT_EQ(sent(), "companion-click ");
  EXPECT_EQ(platform->application().opened.back().url.absoluteString(), "https://own/");

  platform->advance(1s);
  ASSERT_EQ(platform->webViews().size(), 2U);
  auto& icon = *platform->webViews().back();
  EXPECT_NE(icon.html().find("a.png?a=1&amp;b=2"), std::string::npos);
  EXPECT_EQ(frameInWindow(*icon.webView().superview()), (CGRect{{370, 100}, {20, 10}}));
  EXPECT_EQ(sent(), "a-viewable icon-view ");
  window->tapLink(icon, "https://choices/");
  EXPECT_EQ(sent(), "icon-click ");
  EXPECT_EQ(linksOpened(), 2) << "the companion's and the icon's";
  EXPECT_EQ(platform->application().opened.back().url.absoluteString(), "https://choices/");
  platform->advance(3s);
  EXPECT_EQ(platform->webViews().size(), 1U) << "its time is over";
  platform->advance(1min);
  sent();
  window->tapLink(*page, "https://own/");
  EXPECT_EQ(sent(), "companion-click ") << "companions stay";
  play({{.linear = std::regex_replace(icons, std::regex("duration=\"00:00:03\""), "")}});
  EXPECT_EQ(companion->superview(), nullptr) << "it was another ad's";
  platform->advance(1min);
  EXPECT_TRUE(platform->webViews().size() <= 1) << "its icon went with it";
  // However large, and wherever: "skip" can be reached.
  play({{.skip = "skipoffset=\"0%\"",
         .linear = "<Icons><Icon width=\"400\" height=\"1e999\" xPosition=\"right\" "
                   "yPosition=\"inf\"><StaticResource "
                   "creativeType=\"image/png\">https://i/a.png</StaticResource></Icon><Icon program=\"b\" "
                   "width=\"400\" "
                   "height=\"400\" xPosition=\"right\" yPosition=\"bottom\"><StaticResource "
                   "creativeType=\"image/png\">https://i/b.png</StaticResource></Icon></Icons>"}});
  const auto& large = *platform->webViews().back()->webView().superview();
  EXPECT_EQ(frameInWindow(large), (CGRect{{292.5, 265}, {97.5, 55}}));
  heard();
  tap(controls().skipButton());
  EXPECT_EQ(heard().at(0), "skip");
}

// The scripts of the document run, those that may not are told of, and hear the truth.
TEST_F(VideoAdTest, IsMeasuredByTheScriptsOfTheDocument) {
  const auto verification = [](const std::string& vendor, const std::string& framework) {
    return "<Verification vendor=\"" + vendor + "\"><JavaScriptResource apiFramework=\"" + framework +
           "\">https://" + vendor + "/v.js</JavaScriptResource><VerificationParameters>p-" + vendor +
           "</VerificationParameters><TrackingEvents>" +
           "<Tracking event=\"verificationNotExecuted\">https://t/" + vendor +
           "-[REASON]</Tracking></TrackingEvents>" + "</Verification>";
  };
  platform->veltoBundle().files["omsdk-v1.js"] = "service()";
  VeltoVideoAdSettings settings;
  platform->media().setVideo("https://v/a.webm", {.stallsAt = 6s, .stallsFor = 2s});
  settings.refusedVendors = {"unwanted"};
  settings.startsMuted = true;
  ad->setSettings(settings);
  platform->setPagesFinishByThemselves(true);
  play({{.more = "<AdVerifications>" + verification("good", "omid") + verification("unwanted", "omid") +
                 verification("odd", "other") + "</AdVerifications>",
         .skip = "skipoffset=\"00:00:05\""}});
  EXPECT_EQ(sent(), "a-loaded unwanted-1 a-error410 odd-2 a-error410 a-impression a-start ");
  ASSERT_EQ(platform->webViews().size(), 1U) << "the hidden page of the session";
  const auto& page = *platform->webViews().front();
  EXPECT_TRUE(page.hasRun("https://good/v.js"));
  EXPECT_TRUE(page.hasRun("p-good"));
  EXPECT_FALSE(page.hasRun("https://unwanted/"));
  EXPECT_TRUE(page.hasRun("\"skipOffset\":5"));
  EXPECT_TRUE(page.hasRun("\"percentageInView\":100")) << "its own controls do not cover it";
  // A script that cannot be loaded is known by its word, which others cannot guess.
  std::smatch word;
  for (const auto& script : page.scripts())
    if (std::regex_search(script, word, std::regex("\"loss\":\"([^\"]+)\""))) break;
  ASSERT_EQ(word.size(), 2U);
  const std::string nowhere = "https://not-loaded.invalid/", own = nowhere + word[1].str();
  for (const auto& [address, wanted] : {std::pair<std::string, std::string>{nowhere + "0", ""},
                                        {nowhere, ""},
                                        {"https://good/", ""},
                                        {own, "good-3 a-error410 "},
                                        {own, ""}}) {
    EXPECT_EQ(platform->webViews().front()->navigate(address), WKNavigationActionPolicy::Cancel);
    EXPECT_EQ(sent(), wanted) << address;
  }
  ad->setMuted(false);
  platform->advance(3s);
  tap(controls().moreButton());
  ad->resume();
  platform->advance(9500ms);  // the page lives a second longer than the ad
  size_t at = 0;
  for (const char* event :
       {"impression", "\"start\"", "volumeChange", "firstQuartile", "adUserInteraction", "pause", "resume",
        "midpoint", "bufferStart", "bufferFinish", "thirdQuartile", "complete"}) {
    const auto& scripts = page.scripts();
    while (at < scripts.size() && scripts[at].find(event) == std::string::npos) ++at;
    EXPECT_LT(at, scripts.size()) << event;
  }
  const auto count = [](const auto& scripts, const std::string& event) {
    return std::count_if(scripts.begin(), scripts.end(),
                         [&](const auto& script) { return script.find(event) != std::string::npos; });
  };
  EXPECT_EQ(count(page.scripts(), "bufferStart"), 1) << "however long it stands still";
  EXPECT_EQ(count(page.scripts(), "skipped"), 0);
  play({{.more = "<AdVerifications>" + verification("good", "omid") + "</AdVerifications>",
         .skip = "skipoffset=\"00:00:01\""}});
  platform->advance(1500ms);
  tap(controls().skipButton());
  EXPECT_EQ(count(platform->webViews().back()->scripts(), "skipped"), 1);
}

}  // namespace
}  // namespace velto::test
