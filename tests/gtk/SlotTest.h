// An ad in a slot of a window: what it shows, where it stands, and what is measured of it.
#pragma once

#include "velto/measurement/ViewSight.h"
#include "velto/measurement/Viewability.h"
#include "velto/platform/ui/WKWebView.h"

#include "DisplayTest.h"

namespace velto::test {

class SlotTest : public DisplayTest {
 protected:
  static constexpr uint32_t red = 0xff0000;
  // The ad is red, but for what covers it; its script counts what happened to it.
  static constexpr char page[] =
      "<body style='margin:0;background:#f00'><script>var ticks=0;setInterval(()=>++ticks,10);"
      "var born=Math.random()</script>";

  SlotTest() {
    window = newWindow(480, 600);
    box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    slot = gtk::adSlot();
  }
  ~SlotTest() override {
    banner.reset();
    if (window) gtk_window_destroy(window);
  }

  void present(GtkWidget* content) {
    gtk_window_set_child(window, content);
    gtk_window_present(window);
    ASSERT_TRUE(runUntil([&] { return gtk_widget_get_width(content) > 0; }));
  }
  void show(const std::string& html, CGSize size, bool richMedia = false) {
    host = gtk::hostViewController(slot);
    delegate->host = host;
    if (!banner)
      banner = VeltoBannerViewController::initWithDelegate(delegate, VeltoBannerSize320x50,
                                                           VeltoBannerPositionTop);
    auto ad = VeltoAd::adWithHTML(html, {}, nullptr);
    ad->size = size;
    if (richMedia) ad->sourceType = VeltoAdSourceMRAID;
    banner->vc()->fetchBannerSuccess(ad);
    // The empty page before it is complete, too.
    ASSERT_TRUE(runUntil([&] {
      return value("document.readyState === 'complete' && !!document.body.firstChild") == JSON(true);
    }));
    ASSERT_TRUE(isIn(slot));
    runFrames(GTK_WIDGET(window));
  }
  // Looks once a frame: who asks the page all the time leaves the toolkit no time to paint.
  bool becomes(const std::string& script, const JSON& expected) {
    return runUntil([&] {
      runFrames(GTK_WIDGET(window), 1);
      return value(script) == expected;
    });
  }
  JSON value(const std::string& script) {
    std::optional<JSON> result;
    bool done = false;
    const auto& view = banner->vc()->webView();
    view->evaluateJavaScript(script, [&](auto answer, auto) {
      result = std::move(answer);
      done = true;
    });
    EXPECT_TRUE(runUntil([&] { return done; })) << script;
    return result.value_or(JSON());
  }
  GtkWidget* engine() {
    auto* found = find(GTK_WIDGET(window), "WebKitWebView");
    return found || !slot ? found : find(slot, "WebKitWebView");
  }
  bool isIn(GtkWidget* widget) {
    return runUntil([&] { return engine() && gtk_widget_is_ancestor(engine(), widget); });
  }
  CGRect boundsOf(GtkWidget* widget) {
    graphene_rect_t bounds;
    if (!gtk_widget_compute_bounds(widget, GTK_WIDGET(window), &bounds)) return {};
    return {{bounds.origin.x, bounds.origin.y}, {bounds.size.width, bounds.size.height}};
  }
  bool stands(GtkWidget* widget, const CGRect& frame) {
    return runUntil([&] { return boundsOf(widget) == frame; });
  }
  Viewability seen() { return viewabilityOf(sightOf(banner->vc()->webView().get(), {})); }
  // The share that is measured, and why, agree with the pixels that can be seen.
  bool agrees(const std::vector<std::string>& reasons, CGSize size = {320, 50}) {
    const bool agreed = runUntil([&] {
      const double share = 100 * pictureOf(window).count(red) / (size.width * size.height);
      const auto now = seen();
      return now.reasons == reasons && std::abs(now.percentageInView - share) <= 2;
    });
    if (!agreed) {
      ADD_FAILURE() << seen().percentageInView << "% measured, " << pictureOf(window).count(red) << " pixels";
      for (const auto& reason : seen().reasons) ADD_FAILURE() << reason;
    }
    return agreed;
  }

  GtkWindow* window;
  GtkWidget* box;
  GtkWidget* slot;
  std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
  std::shared_ptr<UIViewController> host;
  std::shared_ptr<VeltoBannerViewController> banner;
};

}  // namespace velto::test
