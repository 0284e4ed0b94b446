// Real videos, made here and served on loopback, in a real window: played to their end, broken in every way,
// closed at any moment. There is no sound output, as on many a machine, and they play all the same.
#include <chrono>
#include <future>
#include <map>
#include <thread>

#include "../support/LoopbackServer.h"
#include "../video/RecordingHost.h"
#include "DisplayTest.h"
#include "SoundServer.h"

namespace velto::test {
namespace {

using namespace std::chrono_literals;

// A second of red with a tone, as WebM.
std::string madeVideo() {
  const auto file = std::filesystem::temp_directory_path() / "made.webm";
  const std::string line =
      "gst-launch-1.0 -q webmmux name=mux max-cluster-duration=200000000 ! filesink location=" +
      file.string() +
      " videotestsrc num-buffers=30 pattern=red ! video/x-raw,width=160,height=120,framerate=30/1"
      " ! vp8enc deadline=1 keyframe-max-dist=6 ! mux."
      " audiotestsrc num-buffers=43 ! audioconvert ! vorbisenc ! mux.";
  if (run({"sh", "-c", line}).code != 0) throw std::runtime_error("no video: " + line);
  return textOf(file);
}

struct Served {
  std::string body = {};
  int status = 200;
  size_t promised = 0;  // if more than there is
  bool never = false;
};

const Lines all{"start 1 at 1", "0.25", "0.5", "0.75", "1"};

class VideoServer {
 public:
  template <typename... Certificate>
  explicit VideoServer(const Certificate&... certificate) : server_(certificate...) {
    server_->Get(".*", [this](const auto& request, auto& response) { answer(request.path, response); });
    server_.start();
  }
  std::map<std::string, Served> files;  // by path, set before it is asked for
  std::string url(const std::string& path) const { return server_.address(path); }

 private:
  void answer(const std::string& path, httplib::Response& response) {
    const auto& file = files.at(path);
    if (file.status != 200) response.status = file.status;  // else 206 for a part of it
    if (file.never) server_.waitForEnd();
    response.set_content_provider(std::max(file.promised, file.body.size()), "video/webm",
                                  [&file](size_t offset, size_t length, httplib::DataSink& sink) {
                                    if (offset >= file.body.size()) return false;
                                    return sink.write(file.body.data() + offset,
                                                      std::min(length, file.body.size() - offset));
                                  });
  }

  LoopbackServer server_;
};

// A certificate of an authority of its own.
std::string certificate(const std::string& name) {
  const auto file = (std::filesystem::temp_directory_path() / name).string();
  run({"sh", "-c",
       "exec 2>&-; openssl req -x509 -newkey rsa:2048 -nodes -days 1 -subj /CN=test -addext "
       "subjectAltName=IP:127.0.0.1 "
       "-keyout " +
           file + ".key -out " + file});
  return file;
}

class GtkVideo : public DisplayTest {
 protected:
  static void SetUpTestSuite() {
    g_setenv("PULSE_SERVER", "unix:/nowhere", TRUE);
    whole = madeVideo();
    trusted = certificate("ca.pem");
  }
  GtkVideo() {
    gtk::install(
        {.applicationIdentifier = "org.example.video", .caFile = trusted, .mayReachLocalNetwork = true});
    window_ = newWindow(400, 600);
    controller = present(window_);
    host = std::make_shared<RecordingHost>();
    controller->addChildViewController(host);
    controller->view()->addSubview(host->view());
  }
  ~GtkVideo() override {
    host.reset();
    controller.reset();
    gtk::uninstall();
    gtk_window_destroy(window_);
  }
  void play(const std::string& path) { play(server, path); }
  void play(const VideoServer& from, const std::string& path) {
    host->playVideoAt(NSURL::URLWithString(from.url(path)).value());
  }
  bool isOver() const { return !controller->presentedViewController(); }
  void press(const std::string& key) {
    giveKeyboard(window_);
    xdotool("key " + key);
  }
  uint32_t colorAt(int x, int y) { return pictureOf(window_).at(x, y); }

  inline static std::string whole, trusted;
  VideoServer server;
  std::shared_ptr<UIViewController> controller;
  std::shared_ptr<RecordingHost> host;

 private:
  GtkWindow* window_;
};

TEST_F(GtkVideo, PlaysToItsEndAndIsSeenAndMeasured) {
  EXPECT_FALSE(isMapped("velto-video")) << "a process without a video has no player";
  server.files["/a"] = {whole};
  play("/a");
  ASSERT_TRUE(runUntil([&] { return host->told.size() >= 2; }));
  EXPECT_TRUE(isMapped("velto-video"));
  EXPECT_FALSE(isMapped("velto-volume")) << "nobody observes the volume";
  const auto duration = host->asset()->duration();
  EXPECT_NEAR(CMTimeGetSeconds(duration), 1, 0.05);
  ASSERT_TRUE(runUntil([&] { return (colorAt(200, 300) & 0xe0c0c0) == 0xe00000; })) << "red";
  EXPECT_EQ(colorAt(200, 20), 0U) << "above the picture, which keeps its shape";
  ASSERT_TRUE(runUntil([&] { return isOver(); }));
  EXPECT_EQ(host->told, all);
}

TEST_F(GtkVideo, BrokenVideosEndInAClosedPlayer) {
  server.files = {{"/missing", {.body = "not here", .status = 404}},
                  {"/text", {.body = "<html><body>not a video</body></html>"}},
                  {"/empty", {}},
                  {"/cut", {.body = whole.substr(0, whole.size() / 2)}},
                  {"/lost", {.body = whole.substr(0, whole.size() / 2), .promised = whole.size()}}};
  for (const auto& [path, served] : server.files) {
    SCOPED_TRACE(path);
    host->told.clear();
    play(path);
    ASSERT_TRUE(runUntil([&] { return isOver(); }));
    EXPECT_EQ(std::count(host->told.begin(), host->told.end(), "1"), 0) << "it was not played to its end";
    EXPECT_TRUE(host->player()->error());
  }
}

TEST_F(GtkVideo, IsClosedAtAnyMoment) {
  server.files = {{"/never", {.never = true}}, {"/a", {whole}}};
  play("/never");
  press("Escape");
  ASSERT_TRUE(runUntil([&] { return isOver(); }));
  EXPECT_EQ(host->told, Lines{});

  play("/a");
  ASSERT_TRUE(runUntil([&] { return host->player()->isPlaying(); }));
  const std::weak_ptr<AVPlayer> player = host->player();
  const std::weak_ptr<AVPlayerViewController> screen = host->playerViewController();
  host->view()->removeFromSuperview();
  host->removeFromParentViewController();
  host.reset();
  EXPECT_TRUE(isOver());
  EXPECT_TRUE(player.expired() && screen.expired());
}

TEST_F(GtkVideo, OverHTTPSItTrustsOnlyServersThatSomebodyVouchesFor) {
  const std::string foreign = certificate("foreign.pem");
  for (const auto& file : {foreign, trusted}) {
    VideoServer secure(file, file + ".key");
    secure.files["/a"] = {whole};
    play(secure, "/a");
    ASSERT_TRUE(runUntil([&] { return isOver(); }));
    EXPECT_EQ(host->told.empty(), file == foreign);
  }
  EXPECT_EQ(host->told, all);
}

TEST_F(GtkVideo, GoesOnInSilenceWhenTheSoundOutputGoes) {
  SoundServer sound;
  server.files["/a"] = {whole};
  play("/a");
  ASSERT_TRUE(runUntil([&] { return host->told.size() >= 2; }));
  ASSERT_TRUE(isMapped("libgstpulseaudio")) << "it sounds";
  sound.stop();
  g_setenv("PULSE_SERVER", "unix:/nowhere", TRUE);
  ASSERT_TRUE(runUntil([&] { return isOver(); }));
  EXPECT_EQ(host->told, all);
}

// It takes the call and never answers: a player that goes meanwhile leaves it to itself.
TEST_F(GtkVideo, NobodyWaitsForASoundServerThatHangs) {
  using namespace std::chrono_literals;
  HungSoundServer sound;
  server.files["/a"] = {whole};
  play("/a");
  ASSERT_TRUE(runUntil([&] { return sound.isAsked(); }));
  const std::weak_ptr<AVPlayer> player = host->player();
  std::promise<void> gone;
  bool hadToHelp = false;
  std::thread helper([&, isGone = gone.get_future()] {
    hadToHelp = isGone.wait_for(15s) == std::future_status::timeout;
    if (hadToHelp) sound.hangUp();
  });
  host->player()->setVolume(0.5F);
  host->player()->pause();
  EXPECT_EQ(CMTimeGetSeconds(host->player()->currentTime()), 0);
  host->view()->removeFromSuperview();
  host->removeFromParentViewController();
  host.reset();
  gone.set_value();
  helper.join();
  EXPECT_TRUE(player.expired());
  EXPECT_FALSE(hadToHelp);
  sound.hangUp();
  g_setenv("PULSE_SERVER", "unix:/nowhere", TRUE);
}

TEST_F(GtkVideo, WithoutItsModuleNothingPlays) {
  const TemporaryFolder folder;
  folder.write("velto-video.so", "no shared object");
  g_setenv("VELTO_MODULE_PATH", folder.path().c_str(), TRUE);
  server.files["/a"] = {whole};
  play("/a");
  EXPECT_TRUE(runUntil([&] { return isOver(); }));
  g_unsetenv("VELTO_MODULE_PATH");
  EXPECT_EQ(host->told, Lines{});
}

}  // namespace
}  // namespace velto::test
