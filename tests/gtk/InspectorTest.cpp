// The page of the toolkit's inspector: it comes by itself, shows what happened, acts, and sleeps.
#include "velto/gtk/inspector/InspectorPage.h"

#include "../../examples/demo/Inspector.h"
#include "DisplayTest.h"

namespace velto::test {
namespace {

TEST_F(DisplayTest, TheInspectorHasAPageThatShowsActsAndSleeps) {
  gtk::install(
      {.applicationIdentifier = "org.example.display", .hostMap = {{"ads.velto.example", "127.0.0.1:1"}}});
  auto* window = newWindow(400, 300);
  const auto host = present(window);
  const auto told = std::make_shared<RecordingDelegate>();
  told->host = host;
  auto* page = demo::openInspector();
  ASSERT_TRUE(page);
  const auto& inner = gtk::InspectorPage::of(page);
  const auto seen = [page](const std::string& text) {
    EXPECT_TRUE(runUntil([&] { return demo::says(page, text); })) << text;
  };
  const auto sentence = [](auto reason) { return std::string(wordsOf(reason).sentence); };
  const auto press = [page](const char* button) {
    auto* found = demo::buttonIn(page, button);
    ASSERT_TRUE(found) << button;
    g_signal_emit_by_name(found, "clicked");
  };
  seen("No banner and no interstitial so far");

  auto banner =
      VeltoBannerViewController::initWithDelegate(told, VeltoBannerSize320x50, VeltoBannerPositionTop);
  banner->setPlacement("home");
  seen("banner · empty");
  press("page-process-crashed");
  seen("There is no page that could fail");
  press("status-no-fill");
  EXPECT_TRUE(runUntil([&] { return told->heardLast("fail 0"); }));
  seen(sentence(VeltoAdEndReason::StatusNoFill));
  press("_Reload");
  EXPECT_TRUE(runUntil([&] { return inner.isAwake(); })) << "while it is on its way";
  EXPECT_TRUE(runUntil([&] { return told->heardLast("fail 4"); }));
  seen("Load 2");
  seen("✗ " + sentence(VeltoAdEndReason::NotConnected));
  EXPECT_NE(inner.json().find(R"("placement": "home")"), std::string::npos) << inner.json();
  press("_Copy as JSON");
  auto* clipboard = gtk_widget_get_clipboard(page);
  const auto* text = static_cast<const char*>(nullptr);
  GValue copied = G_VALUE_INIT;
  g_value_init(&copied, G_TYPE_STRING);
  EXPECT_TRUE(gdk_content_provider_get_value(gdk_clipboard_get_content(clipboard), &copied, nullptr));
  text = g_value_get_string(&copied);
  EXPECT_EQ(text ? text : "", inner.json());
  g_value_unset(&copied);

  // Nothing is drawn once all is said, however often other windows are.
  EXPECT_TRUE(runUntil([&] { return !inner.isAwake(); }));
  int frames = 0;
  auto* clock = gtk_widget_get_frame_clock(page);
  const auto count = +[](GdkFrameClock*, gpointer counted) { ++*static_cast<int*>(counted); };
  const auto handler = g_signal_connect(clock, "before-paint", G_CALLBACK(count), &frames);
  EXPECT_TRUE(runUntil([&] {
    frames = 0;
    runFrames(GTK_WIDGET(window), 30);
    return frames == 0;
  }));
  g_signal_handler_disconnect(clock, handler);

  // Chosen in the inspector, an ad is chosen here; and what has gone can be read on.
  const auto other =
      VeltoBannerViewController::initWithDelegate(told, VeltoBannerSize320x50, VeltoBannerPositionBottom);
  other->vc()->fetchBannerSuccess(VeltoAd::adWithHTML("<p>", {}, nullptr));
  seen("banner · loading");
  auto* widget = gtk::widgetOf(*other->vc());
  g_object_set(page, "object", widget, nullptr);
  EXPECT_EQ(inner.json().find("home"), std::string::npos);
  banner.reset();
  seen("banner · gone");
  demo::closeInspector();
  gtk_window_destroy(window);
}

}  // namespace
}  // namespace velto::test
