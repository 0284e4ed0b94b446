// The web process that is there before an ad is asked for: when it comes, who gets it, and when none comes.
#include "velto/platform/NSUserDefaults.h"

#include <algorithm>

#include "../support/WebProcesses.h"
#include "DisplayTest.h"

namespace velto::test {
namespace {

class EarlyStartTest : public DisplayTest {
 protected:
  EarlyStartTest() {
    g_signal_connect(server.get(), "incoming", G_CALLBACK(incoming), &connections);
    install();
    delegate->host = gtk::hostViewController(window);
    EXPECT_TRUE(runUntil([] { return webProcesses().empty(); })) << "those of the case before leave";
  }
  ~EarlyStartTest() override {
    banner.reset();
    gtk_window_destroy(window);
  }
  void install() {
    gtk::install({.applicationIdentifier = "org.example.display",
                  .hostMap = {{"ads.velto.example", "127.0.0.1:" + std::to_string(port)},
                              {"track.velto.example", "127.0.0.1:1"}}});
  }
  void makeBanner() {
    banner = VeltoBannerViewController::initWithDelegate(delegate, VeltoBannerSize320x50,
                                                         VeltoBannerPositionBottom);
  }
  // After a load, which nobody answers.
  void showAd() {
    banner->vc()->fetchBannerSuccess(VeltoAd::adWithHTML(
        "<script>location.href = 'velto://loadFinished'</script>", {}, nullptr, std::nullopt));
    ASSERT_TRUE(runUntil([&] { return std::ranges::count(delegate->heard, "finish") == 1; }));
  }
  void showWindow() {
    present(window);
    runFrames(GTK_WIDGET(window));
    bool isIdle = false;  // after all that waits for an idle loop
    g_idle_add_full(
        G_PRIORITY_LOW + 1, [](gpointer flag) -> gboolean { return !(*static_cast<bool*>(flag) = true); },
        &isIdle, nullptr);
    ASSERT_TRUE(runUntil([&] { return isIdle; }));
  }
  bool comesUp() const {
    return runUntil([] { return webProcesses().size() == 1; });
  }

  static gboolean incoming(GSocketService*, GSocketConnection*, GObject*, int* connections) noexcept {
    ++*connections;
    return TRUE;
  }

  const GPtr<GSocketService> server = GPtr<GSocketService>::adopt(g_socket_service_new());
  const guint port = g_socket_listener_add_any_inet_port(G_SOCKET_LISTENER(server.get()), nullptr, nullptr);
  int connections = 0;
  GtkWindow* window = newWindow(400, 300);
  std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
  std::shared_ptr<VeltoBannerViewController> banner;
};

TEST_F(EarlyStartTest, ComesAfterTheFirstFrameForABannerThatIsThereAndIsItsFirst) {
  VeltoFramework::addVeltoKey("early");
  showWindow();
  EXPECT_EQ(webProcesses().size(), 0u) << "nobody will show an ad";
  EXPECT_EQ(connections, 0);
  makeBanner();
  ASSERT_TRUE(comesUp());
  EXPECT_TRUE(runUntil([&] { return connections == 1; }));
  const auto early = webProcesses();
  banner->load();
  showAd();
  EXPECT_EQ(webProcesses(), early);
}

TEST_F(EarlyStartTest, ComesNoMoreOnceAnAdWasAskedFor) {
  VeltoFramework::addVeltoKey("early");
  makeBanner();
  banner->load();
  showWindow();
  showAd();
  EXPECT_TRUE(comesUp()) << "the ad's own, and no other";
}

TEST_F(EarlyStartTest, AnInterstitialIsReadyBeforeItsProcessWhichIsUpBeforeItIsShown) {
  present(window);
  runFrames(GTK_WIDGET(window));
  const auto interstitial = VeltoInterstitialViewController::initWithDelegate({});
  interstitial->load();
  interstitial->vc()->fetchBannerSuccess(VeltoAd::adWithHTML("<p>ad", {}, nullptr, std::nullopt));
  EXPECT_TRUE(interstitial->isReady());
  EXPECT_EQ(webProcesses().size(), 0u);
  EXPECT_TRUE(comesUp());
}

TEST_F(EarlyStartTest, ComesWithTheKeyWhereAnEarlierRunShowedAnAd) {
  VeltoFramework::addVeltoKey("early");
  Platform::current().standardUserDefaults().setObject("kVeltoUserAgentKey", std::string("an engine"));
  gtk::uninstall();
  install();
  VeltoFramework::addVeltoKey("early");
  EXPECT_EQ(webProcesses().size(), 0u) << "not before the first frame";
  present(window);
  EXPECT_TRUE(comesUp());
}

}  // namespace
}  // namespace velto::test
