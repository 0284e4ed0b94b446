// What a window of the toolkit knows of how the library's views are seen: the application's own widgets over
// them, popovers; and that a change is told.
#include "velto/measurement/ViewSight.h"
#include "velto/measurement/ViewabilityWatcher.h"
#include "velto/platform/Platform.h"
#include "velto/platform/UIApplication.h"

#include <gdk/x11/gdkx.h>

#include "DisplayTest.h"

namespace velto::test {
namespace {

class SightTest : public DisplayTest {
 protected:
  SightTest() {
    list_ = gtk_scrolled_window_new();
    window_ = newWindow(400, 300, list_);
    host_ = present(window_);
    runFrames(list_);
    ad_ = UIView::make();
    ad_->setFrame({{0, 100}, {400, 100}});
    host_->view()->addSubview(ad_);
    watcher_ = ViewabilityWatcher::watch([this] { return sightOf(ad_.get(), {}); }, [](const auto&) {});
  }
  ~SightTest() override {
    watcher_.reset();
    gtk_window_destroy(window_);
  }

  // Whether a watcher comes to see that much, by itself.
  bool sees(int percentage, std::vector<std::string> reasons) {
    const auto& seen = watcher_->latest();
    return runUntil([&] { return seen.percentageInView == percentage && seen.reasons == reasons; });
  }

  // Its place is told under X11 alone.
  void move(int x, int y) {
    if (isX11(window_))
      return xdotool("windowmove " + idOf(window_) + " " + std::to_string(x) + " " + std::to_string(y));
    swaymsg("[app_id=.*] move absolute position " + std::to_string(x) + " " + std::to_string(y));
  }
  void showWorkspace(int number) {
    if (isX11(window_)) return xdotool("set_desktop " + std::to_string(number - 1));
    swaymsg("workspace " + std::to_string(number));
  }

  GtkWindow* window_;
  GtkWidget* list_;
  std::shared_ptr<UIViewController> host_;
  std::shared_ptr<UIView> ad_;
  std::shared_ptr<ViewabilityWatcher> watcher_;
};

TEST_F(SightTest, AWidgetOverTheAdIsToldAndTheScreenCutsAWindow) {
  EXPECT_TRUE(sees(100, {}));
  move(-100, 0);
  runFrames(list_);
  EXPECT_TRUE(isX11(window_) ? sees(75, {"viewport"}) : sees(100, {}));
  move(0, 0);
  EXPECT_TRUE(sees(100, {}));
  auto* box = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0);  // over everything, and empty but for its child
  auto* bar = painted(100, 300, 1, 0, 0);
  gtk_box_append(GTK_BOX(box), bar);
  gtk_overlay_add_overlay(GTK_OVERLAY(gtk_window_get_child(window_)), box);
  EXPECT_TRUE(sees(75, {"obstructed"}));
  gtk_widget_set_opacity(bar, 0);
  EXPECT_TRUE(sees(100, {}));
  gtk_widget_set_visible(GTK_WIDGET(window_), FALSE);
  EXPECT_TRUE(sees(0, {"notFound"}));
}

TEST_F(SightTest, OtherWindowsOfTheApplicationCoverAndTakeOnlyTheWholeScreenAway) {
  giveKeyboard(window_);
  EXPECT_TRUE(sees(100, {}));
  auto* over = newWindow(400, 50, painted(400, 50, 1, 0, 0));
  if (!isX11(window_)) gtk_window_set_transient_for(over, window_);  // counts as in its middle
  gtk_window_present(over);
  ASSERT_TRUE(runUntil([&] { return gtk_widget_get_mapped(GTK_WIDGET(over)); }));
  if (isX11(window_)) xdotool("windowmove " + idOf(over) + " 0 150");
  EXPECT_TRUE(sees(50, {"obstructed"}));
  if (isX11(window_)) {
    xdotool("windowraise " + idOf(window_));
    EXPECT_TRUE(sees(100, {})) << "it lies below";
    xdotool("windowraise " + idOf(over));
    EXPECT_TRUE(sees(50, {"obstructed"}));
    xdotool("windowmove " + idOf(over) + " 600 600");
    EXPECT_TRUE(sees(100, {}));
  }
  gtk_window_destroy(over);
  EXPECT_TRUE(sees(100, {}));

  const auto leave = [&] {  // for another application
    G_GNUC_BEGIN_IGNORE_DEPRECATIONS
    if (isX11(window_))
      return xdotool("windowfocus " +
                     std::to_string(gdk_x11_display_get_xrootwindow(gdk_display_get_default())));
    G_GNUC_END_IGNORE_DEPRECATIONS
    swaymsg("focus parent");
  };
  leave();
  ASSERT_TRUE(runUntil([&] { return !gtk_window_is_active(window_); }));
  EXPECT_TRUE(sees(100, {})) << "seen beside other windows";
  if (!isX11(window_)) return;  // this compositor takes the keyboard from no window that fills the screen
  gtk_window_set_default_size(window_, 1280, 1024);
  EXPECT_TRUE(sees(0, {"noWindowFocus"}));
  giveKeyboard(window_);
  EXPECT_TRUE(sees(100, {}));
}

TEST_F(SightTest, AnotherWorkspaceTakesTheAdAwayAndTheApplicationIntoTheBackground) {
  std::optional<WindowManager> manager;
  if (isX11(window_)) manager.emplace();
  std::string told;
  auto& center = Platform::current().notificationCenter();
  const Handle foreground =
      center.addObserver(UIApplicationWillEnterForegroundNotification, [&](const auto&) { told += 'f'; });
  const Handle background =
      center.addObserver(UIApplicationDidEnterBackgroundNotification, [&](const auto&) { told += 'b'; });
  giveKeyboard(window_);
  EXPECT_TRUE(sees(100, {}));
  showWorkspace(2);
  ASSERT_TRUE(runUntil([&] { return !gtk_window_is_active(window_); }));
  ad_->setBackgroundColor(UIColor::blackColor());  // the next that is painted does not come to the screen
  const auto& seen = watcher_->latest();
  EXPECT_TRUE(runUntil([&] { return seen.percentageInView == 0 && seen.reasons.front() == "backgrounded"; }));
  EXPECT_TRUE(runUntil([&] { return told == "b"; }));
  showWorkspace(1);
  EXPECT_TRUE(sees(100, {}));
  EXPECT_TRUE(runUntil([&] { return told == "bf"; })) << told;
}

// Which puts frames around windows, and takes them off when it ends.
TEST_F(SightTest, AWindowManagerThatRestartsChangesNothingOfWhatIsSeen) {
  if (!isX11(window_)) GTEST_SKIP() << "a compositor takes its applications along";
  std::optional<WindowManager> manager(std::in_place);
  auto* over = newWindow(400, 50, painted(400, 50, 1, 0, 0));
  present(over);
  for (int run = 0; run < 2; ++run) {
    xdotool("windowmove " + idOf(window_) + " 0 0 windowmove " + idOf(over) + " 0 150 windowraise " +
            idOf(over));
    EXPECT_TRUE(sees(50, {"obstructed"}));
    xdotool("windowraise " + idOf(window_));
    EXPECT_TRUE(sees(100, {})) << "it lies below";
    xdotool("windowraise " + idOf(over));
    EXPECT_TRUE(sees(50, {"obstructed"}));
    manager.reset();
    xdotool("windowraise " + idOf(window_));
    EXPECT_TRUE(sees(100, {})) << "without a window manager";
    manager.emplace();
  }
  gtk_window_destroy(over);
  EXPECT_TRUE(sees(100, {}));
}

TEST_F(SightTest, SlotsLieBelowTheLayerAndATurnedOneCannotBeMeasured) {
  auto* fixed = gtk_fixed_new();
  auto* slot = gtk::adSlot({.room = CGSize{400, 200}});
  gtk_widget_set_size_request(slot, 400, 200);
  gtk_fixed_put(GTK_FIXED(fixed), slot, 0, 100);
  gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(list_), fixed);
  const auto inSlot = UIView::make();
  inSlot->setFrame({{0, 0}, {400, 200}});
  inSlot->setBackgroundColor(UIColor::blackColor());
  gtk::hostViewController(slot)->view()->addSubview(inSlot);
  ad_->setBackgroundColor(UIColor::whiteColor());
  EXPECT_TRUE(sees(100, {})) << "the layer is above";
  watcher_ = ViewabilityWatcher::watch([&] { return sightOf(inSlot.get(), {}); }, [](const auto&) {});
  EXPECT_TRUE(sees(50, {"obstructed"}));
  const auto turned = gsk_transform_rotate(nullptr, 30);
  gtk_fixed_set_child_transform(GTK_FIXED(fixed), slot, turned);
  gsk_transform_unref(turned);
  EXPECT_TRUE(runUntil([&] { return watcher_->latest().reasons.front() == "unmeasurable"; }));
  watcher_.reset();
}

TEST_F(SightTest, APopoverCoversAndGoesAgain) {
  auto* popover = gtk_popover_new();
  auto* content = gtk_label_new("over the ad");
  gtk_widget_set_size_request(content, 150, 60);
  gtk_popover_set_child(GTK_POPOVER(popover), content);
  gtk_popover_set_autohide(GTK_POPOVER(popover), FALSE);
  const GdkRectangle at = {200, 100, 1, 1};
  gtk_popover_set_pointing_to(GTK_POPOVER(popover), &at);
  gtk_widget_set_parent(popover, list_);
  EXPECT_TRUE(sees(100, {}));
  gtk_popover_popup(GTK_POPOVER(popover));
  EXPECT_TRUE(runUntil([&] {
    const auto& covers = watcher_->latest().obstructions;
    if (covers.size() != 1) return false;
    const CGRect& cover = covers.front();
    return cover.size.width >= 150 && std::abs(cover.midX() - 200) <= 2 && cover.minY() >= 100;
  })) << "where it points, once the display has put it there";
  EXPECT_LT(watcher_->latest().percentageInView, 100);
  auto* inner = gtk_popover_new();
  auto* more = gtk_label_new("over the popover");
  gtk_widget_set_size_request(more, 300, 60);
  gtk_popover_set_child(GTK_POPOVER(inner), more);
  gtk_popover_set_autohide(GTK_POPOVER(inner), FALSE);
  gtk_widget_set_parent(inner, content);
  gtk_popover_popup(GTK_POPOVER(inner));
  EXPECT_TRUE(runUntil([&] { return watcher_->latest().obstructions.size() == 2; }));
  gtk_widget_unparent(inner);
  gtk_popover_popdown(GTK_POPOVER(popover));
  EXPECT_TRUE(sees(100, {}));
  gtk_widget_unparent(popover);
}

}  // namespace
}  // namespace velto::test
