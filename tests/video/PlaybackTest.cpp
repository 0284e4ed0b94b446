// Videos played by a controller that shows ads, in virtual time: what is measured of them and in which order,
// every way out of the player, and the output volume.
#include "../ui/UITest.h"
#include "RecordingHost.h"

namespace velto::test {
namespace {

using namespace std::chrono_literals;
using headless::VideoScript;

constexpr char videoURL[] = "https://videos.example/a.webm";

class PlaybackTest : public UITest {
 protected:
  PlaybackTest() {
    window->controller()->addChildViewController(host);
    window->view().addSubview(host->view());
  }
  void play(VideoScript script = {}, const std::string& url = videoURL) {
    platform->media().setVideo(url, script);
    host->playVideoAt(NSURL::URLWithString(url).value());
    platform->runUntilIdle();
  }
  std::shared_ptr<AVPlayerViewController> screen() { return host->playerViewController(); }
  bool isShown() { return window->controller()->presentedViewController() != nullptr; }
  // The screen has left, and what it played was let go.
  void expectClosed() {
    EXPECT_FALSE(isShown());
    EXPECT_FALSE(screen()->view()->isInWindow());
    EXPECT_EQ(screen()->player(), nullptr);
    EXPECT_EQ(host->timeObserverToken(), nullptr);
    for (const auto* player : platform->media().players()) EXPECT_TRUE(player->isReleased());
  }

  std::shared_ptr<RecordingHost> host = std::make_shared<RecordingHost>();
};

// What a video says of its length and what is measured of it: the whole seconds, and the marks passed.
TEST_F(PlaybackTest, MeasuresEveryLengthAsFarAsItWent) {
  struct Case {
    const char* what;
    VideoScript script;
    std::chrono::milliseconds watched;
    Lines told;
    bool over = true;
  };
  const auto all = [](const std::string& start) { return Lines{start, "0.25", "0.5", "0.75", "1"}; };
  const std::vector<Case> cases = {
      {"whole", {}, 20s, all("start 10 at 1")},
      {"left before a quarter", {}, 2499ms, {"start 10 at 1"}, false},
      {"not whole", {.duration = {599, 10}}, 60s, all("start 59 at 1")},
      {"of nanoseconds", {.duration = {1'000'000'003, 1'000'000'000}}, 2s, all("start 1 at 1")},
      {"of one frame", {.duration = {1, 30}}, 1s, all("start 0 at 1")},
      {"of one nanosecond", {.duration = {1, 1'000'000'000}}, 1s, {"start 0 at 1"}},
      {"of no length", {.duration = {0, 30}}, 1s, {"start 0 at 1"}},
      {"without an end", {.duration = {}}, 3h, {"start 0 at 1"}, false},
      {"longer than it says", {.endsAt = 30s}, 20s, all("start 10 at 1"), false},
      {"cut off", {.endsAt = 6s}, 20s, {"start 10 at 1", "0.25", "0.5"}},
      {"short of a frame", {.endsAt = 9960ms}, 20s, all("start 10 at 1")},
      {"broken in the middle", {.failsAt = 3s}, 20s, {"start 10 at 1", "0.25"}},
      {"not there", {.loadFails = true}, 20s, {}},
  };
  for (const auto& [what, script, watched, told, over] : cases) {
    SCOPED_TRACE(what);
    host->told.clear();
    play(script);
    platform->advance(watched);
    EXPECT_EQ(host->told, told);
    EXPECT_EQ(!isShown(), over);
    screen()->close();
    platform->runUntilIdle();
    expectClosed();
  }
}

TEST_F(PlaybackTest, WhatCannotBeShownIsNotPlayed) {
  for (const char* url : {"file:///etc/passwd", "data:video/webm;base64,AAAA", "video.webm", "https:"}) {
    host->playVideoAt(NSURL::URLWithString(url).value());
    platform->runUntilIdle();
    EXPECT_EQ(screen(), nullptr) << url;
  }
  const auto other = std::make_shared<UIViewController>();
  window->controller()->presentViewController(other, false, nullptr);
  play();
  platform->advance(20s);
  EXPECT_EQ(window->controller()->presentedViewController(), other);
  EXPECT_EQ(screen()->player(), nullptr);
  EXPECT_EQ(host->told, Lines{});
}

TEST_F(PlaybackTest, ClosedWhileLoadingStaysClosed) {
  play({.loadsAfter = 2s});
  ASSERT_TRUE(isShown());
  EXPECT_EQ(screen()->controls()->timeLabel().title(), "Loading");
  window->pressKey(UIKey::Space);
  EXPECT_FALSE(host->player()->isPlaying()) << "nothing to play yet";
  EXPECT_TRUE(window->pressEscape());
  platform->advance(10s);
  expectClosed();
  EXPECT_EQ(host->told, Lines{});
}

TEST_F(PlaybackTest, ASecondVideoTakesTheFirstOnesPlace) {
  play();
  const auto first = screen();
  platform->advance(3s);
  play({.duration = {4, 1}}, "https://videos.example/b.webm");
  EXPECT_EQ(first->player(), nullptr);
  platform->advance(20s);
  EXPECT_EQ(host->told, (Lines{"start 10 at 1", "0.25", "start 4 at 1", "0.25", "0.5", "0.75", "1"}));
  expectClosed();
}

TEST_F(PlaybackTest, KeysAndButtonsSteerIt) {
  play({.duration = {100, 1}});
  const auto at = [&] { return CMTimeGetSeconds(host->player()->currentTime()); };
  const auto& controls = *screen()->controls();
  platform->advance(2s);
  window->pressKey(UIKey::Space);
  platform->advance(1min);
  EXPECT_NEAR(at(), 2, 0.01);
  EXPECT_EQ(controls.playButton().title(), "Play");
  using enum UIKey;
  for (const auto key :
       {RightArrow, RightArrow, LeftArrow, DownArrow, DownArrow, DownArrow, DownArrow, UpArrow})
    window->pressKey(key);
  EXPECT_NEAR(at(), 7, 0.01);
  EXPECT_NEAR(platform->media().players().back()->appliedVolume(), 0.7F, 0.001F);

  const auto tapAt = [&](const UIView& view, double part) {
    const auto frame = frameInWindow(view);
    window->tap({frame.minX() + frame.size.width * part, frame.midY()});
    platform->runUntilIdle();
  };
  tapAt(controls.playButton(), 0.5);
  EXPECT_TRUE(host->player()->isPlaying());
  tapAt(controls.progressBar(), 0.6);
  EXPECT_NEAR(at(), 60, 1);
  const auto& lines = controls.progressBar().subviews();
  EXPECT_NEAR(lines[1]->frame().size.width / lines[0]->frame().size.width, 0.6, 0.01);
  screen()->controls()->show({.loading = false, .seconds = 65, .duration = 7200});
  EXPECT_EQ(controls.timeLabel().title(), "1:05 / 2:00:00");
  platform->advance(16s);
  EXPECT_EQ(host->told, (Lines{"start 100 at 1", "0.75"})) << "what was jumped over was not watched";
  tapAt(controls.closeButton(), 0.5);
  expectClosed();
}

// Each ends the player at once, and nothing is told afterwards.
TEST_F(PlaybackTest, TheAdsEndIsTheVideosEnd) {
  host->onProgress = [&] { screen()->close(); };  // in the middle of being told
  play();
  platform->advance(20s);
  expectClosed();
  EXPECT_EQ(host->told, (Lines{"start 10 at 1", "0.25"}));

  host->onProgress = nullptr;
  play();
  platform->advance(1s);
  window->hide();
  platform->advance(1min);
  EXPECT_TRUE(isShown()) << "a hidden window pauses it";
  window->show();
  window->controller()->dismissViewControllerAnimated(false, nullptr);  // the application clears its window
  platform->runUntilIdle();
  expectClosed();

  play();
  const std::weak_ptr<AVPlayerViewController> gone = screen();
  host->view()->removeFromSuperview();
  host->removeFromParentViewController();
  host.reset();
  platform->advance(20s);
  EXPECT_TRUE(gone.expired());
  EXPECT_EQ(platform->media().players().size(), 0U);
}

// --- the output volume

TEST_F(PlaybackTest, VolumeIsObservedOnceAndGoesToThePageAndThenToTheMeasurement) {
  auto& session = platform->audioSession();
  const int context = 0;
  for (const size_t observers : {1U, 0U, 1U}) {
    for (int twice = 0; twice < 2; ++twice) {
      if (observers) host->startAudioVolumeObserverForContext(&context);
      if (!observers) host->stopAudioVolumeObserverForContext(&context);
    }
    EXPECT_EQ(session.observers(), observers);
  }
  session.setOutputVolume(0.75F);
  EXPECT_EQ(host->told, Lines{}) << "nobody asked for sound yet";
  session.setActive();
  session.setOutputVolume(0.5F);
  EXPECT_EQ(host->lastContext, &context);
  host->audioVolumeChange(0.25F, WKWebView::initWithFrame({}, {}));
  EXPECT_EQ(host->told, (Lines{"outputVolume 0.5", "page", "measurement 0.25"}));
  host->view()->removeFromSuperview();
  host->removeFromParentViewController();
  host.reset();
  EXPECT_EQ(session.observers(), 0U);
}

// --- media times

TEST(MediaTime, IsExactWhereFractionsAllowIt) {
  EXPECT_EQ(CMTimeMultiplyByFloat64({1000, 600}, 0.25), (CMTime{250, 600}));
  EXPECT_EQ(CMTimeCompare(CMTimeMultiplyByFloat64({1001, 30000}, 0.25), {1001, 120000}), 0);
  EXPECT_EQ(CMTimeCompare(CMTimeAdd({1, 3}, {1, 6}), {1, 2}), 0);
  EXPECT_EQ(CMTimeAdd({(1LL << 60) + 1, 2}, {-1, 4}), (CMTime{(1LL << 61) + 1, 4})) << "without a loss";
  EXPECT_EQ(CMTimeAdd({INT64_MIN, 1}, {-1, 3}), (CMTime{INT64_MIN, 3}));
  EXPECT_EQ(CMTimeCompare({INT64_MAX, 1}, {INT64_MAX, 2'000'000'000}), 1);
  EXPECT_EQ(CMTimeCompare({-1, 3}, {-1, 4}), -1);
  EXPECT_EQ(CMTimeCompare({7, 0}, {}), 0) << "no time counts as zero";
}

}  // namespace
}  // namespace velto::test
