// Several ads at once in the real engine: which of them live in one process, and what comes of that.
#include <algorithm>
#include <csignal>
#include <set>

#include "../support/LoopbackServer.h"
#include "../support/WebProcesses.h"
#include "SlotTest.h"

namespace velto::test {
namespace {

class ManyTest : public SlotTest {
 protected:
  struct Place {
    std::shared_ptr<RecordingDelegate> told = std::make_shared<RecordingDelegate>();
    GtkWidget* slot;
    std::shared_ptr<UIViewController> host;
    std::shared_ptr<VeltoBannerViewController> banner;

    WebPageUse use() const { return banner->vc()->webView()->webPeer().use(); }
    uint64_t process() const { return use().process; }
    bool hears(const std::string& what) const {
      return runUntil([&] { return told->heardLast(what); });
    }
    JSON value(const std::string& script) const {
      std::optional<JSON> result;
      banner->vc()->webView()->evaluateJavaScript(
          script, [&](const auto& answer, const auto&) { result = answer.value_or(JSON()); });
      EXPECT_TRUE(runUntil([&] { return result.has_value(); })) << script;
      return result.value_or(JSON());
    }
  };

  ManyTest() {
    EXPECT_TRUE(runUntil([] { return webProcesses().empty(); })) << "those of the case before leave";
    gtk_box_append(GTK_BOX(box), slot);
    present(box);
    // What is brought up for a first load() is not asked for here, and would stand beside the ads.
    Platform::current().views().prepareWebContent(nullptr, WebContentUse::Later);
  }

  Place place() {
    Place made;
    made.slot = gtk::adSlot();
    gtk_box_append(GTK_BOX(box), made.slot);
    made.told->host = made.host = gtk::hostViewController(made.slot);
    made.banner =
        VeltoBannerViewController::initWithDelegate(made.told, VeltoBannerSize320x50, VeltoBannerPositionTop);
    return made;
  }
  static void showIn(const Place& place, const std::string& site, const std::string& html = "",
                     VeltoAdSourceType type = VeltoAdSourceMarkup) {
    auto ad =
        VeltoAd::adWithHTML(html + "<p>ad<script>location.href='velto://loadFinished'</script>", {}, nullptr);
    ad->size = {320, 50};
    ad->sourceType = type;
    ad->site = site;
    place.told->heard.clear();
    place.banner->vc()->fetchBannerSuccess(ad);
  }
  // Until its process has been asked for.
  GtkWidget* startIn(const Place& place) {
    showIn(place, "");
    EXPECT_TRUE(runUntil([&] {
      gboolean isLoading = FALSE;
      if (auto* view = find(place.slot, "WebKitWebView"))
        g_object_get(view, "is-loading", &isLoading, nullptr);
      return isLoading;
    }));
    return find(place.slot, "WebKitWebView");
  }
  // As the next load does, whether the process still answers.
  static void askOf(const Place& place) {
    if (const auto& page = place.banner->vc()->webView())
      Platform::current().views().prepareWebContent(page.get(), WebContentUse::Later);
  }
};

TEST_F(ManyTest, AViewThatIsLetGoWhileItsProcessStartsLeavesNothing) {
  auto one = place();
  auto* view = startIn(one);
  bool isFreed = false;
  g_object_set_data_full(G_OBJECT(view), "freed", &isFreed,
                         [](gpointer it) { *static_cast<bool*>(it) = true; });
  askOf(one);
  one.banner.reset();
  EXPECT_TRUE(runUntil([&] { return isFreed; }));
}

TEST_F(ManyTest, AProcessThatStandsStillWhileItStartsCostsOneAd) {
  const auto resting = place(), starting = place(), one = place();
  showIn(resting, "");
  ASSERT_TRUE(resting.hears("finish"));
  askOf(resting);
  startIn(starting);
  askOf(starting);
  ASSERT_TRUE(starting.hears("finish"));
  const auto others = webProcesses();
  startIn(one);
  pid_t its = 0;
  ASSERT_TRUE(runUntil([&] {
    for (const auto process : webProcesses())
      if (std::find(others.begin(), others.end(), process) == others.end()) its = process;
    return its != 0;
  }));
  kill(its, SIGSTOP);
  EXPECT_TRUE(runUntil([&] {
    askOf(one);  // its page may have been there before
    return one.told->heardLast("fail 1");
  }));
  kill(its, SIGCONT);  // one that stood still before it was heard of ends by itself
  EXPECT_EQ(one.told->lastError->reason, VeltoAdEndReason::PageProcessHung);
  for (const auto* asked : {&resting, &starting})  // longer ago
    EXPECT_EQ(asked->told->heard, Heard{"finish"}) << "it had answered";
  showIn(one, "");
  EXPECT_TRUE(one.hears("finish"));
}

TEST_F(ManyTest, PlainAdsOfASiteShareAProcessAndFallAndRiseWithIt) {
  const Place a = place(), b = place(), c = place(), passback = place(), other = place(), rich = place(),
              strict = place();
  strict.banner->setHeavyAdPolicy(VeltoHeavyAdPolicyReplace);
  for (const auto* one : {&a, &b, &c}) showIn(*one, "ads.example");
  ASSERT_TRUE(a.hears("finish") && b.hears("finish") && c.hears("finish"));
  const auto shared = webProcesses();
  ASSERT_EQ(shared.size(), 1U);
  showIn(strict, "ads.example");
  showIn(passback, "");
  showIn(other, "other.example");
  showIn(rich, "ads.example", "", VeltoAdSourceMRAID);
  std::set<uint64_t> processes;
  for (const auto* one : {&a, &b, &c, &strict, &passback, &other, &rich}) {
    ASSERT_TRUE(one->hears("finish"));
    ASSERT_TRUE(runUntil([&] { return one->process() != 0; }));
    processes.insert(one->process());
  }
  EXPECT_EQ(processes.size(), 5U);
  EXPECT_EQ(webProcesses().size(), 5U);
  EXPECT_EQ(a.process(), b.process());
  EXPECT_EQ(a.process(), c.process());
  EXPECT_TRUE(a.use().isShared);

  kill(shared[0], SIGKILL);
  for (const auto* one : {&a, &b, &c}) {
    EXPECT_TRUE(one->hears("fail 1"));
    EXPECT_EQ(one->told->lastError->reason, VeltoAdEndReason::PageProcessCrashed);
    EXPECT_TRUE(runUntil([&] { return one->banner->state() == VeltoBannerStateEmpty; }));
  }
  for (const auto* one : {&strict, &passback, &other, &rich}) EXPECT_EQ(one->told->heard, Heard{"finish"});
  for (const auto* one : {&a, &b}) {
    showIn(*one, "ads.example");
    EXPECT_TRUE(one->hears("finish"));
  }
  EXPECT_TRUE(runUntil([&] { return a.process() != 0 && a.process() == b.process(); }));

  // One that hangs holds up its neighbours. The engine finds out when the next page is to be loaded there; with the one
  // after that all of them go, and the placement goes on.
  b.banner->vc()->webView()->evaluateJavaScript("for (;;);", nullptr);
  showIn(a, "ads.example");
  ASSERT_TRUE(runUntil([&] {
    gboolean isResponsive = TRUE;
    g_object_get(find(a.slot, "WebKitWebView"), "is-web-process-responsive", &isResponsive, nullptr);
    return !isResponsive;
  }));
  showIn(a, "ads.example");
  EXPECT_TRUE(b.hears("fail 1"));
  EXPECT_EQ(b.told->lastError->reason, VeltoAdEndReason::PageProcessEnded);
  EXPECT_TRUE(a.hears("finish"));
}

// Not even what stands in a frame of a third party that both of them have.
TEST_F(ManyTest, AdsOfTwoNetworksHaveNoStorageInCommon) {
  gtk::install({.applicationIdentifier = "org.example.many", .mayReachLocalNetwork = true});
  LoopbackServer server;
  server->Get("/frame", [](const auto&, auto& response) {
    response.set_content(
        "<script>const call = new BroadcastChannel('call'); let heard = 0; call.onmessage = () => ++heard;"
        "onmessage = event => { if (event.data) { localStorage.kept = 1; document.cookie = 'kept=1'; "
        "call.postMessage(1) }"
        "  event.source.postMessage(localStorage.length + document.cookie + heard, '*') }</script>",
        "text/html");
  });
  server.start();
  const std::string html =
      "<iframe src='" + server.address("/frame") +
      "'></iframe><script>let found; onmessage = event => { found = event.data }</script>";
  const Place a = place(), b = place();
  showIn(a, "ads.example", html);
  showIn(b, "", html);
  const auto ask = [](const Place& place, int writes) {
    JSON found;
    EXPECT_TRUE(runUntil([&] {
      place.value("frames[0].postMessage(" + std::to_string(writes) + ", '*')");
      return (found = place.value("found")).string() != nullptr;
    }));
    place.value("found = undefined");
    return found;
  };
  ASSERT_TRUE(a.hears("finish") && b.hears("finish"));
  EXPECT_NE(ask(a, 1), JSON("00"));
  EXPECT_EQ(ask(b, 0), JSON("00"));
}

}  // namespace
}  // namespace velto::test
