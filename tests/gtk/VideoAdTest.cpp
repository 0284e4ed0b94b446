// A real video ad, made here and served on loopback, over a widget of a real window: seen, heard of by its servers in order,
// pressed, paused with its window, measured by its script.
#include "velto/platform/AVPlayer.h"
#include "velto/platform/Platform.h"
#include "velto/video/VeltoVideoAd.h"

#include <cmath>
#include <mutex>

#include "../support/LoopbackServer.h"
#include "DisplayTest.h"

namespace velto::test {
namespace {

using Lines = std::vector<std::string>;

// So many seconds with a tone, as WebM.
std::string madeAdVideo(int seconds, int pictures, const std::string& pattern = "red") {
  const auto file = std::filesystem::temp_directory_path() / "ad.webm";
  const std::string line = "gst-launch-1.0 -q webmmux name=mux ! filesink location=" + file.string() +
                           " videotestsrc pattern=" + pattern +
                           " num-buffers=" + std::to_string(seconds * pictures) +
                           " ! video/x-raw,width=320,height=180,framerate=" + std::to_string(pictures) +
                           "/1 ! vp8enc deadline=1 keyframe-max-dist=6 ! mux. audiotestsrc num-buffers=" +
                           std::to_string(43 * seconds) + " ! audioconvert ! vorbisenc ! mux.";
  if (run({"sh", "-c", line}).code != 0) throw std::runtime_error("no video: " + line);
  return textOf(file);
}

class Heard final : public VeltoVideoAdDelegate {
 public:
  Lines all;
  double duration = 2;
  void veltoVideoAdDidLoad(VeltoVideoAd&) override { all.emplace_back("loaded"); }
  void veltoVideoAdDidFail(VeltoVideoAd&, const VeltoVideoAdError& error) override {
    all.push_back("failed " + std::to_string(error.code));
  }
  void veltoVideoAdDidStart(VeltoVideoAd&, const VeltoVideoAdInfo& info) override {
    EXPECT_NEAR(info.duration, duration, 0.2);
    all.emplace_back("start");
  }
  void veltoVideoAdDidPause(VeltoVideoAd&) override { all.emplace_back("pause"); }
  void veltoVideoAdDidResume(VeltoVideoAd&) override { all.emplace_back("resume"); }
  void veltoVideoAdDidChangeMuted(VeltoVideoAd& ad, bool muted) override {
    EXPECT_EQ(ad.isMuted(), muted);
    all.emplace_back(muted ? "muted" : "heard");
  }
  void veltoVideoAdDidPress(VeltoVideoAd&) override { all.emplace_back("press"); }
  void veltoVideoAdDidComplete(VeltoVideoAd&) override { all.emplace_back("complete"); }
  void veltoVideoAdDidSkip(VeltoVideoAd&) override { all.emplace_back("skip"); }
  void veltoVideoAdDidEndAll(VeltoVideoAd&) override { all.emplace_back("end"); }
};

class GtkVideoAd : public DisplayTest {
 protected:
  static void SetUpTestSuite() {
    g_setenv("PULSE_SERVER", "unix:/nowhere", TRUE);
    shortVideo = madeAdVideo(2, 30);
    longVideo = madeAdVideo(60, 5);  // for what a busy machine does late
    largeVideo = madeAdVideo(2, 15, "snow");
  }
  GtkVideoAd() {
    gtk::install({.applicationIdentifier = "org.example.videoad", .mayReachLocalNetwork = true});
    server_->Get("/ad.xml",
                 [this](const auto&, auto& response) { response.set_content(document(), "text/xml"); });
    server_->Get("/ad.webm", [this](const auto&, auto& response) {
      response.set_content(isLarge ? largeVideo : isLong ? longVideo : shortVideo, "video/webm");
    });
    server_->Get("/v.js", [](const auto&, auto& response) {
      response.set_content(
          "var told = [], v = top.omid.v1_VerificationServiceCommunication || "
          "omidVerificationProperties.serviceWindow.omid.v1_VerificationServiceCommunication;",
          "text/javascript");
    });
    server_->Get("/t/.*", [this](const auto& request, auto& response) {
      const std::lock_guard lock(mutex_);
      told_.push_back(request.path.substr(3));
      response.status = 204;
    });
    server_.start();
    window = newWindow(400, 300);
    content = painted(400, 300, 0, 0, 1);
    gtk_window_set_child(window, content);
    gtk_window_present(window);  // before the library knows of it: it counts as seen all the same
    controller = present(window);
    ad = VeltoVideoAd::make(heard);
  }
  ~GtkVideoAd() override {
    ad.reset();
    controller.reset();
    gtk::uninstall();
    gtk_window_destroy(window);
  }

  std::string document() const {
    std::string trackings;
    for (const char* event :
         {"start", "firstQuartile", "midpoint", "thirdQuartile", "complete", "pause", "resume", "skip"})
      trackings += tracking("Tracking event=\"" + std::string(event) + "\"", event);
    // The first file is of a kind that no decoder here takes, and the better one.
    return "<VAST version=\"4.2\"><Ad><InLine><AdSystem>S</AdSystem>" + tracking("Impression", "impression") +
           tracking("Error", "error[ERRORCODE]") + verifications() +
           "<Creatives><Creative><Linear skipoffset=\"00:00:01\">" +
           "<Duration>00:00:02</Duration><TrackingEvents>" + trackings + "</TrackingEvents><VideoClicks>" +
           "<ClickThrough>https://shop.example/</ClickThrough>" +
           tracking("ClickTracking", "click[CLICKPOS]") + "</VideoClicks><MediaFiles>" +
           "<MediaFile type=\"application/x-nobody-plays-this\" width=\"400\" height=\"300\">" +
           server_.address("/t/odd") +
           "</MediaFile><MediaFile type=\"video/webm\" codec=\"vp8\" width=\"320\" height=\"180\">" +
           (elsewhere.empty() ? server_.address("/ad.webm") : elsewhere) +
           "</MediaFile></MediaFiles></Linear></Creative></Creatives></InLine></Ad></VAST>";
  }
  // One script that is there, and one that is not.
  std::string verifications() const {
    if (!isMeasured) return "";
    std::string all;
    for (const char* script : {"v", "gone"})
      all += "<Verification vendor=\"" + std::string(script) +
             "\"><JavaScriptResource apiFramework=\"omid\">" +
             server_.address("/" + std::string(script) + ".js") + "</JavaScriptResource><TrackingEvents>" +
             tracking("Tracking event=\"verificationNotExecuted\"", script + std::string("-[REASON]")) +
             "</TrackingEvents></Verification>";
    return "<AdVerifications>" + all + "</AdVerifications>";
  }
  std::string tracking(const std::string& element, const std::string& path) const {
    return "<" + element + ">" + server_.address("/t/" + path) + "</" + element.substr(0, element.find(' ')) +
           ">";
  }
  Lines told() {
    const std::lock_guard lock(mutex_);
    return told_;
  }
  void load(bool ofAMinute = false) {
    isLong = ofAMinute;
    if (isLong) heard->duration = 60;
    ad->load(server_.address("/ad.xml"));
    ASSERT_TRUE(runUntil([&] { return !heard->all.empty(); }));
    ASSERT_EQ(heard->all.back(), "loaded");
  }
  testing::AssertionResult isHeard(const std::string& what) {
    const auto& all = heard->all;
    if (runUntil([&] { return std::find(all.begin(), all.end(), what) != all.end(); }))
      return testing::AssertionSuccess();
    return testing::AssertionFailure() << testing::PrintToString(all);
  }

  inline static std::string shortVideo, longVideo, largeVideo;
  bool isLong = false, isLarge = false, isMeasured = false;  // set before it is asked for
  std::string elsewhere;                                     // is the film
  GtkWindow* window;
  GtkWidget* content;
  std::shared_ptr<UIViewController> controller;
  std::shared_ptr<Heard> heard = std::make_shared<Heard>();
  std::shared_ptr<VeltoVideoAd> ad;

 private:
  std::mutex mutex_;
  Lines told_;
  LoopbackServer server_;
};

TEST_F(GtkVideoAd, IsSeenOverAWidgetAndLeavesIt) {
  load(true);
  ASSERT_TRUE(ad->playIn(gtk::hostView(content)));
  ASSERT_TRUE(isHeard("start"));
  ASSERT_TRUE(runUntil([&] { return (pictureOf(window).at(200, 150) & 0xe0c0c0) == 0xe00000; })) << "red";
  EXPECT_EQ(pictureOf(window).at(200, 20), 0U) << "the ad's own ground, not the application's";
  ad->stop();
  ASSERT_TRUE(runUntil([&] { return pictureOf(window).at(200, 150) == 0x0000ff; }))
      << "the application's again";
}

TEST_F(GtkVideoAd, PlaysToItsEndAndTellsItsServers) {
  load();
  ASSERT_TRUE(ad->playIn(gtk::hostView(content)));
  ASSERT_TRUE(isHeard("end"));
  EXPECT_EQ(heard->all, (Lines{"loaded", "start", "complete", "end"}));
  const Lines wanted{"impression", "start", "firstQuartile", "midpoint", "thirdQuartile", "complete"};
  // Those that leave at one moment, all of them where the main loop comes late, may come by different connections.
  ASSERT_TRUE(runUntil([&] { return told().size() >= wanted.size(); }));
  const auto came = told();
  EXPECT_TRUE(std::ranges::is_permutation(came, wanted)) << testing::PrintToString(came);
}

// What the registry of GStreamer says, and what nobody can know.
TEST_F(GtkVideoAd, TellsWhatPlays) {
  auto& media = Platform::current().media();
  for (const auto& [type, codec] : {std::pair{"video/webm", "vp8"},
                                    {"Video/WebM", "VP8, vorbis"},
                                    {"video/webm; codecs=vp8", ""},
                                    {"", "vp8"},
                                    {"video/webm", "a-codec-of-tomorrow"},
                                    {"video/a-container-of-tomorrow", ""},
                                    {"audio/wav", ""},
                                    {"video/mkv", ""},
                                    {"", ""}})
    EXPECT_TRUE(media.canPlay(type, codec)) << type << " " << codec;
  EXPECT_TRUE(media.surelyPlays("video/webm", "vp8"));
  EXPECT_FALSE(media.surelyPlays("video/a-container-of-tomorrow", ""));
  const std::string nested = "video/webm" + std::string(40'000, '{');
  for (const auto& [type, codec] :
       {std::pair<std::string, std::string>{"application/x-nobody-plays-this", ""},
        {"application/javascript", ""},
        {"text/html", ""},
        {"not a type", ""},
        {nested, ""},
        {"video/" + std::string(100, 'a'), ""},
        {"video/webm", "vp8,vp8,vp8,vp8,vp8,vp8,vp8,vp8,vp8"},
        {"application/x-nobody-plays-this", "vp8"}})
    EXPECT_FALSE(media.canPlay(type, codec)) << type.substr(0, 40) << " " << codec;
}

TEST_F(GtkVideoAd, OverTheWindowByKeyboard) {
  load(true);
  ASSERT_TRUE(ad->playOver(controller));
  ASSERT_TRUE(isHeard("start"));
  giveKeyboard(window);
  xdotool("key m");
  ASSERT_TRUE(isHeard("muted"));
  click(window, {200, 150});
  ASSERT_TRUE(isHeard("pause"));
  xdotool("key space");
  ASSERT_TRUE(isHeard("resume"));
  ASSERT_TRUE(runUntil([&] { return ad->currentTime() > 1; }));
  xdotool("key Escape");
  ASSERT_TRUE(isHeard("end"));
  EXPECT_EQ(heard->all, (Lines{"loaded", "start", "muted", "press", "pause", "resume", "skip", "end"}));
  const auto isTold = [&](const std::string& what) {
    const auto all = told();
    return std::find(all.begin(), all.end(), what) != all.end();
  };
  EXPECT_TRUE(runUntil([&] { return isTold("click200,150") && isTold("skip"); }));
}

TEST_F(GtkVideoAd, TellsOfAScriptThatCannotBeLoaded) {
  isMeasured = true;
  load(true);
  ASSERT_TRUE(ad->playIn(gtk::hostView(content)));
  ASSERT_TRUE(isHeard("start"));
  const auto count = [&](const std::string& what) {
    const auto all = told();
    return std::count(all.begin(), all.end(), what);
  };
  ASSERT_TRUE(runUntil([&] { return count("gone-3") > 0 && count("error410") > 0; }));
  EXPECT_EQ(count("v-3") + count("v-2") + count("gone-2"), 0);
}

TEST_F(GtkVideoAd, FindsOutWhatTheNetworkCarries) {
  isLarge = true;
  load();
  EXPECT_FALSE(Platform::current().media().bandwidth());
  ASSERT_TRUE(ad->playIn(gtk::hostView(content)));
  ASSERT_TRUE(runUntil([] { return Platform::current().media().bandwidth().has_value(); }));
  EXPECT_GT(Platform::current().media().bandwidth(), 0);
}

TEST_F(GtkVideoAd, AFilmWhoseServerIsNotReachedIsNotFound) {
  for (const char* film : {"http://127.0.0.1:1/film.webm", "http://nowhere.invalid/film.webm"}) {
    SCOPED_TRACE(film);
    elsewhere = film;
    heard->all.clear();
    load();
    ASSERT_TRUE(ad->playIn(gtk::hostView(content)));
    ASSERT_TRUE(isHeard("end"));
    EXPECT_EQ(heard->all, (Lines{"loaded", "failed 401", "end"}));
  }
}

TEST_F(GtkVideoAd, GoesWithItsWindow) {
  load(true);
  ASSERT_TRUE(ad->playIn(gtk::hostView(content)));
  ASSERT_TRUE(isHeard("start"));
  gtk_widget_set_visible(GTK_WIDGET(window), FALSE);
  ASSERT_TRUE(isHeard("pause"));
  gtk_window_present(window);
  ASSERT_TRUE(isHeard("resume"));
  gtk_widget_set_visible(GTK_WIDGET(window), FALSE);
  gtk_window_set_child(window, nullptr);
  ASSERT_TRUE(isHeard("end"));
}

}  // namespace
}  // namespace velto::test
