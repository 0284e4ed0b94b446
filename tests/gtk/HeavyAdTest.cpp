// Pages that harm the device, in the real engine: each is found out with figures that the kernel and the server share,
// and an honest one is not. Limits are low, so that nobody waits for the true ones.
#include "velto/timeline/LoadRecord.h"

#include <algorithm>
#include <fstream>

#include "../support/LoopbackServer.h"
#include "../support/WebProcesses.h"
#include "SlotTest.h"

namespace velto::test {
namespace {

using Limit = VeltoAdLimit;

class HeavyAdTest : public SlotTest {
 protected:
  HeavyAdTest() {
    EXPECT_TRUE(runUntil([] { return webProcesses().empty(); })) << "those of the case before leave";
    gtk::install({.applicationIdentifier = "org.example.heavy", .mayReachLocalNetwork = true});
    VeltoFramework::addVeltoKey("heavy");
    gtk_box_append(GTK_BOX(box), slot);
    auto* below = gtk_label_new("below");
    gtk_widget_set_size_request(below, 100, 5000);
    gtk_box_append(GTK_BOX(box), below);
    gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(list), box);
    present(list);
  }
  void showPage(const std::string& script, VeltoHeavyAdPolicy policy = VeltoHeavyAdPolicyReport) {
    host = gtk::hostViewController(slot);
    delegate->host = host;
    banner =
        VeltoBannerViewController::initWithDelegate(delegate, VeltoBannerSize320x50, VeltoBannerPositionTop);
    banner->setHeavyAdLimits(limits);
    banner->setHeavyAdPolicy(policy);
    loadPage(script);
  }
  void loadPage(const std::string& script) {
    banner->load();  // which nobody answers; what was started for it is the ad's below
    const LoadScope scope(banner->vc()->placement().begin(VeltoAskedBy::Application));
    auto ad = VeltoAd::adWithHTML(
        "<div id=d>ad</div><script>" + script + ";location.href='velto://loadFinished'</script>", {},
        nullptr);
    ad->size = {320, 50};
    banner->vc()->fetchBannerSuccess(ad);
    banner->adWeight();  // a host that asks before there is anything to weigh
    if (comesLate) g_signal_connect(engine(), "load-changed", G_CALLBACK(standStill), nullptr);
    ASSERT_TRUE(runUntil([&] { return std::ranges::count(delegate->heard, "finish") == 1; }));
    delegate->heard.clear();
  }
  std::optional<VeltoAdExcess> found() const {
    const auto told = banner->veltoAdTimeline().back();
    const auto* entry = told.first(VeltoTimelineKind::Heavy);
    return entry ? std::optional(std::get<VeltoAdExcess>(entry->detail)) : std::nullopt;
  }
  bool isFound(Limit limit) const {
    return runUntil([&] { return found() && found()->limit == limit; });
  }
  std::string weighed() const {
    const auto now = use();
    std::ostringstream text;
    text << now.processorSeconds.value_or(0) << " s of " << now.pages << " pages, touched " << now.touched;
    return text.str();
  }
  void scrollTo(double place) {
    gtk_adjustment_set_value(gtk_scrolled_window_get_vadjustment(GTK_SCROLLED_WINDOW(list)), place);
  }
  WebPageUse use() const { return banner->vc()->webView()->webPeer().use(); }
  // From the kernel's own files: seconds of the whole process in user mode and in its own, and bytes.
  static double processorSeconds() {
    std::ifstream file("/proc/" + std::to_string(webProcesses().at(0)) + "/stat");
    std::string line;
    std::getline(file, line);
    std::istringstream rest(line.substr(line.rfind(')') + 2));
    std::string skipped;
    double user = 0, kernel = 0;
    for (int i = 0; i < 11; ++i) rest >> skipped;
    rest >> user >> kernel;
    return (user + kernel) / static_cast<double>(sysconf(_SC_CLK_TCK));
  }
  static double memoryBytes() {
    std::ifstream file("/proc/" + std::to_string(webProcesses().at(0)) + "/statm");
    double size = 0, resident = 0, shared = 0;
    file >> size >> resident >> shared;
    return (resident - shared) * static_cast<double>(sysconf(_SC_PAGESIZE));
  }

  // From the load's start on, as on a busy machine, until the page has what it wants.
  static void standStill(GtkWidget*, int event, gpointer) noexcept {
    const auto patience = g_get_monotonic_time() + 60 * G_TIME_SPAN_SECOND;
    while (event == 0 && memoryBytes() < 100 << 20 && g_get_monotonic_time() < patience) g_thread_yield();
  }

  GtkWidget* list = gtk_scrolled_window_new();
  VeltoHeavyAdLimits limits;
  bool comesLate = false;  // the main loop
};

TEST_F(HeavyAdTest, APageThatSpins) {
  limits.processorPeakSeconds = 0.5;
  showPage(
      "const {port1, port2} = new MessageChannel();"
      "port1.onmessage = () => port2.postMessage(0);"
      "onmessage = () => { onmessage = null; port2.postMessage(0) }",
      VeltoHeavyAdPolicyReplace);
  ASSERT_TRUE(runUntil([&] { return use().processorSeconds > 0; }));
  const double before = processorSeconds();
  const auto told = use();
  const double after = processorSeconds();
  constexpr double tick = 0.02;
  EXPECT_GE(*told.processorSeconds, before - tick);
  EXPECT_LE(*told.processorSeconds, after + tick);
  EXPECT_GT(*told.mainThreadSeconds, 0);
  EXPECT_LE(*told.mainThreadSeconds, after + tick);
  EXPECT_GT(*told.wakeUps, 0U);
  value("postMessage(0); 0");
  ASSERT_TRUE(isFound(Limit::ProcessorPeak)) << weighed();
  EXPECT_EQ(banner->veltoAdTimeline().back().end, VeltoAdEndReason::PageTooHeavy);
  EXPECT_TRUE(runUntil([] { return webProcesses().empty(); })) << "closed, it uses nothing";
  EXPECT_EQ(std::ifstream("/proc/self/timers").peek(), EOF) << "nor does the kernel watch it";
}

TEST_F(HeavyAdTest, APageThatLoadsMuch) {
  LoopbackServer server;
  size_t sent = 0;
  server->Get("/part", [&](const auto& request, auto& response) {
    response.set_header("Access-Control-Allow-Origin", "*");
    response.set_header("Cache-Control", "no-store");
    response.set_content(std::string(100'000, 'x'), "application/octet-stream");
    if (request.method == "GET") sent += 100'000;
  });
  server.start();
  limits.networkBytes = 450'000;
  showPage("(async () => { await fetch('" + server.address("/part") +
           "', {method: 'HEAD'});"
           "for (let i = 0; i < 8; ++i) await (await fetch('" +
           server.address("/part") + "')).arrayBuffer(); d.textContent = 'all' })()");
  ASSERT_TRUE(isFound(Limit::Network));
  ASSERT_TRUE(runUntil([&] { return value("d.textContent") == JSON("all"); }));
  EXPECT_TRUE(runUntil([&] { return banner->adWeight()->networkBytes == sent; })) << sent;
}

TEST_F(HeavyAdTest, APageThatLeaks) {
  limits.memoryBytes = uint64_t{60} << 20;
  comesLate = true;
  // It is weighed again after some more work only.
  showPage(
      "window.kept = []; for (let i = 0; i < 10; ++i) kept.push(new Uint8Array(10 << 20).fill(i + 1));"
      "setInterval(() => { for (const end = performance.now() + 20; performance.now() < end;); }, 50)");
  ASSERT_TRUE(isFound(Limit::Memory));
  ASSERT_TRUE(runUntil([&] { return value("kept.length == 10") == JSON(true); }));
  const auto told = static_cast<double>(*use().memoryBytes);
  EXPECT_NEAR(told, memoryBytes(), 0.2 * told);
  // The limit may have been found crossed with part of it only; what is grown later is on the scales with the next look.
  const auto weighs = [&] { return static_cast<double>(*banner->adWeight()->memoryBytes); };
  EXPECT_TRUE(runUntil([&] { return weighs() > 80 << 20; })) << weighs();
  EXPECT_LT(weighs(), 120 << 20);
}

// The engine stops what animates, and what goes on nevertheless is found out.
TEST_F(HeavyAdTest, PagesThatAreScrolledAway) {
  limits.unseenProcessorSeconds = 0.1;
  limits.processorPeakSeconds = 1000;
  showPage(
      "var frames = 0; requestAnimationFrame(function next() { d.textContent = ++frames;"
      "requestAnimationFrame(next) }); 0");
  ASSERT_TRUE(becomes("frames > 2", JSON(true)));
  scrollTo(3000);
  ASSERT_TRUE(becomes("document.visibilityState", JSON("hidden")));
  const auto stopped = value("frames");
  EXPECT_EQ(value("frames"), stopped);
  scrollTo(0);
  ASSERT_TRUE(becomes("document.visibilityState + (frames > " + std::to_string(int(*stopped.number())) + ")",
                      JSON("visibletrue")));
  EXPECT_FALSE(found());
  // It leaves its picture, and lives on. It comes back also where nothing else in the window is drawn anew, as when what
  // covered an ad has gone.
  value("document.body.style.background = 'red'");
  auto& peer = banner->vc()->webView()->webPeer();
  const auto count = [&](uint32_t color) {
    return pictureOf(GTK_WINDOW(gtk_widget_get_root(list))).count(color);
  };
  ASSERT_TRUE(runUntil([&] { return count(red) > 1000; }));
  peer.setInSight(false);
  ASSERT_TRUE(runUntil([&] { return use().hidden; }));
  value("document.body.style.background = '#0f0'");
  runFrames(list);
  EXPECT_GT(count(red), 1000);
  peer.setInSight(true);
  EXPECT_TRUE(runUntil([&] { return count(0x00ff00) > 1000 && count(red) == 0; }));

  showPage(
      "const {port1, port2} = new MessageChannel(); var times = 0;"
      "port1.onmessage = () => { d.textContent = ++times; port2.postMessage(0) }; port2.postMessage(0)");
  scrollTo(3000);
  ASSERT_TRUE(isFound(Limit::Unseen));
}

// It takes no other ad along, nor does it stay.
TEST_F(HeavyAdTest, APageThatHangs) {
  const auto hangs = [&] {
    showPage("onmessage = () => { for (;;); }");
    value("postMessage(0); 0");
    return runUntil([&] { return use().processorSeconds > 0.5; });
  };
  ASSERT_TRUE(hangs());
  const auto process = webProcesses();
  loadPage("0");  // asked for, the page's answer does not come
  ASSERT_TRUE(runUntil([] { return webProcesses().size() == 1; }));
  EXPECT_NE(webProcesses(), process);

  ASSERT_TRUE(hangs());
  banner->load();
  EXPECT_TRUE(runUntil([&] { return delegate->heardLast("fail 1"); }));
  const auto ended = banner->veltoAdTimeline();
  EXPECT_TRUE(std::ranges::any_of(
      ended, [](const auto& told) { return told.end == VeltoAdEndReason::PageProcessHung; }));
  EXPECT_TRUE(runUntil([] { return webProcesses().empty(); }));
}

// The machine is busy, the page is not. And of two that start at once each has its own figures.
TEST_F(HeavyAdTest, NoneForTheWorkOfOthers) {
  limits.processorSeconds = 0.5;
  std::vector<std::unique_ptr<Process>> loops;
  for (int i = 0; i < 8; ++i)
    loops.push_back(std::make_unique<Process>(std::vector<std::string>{"sh", "-c", "while :; do :; done"}));
  showPage("var ticks = 0; setInterval(() => ++ticks, 50)");
  const auto quiet = banner;
  auto* other = gtk::adSlot();
  gtk_box_prepend(GTK_BOX(box), other);
  slot = other;
  delegate = std::make_shared<RecordingDelegate>();
  showPage(
      "const {port1, port2} = new MessageChannel();"
      "port1.onmessage = () => port2.postMessage(0); port2.postMessage(0)");
  ASSERT_TRUE(isFound(Limit::Processor));
  EXPECT_FALSE(quiet->veltoAdTimeline().back().first(VeltoTimelineKind::Heavy));
  EXPECT_TRUE(quiet->adWeight()->processorSeconds) << "each knows its process";
}

}  // namespace
}  // namespace velto::test
