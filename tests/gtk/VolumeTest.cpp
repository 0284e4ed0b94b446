// The output volume, from a sound server of the test's own, which has an output that nobody hears.
#include "velto/platform/AVAudioSession.h"

#include "DisplayTest.h"
#include "SoundServer.h"

namespace velto::test {
namespace {

class GtkVolume : public DisplayTest {
 protected:
  GtkVolume() { g_setenv("PULSE_SERVER", "unix:/nowhere", TRUE); }

  static AVAudioSession& session() { return AVAudioSession::sharedInstance(); }
  static bool control(std::vector<std::string> words) {
    words.insert(words.begin(), "pactl");
    return run(words).code == 0;
  }
  Handle observe() {
    return session().addObserver("outputVolume", NSKeyValueObservingOptionNew, this,
                                 [this](auto&, float volume, auto*) { heard.push_back(volume); });
  }

  std::vector<float> heard;
};

TEST_F(GtkVolume, IsOneWithoutASoundServer) {
  EXPECT_THROW((void)session().addObserver("inputGain", 1, nullptr, {}), std::invalid_argument);
  const Handle observation = observe();
  EXPECT_FALSE(isMapped("libpulse.so"));
  session().setActive();
  ASSERT_TRUE(runUntil([] { return isMapped("libpulse.so"); }));
  EXPECT_FLOAT_EQ(session().outputVolume(), 1);
  EXPECT_TRUE(heard.empty());
}

TEST_F(GtkVolume, FollowsTheDefaultOutput) {
  SoundServer server;
  ASSERT_TRUE(control({"set-default-sink", "first"}) && control({"set-sink-volume", "first", "50%"}) &&
              control({"set-sink-volume", "second", "30%"}));
  Handle observation = observe();
  session().setActive();
  ASSERT_TRUE(runUntil([] { return session().outputVolume() < 1; }));
  EXPECT_NEAR(session().outputVolume(), 0.5, 0.01);
  EXPECT_TRUE(heard.empty()) << "that it was so all along is no change";

  const auto expectNext = [&](const std::vector<std::string>& words, double volume) {
    SCOPED_TRACE(words.back());
    const auto before = heard.size();
    ASSERT_TRUE(control(words));
    ASSERT_TRUE(runUntil([&] { return heard.size() > before; }));
    EXPECT_NEAR(heard.back(), volume, 0.01);
    EXPECT_EQ(heard.size(), before + 1);
  };
  expectNext({"set-sink-volume", "first", "80%"}, 0.8);
  expectNext({"set-sink-volume", "first", "150%"}, 1);
  expectNext({"set-sink-mute", "first", "1"}, 0);
  expectNext({"set-default-sink", "second"}, 0.3);
  server.stop();
  ASSERT_TRUE(runUntil([] { return session().outputVolume() == 1; }));
  EXPECT_EQ(heard.size(), 4U) << "nobody knows it any more, which is no change";
}

}  // namespace
}  // namespace velto::test
