// Ads in slots: the room they ask for, where they go when that is not enough, and what of the toolkit's own
// ways they take part in.
#include "SlotTest.h"

#include "velto/platform/Platform.h"
#include "velto/platform/UIDevice.h"

#include <map>

#include "FoldedSplit.h"

namespace velto::test {
namespace {

TEST_F(SlotTest, AsksForItsAdsSizeAndForNoneWithoutOne) {
  auto* below = painted(10, 10, 0, 0, 1);
  gtk_box_append(GTK_BOX(box), slot);
  gtk_box_append(GTK_BOX(box), below);
  gtk_box_set_spacing(GTK_BOX(box), 20);
  present(box);
  gtk_widget_set_visible(slot, TRUE);  // as those do who show all they have
  EXPECT_TRUE(stands(below, {{0, 0}, {480, 10}})) << "nor for space around it";
  show(page, {320, 50});
  EXPECT_TRUE(stands(below, {{0, 70}, {480, 10}}));
  EXPECT_TRUE(stands(engine(), {{80, 0}, {320, 50}}));
  gtk_box_set_spacing(GTK_BOX(box), 0);
  show(page, {300, 250});
  EXPECT_TRUE(stands(below, {{0, 250}, {480, 10}}));

  show(page, {728, 90});  // wider than the window may become
  EXPECT_TRUE(runUntil([&] { return boundsOf(engine()).size.width == 480; })) << "it is shown smaller";
  EXPECT_NEAR(boundsOf(below).minY(), 90 * 480 / 728.0, 1);
  int least = 0;
  gtk_widget_measure(slot, GTK_ORIENTATION_VERTICAL, -1, &least, nullptr, nullptr, nullptr);
  EXPECT_LT(least, 59) << "the toolkit warns of who needs more than it has";
  EXPECT_EQ(value("innerWidth"), JSON(728)) << "the page knows nothing of it";
  EXPECT_EQ(seen().percentageInView, 100);

  banner->removeBanner();
  EXPECT_TRUE(stands(below, {{0, 0}, {480, 10}}));
  gtk_box_remove(GTK_BOX(box), below);
  auto* kept = gtk::adSlot({.room = CGSize{320, 50}});
  gtk_box_append(GTK_BOX(box), kept);
  EXPECT_TRUE(stands(kept, {{0, 0}, {480, 50}})) << "or the room that it is told to keep";
  gtk::setSlotRoom(kept, std::nullopt);
  EXPECT_TRUE(runUntil([&] { return !gtk_widget_get_mapped(kept); }));
  gtk::setSlotRoom(kept, CGSize{300, 250});
  EXPECT_TRUE(stands(kept, {{0, 0}, {480, 250}}));
}

TEST_F(SlotTest, MovesWithItsPage) {
  auto* other = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_widget_set_margin_top(other, 40);
  gtk_box_append(GTK_BOX(box), slot);
  gtk_box_append(GTK_BOX(box), other);
  present(box);
  show(page, {320, 50});
  const JSON born = value("born");
  g_object_ref(slot);
  gtk_box_remove(GTK_BOX(box), slot);
  gtk_box_append(GTK_BOX(other), slot);
  EXPECT_TRUE(stands(engine(), {{80, 40}, {320, 50}}));

  auto* second = GTK_WINDOW(adw_window_new());
  gtk_window_set_default_size(second, 480, 100);
  gtk_box_remove(GTK_BOX(other), slot);
  auto* content = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_box_append(GTK_BOX(content), slot);
  adw_window_set_content(ADW_WINDOW(second), content);
  gtk_window_present(second);
  std::swap(window, second);
  EXPECT_TRUE(runUntil([&] { return gtk::hostViewController(slot)->view()->isInWindow(); }));
  EXPECT_TRUE(isIn(slot));
  EXPECT_EQ(value("born"), born) << "the page was loaded anew";
  EXPECT_TRUE(agrees({}));
  gtk_window_destroy(second);
  gtk_box_remove(GTK_BOX(content), slot);
  EXPECT_TRUE(runUntil([&] { return !host->view()->isInWindow(); }));
  show(page, {320, 50});  // a refresh meanwhile
  gtk_box_append(GTK_BOX(content), slot);
  EXPECT_TRUE(agrees({}));
  g_object_unref(slot);
}

TEST_F(SlotTest, WhatNeedsMoreRoomLeavesAndComesBackAsItWas) {
  gtk_widget_set_default_direction(GTK_TEXT_DIR_RTL);  // which is the same to it
  auto* above = painted(10, 300, 0, 0, 1);
  gtk_box_append(GTK_BOX(box), above);
  gtk_box_append(GTK_BOX(box), slot);
  present(box);
  show(std::string("<script src='mraid.js'></script>") + page, {320, 50}, true);
  const JSON born = value("born");
  const CGRect inline_{{80, 300}, {320, 50}};
  EXPECT_TRUE(stands(engine(), inline_));
  EXPECT_TRUE(runUntil([&] { return value("mraid.getMaxSize().height") == JSON(600); }))
      << "a page may grow as far as the window";

  value("mraid.expand()");
  EXPECT_TRUE(stands(engine(), {{0, 0}, {480, 600}}));
  EXPECT_FALSE(gtk_widget_is_ancestor(engine(), slot));
  EXPECT_EQ(boundsOf(slot).minY(), 300) << "its place is kept";
  EXPECT_TRUE(runUntil([&] { return value("mraid.getState()+innerHeight") == JSON("expanded600"); }));
  gtk_window_set_default_size(window, 500, 640);
  EXPECT_TRUE(stands(engine(), {{0, 0}, {500, 640}}));
  // A compositor answers with that size, and until then may undo another.
  runFrames(GTK_WIDGET(window));
  gtk_window_set_default_size(window, 480, 600);
  EXPECT_TRUE(stands(engine(), {{0, 0}, {480, 600}}));
  value("mraid.close()");
  EXPECT_TRUE(isIn(slot));
  EXPECT_TRUE(stands(engine(), inline_));

  value(
      "mraid.setResizeProperties({width:300,height:250,offsetX:0,offsetY:0,allowOffscreen:false});"
      "mraid.resize()");
  EXPECT_TRUE(stands(engine(), {{90, 100}, {300, 250}})) << "upwards from where the slot ends";
  EXPECT_TRUE(runUntil([&] { return value("mraid.getState()") == JSON("resized"); }));
  value("mraid.close()");
  EXPECT_TRUE(isIn(slot));
  EXPECT_TRUE(stands(engine(), inline_));
  EXPECT_EQ(value("born"), born);
  const auto ticks = value("ticks");
  EXPECT_TRUE(runUntil([&] { return value("ticks") != ticks; })) << "its timers run on";
  value("mraid.expand()");
  EXPECT_TRUE(runUntil([&] { return engine() && !gtk_widget_is_ancestor(engine(), slot); }));
  gtk_box_remove(GTK_BOX(box), std::exchange(slot, nullptr));  // it goes while its ad is outside
  EXPECT_TRUE(runUntil([&] { return !engine(); }));
  gtk_widget_set_default_direction(GTK_TEXT_DIR_LTR);
}

// One after the other over the same ad, and each taken away again.
TEST_F(SlotTest, WhatCoversItIsMeasuredAsThePictureShowsIt) {
  auto* toasts = adw_toast_overlay_new();
  auto* overlay = gtk_overlay_new();
  auto* stack = gtk_stack_new();
  gtk_widget_set_vexpand(slot, TRUE);
  gtk_widget_set_valign(slot, GTK_ALIGN_END);
  gtk_box_append(GTK_BOX(box), slot);
  gtk_stack_add_named(GTK_STACK(stack), box, "ad");
  gtk_stack_add_named(GTK_STACK(stack), gtk_label_new("another page"), "other");
  FoldedSplit split(stack, painted(100, 100, 0, 0, 1));
  gtk_overlay_set_child(GTK_OVERLAY(overlay), split.widget());
  adw_toast_overlay_set_child(ADW_TOAST_OVERLAY(toasts), overlay);
  present(toasts);
  show(page, {320, 50});
  EXPECT_TRUE(agrees({}));

  auto* dialog = painted(100, 300, 0, 0, 1);  // as those that applications draw into their windows
  gtk_widget_set_halign(dialog, GTK_ALIGN_START);
  gtk_widget_set_margin_start(dialog, 120);
  auto* revealer = gtk_revealer_new();
  gtk_revealer_set_transition_type(GTK_REVEALER(revealer), GTK_REVEALER_TRANSITION_TYPE_NONE);
  gtk_widget_set_halign(revealer, GTK_ALIGN_START);
  gtk_revealer_set_child(GTK_REVEALER(revealer), dialog);
  gtk_revealer_set_reveal_child(GTK_REVEALER(revealer), TRUE);
  gtk_overlay_add_overlay(GTK_OVERLAY(overlay), revealer);
  EXPECT_TRUE(agrees({"obstructed"}));
  EXPECT_EQ(seen().percentageInView, 69);
  gtk_revealer_set_reveal_child(GTK_REVEALER(revealer), FALSE);
  EXPECT_TRUE(agrees({}));

  auto* toast = adw_toast_new("A toast over the ad");
  adw_toast_set_timeout(toast, 0);
  adw_toast_overlay_add_toast(ADW_TOAST_OVERLAY(toasts), toast);
  const auto toastIsSeen = [&] {  // it comes in little by little
    if (seen().percentageInView >= 90) return false;
    const auto covers = seen().obstructions;
    const auto picture = pictureOf(window);
    return !covers.empty() && std::all_of(covers.begin(), covers.end(), [&](const CGRect& cover) {
      return picture.at(int(cover.midX()), int(cover.midY())) != red;
    });
  };
  EXPECT_TRUE(runUntil(toastIsSeen));
  adw_toast_dismiss(toast);
  EXPECT_TRUE(agrees({}));

  gtk_widget_set_opacity(box, 0);
  EXPECT_TRUE(agrees({"hidden"}));
  gtk_widget_set_opacity(box, 1);
  EXPECT_TRUE(agrees({}));
  gtk_stack_set_visible_child_name(GTK_STACK(stack), "other");
  EXPECT_TRUE(agrees({"hidden"}));
  gtk_stack_set_visible_child_name(GTK_STACK(stack), "ad");
  EXPECT_TRUE(agrees({}));
  split.showSecond();
  EXPECT_TRUE(agrees({"hidden"}));
  split.showFirst();
  EXPECT_TRUE(agrees({}));
}

// In the visual order, by keys, in both directions: through the page, and on to what stands beside the slot.
TEST_F(SlotTest, TheFocusGoesThroughThePageAndOutAgain) {
  std::map<GtkWidget*, std::string> names;
  const auto add = [&](const char* name) {
    auto* button = gtk_button_new_with_label(name);
    names[button] = name;
    gtk_box_append(GTK_BOX(box), button);
    return button;
  };
  auto* first = add("first ");
  add("before ");
  gtk_box_append(GTK_BOX(box), slot);
  add("after ");
  auto* last = add("last ");
  present(box);
  show("<button id=1>1</button><button id=2>2</button>", {320, 50});
  giveKeyboard(window);
  const auto place = [&] {
    auto* focus = gtk_window_get_focus(window);
    if (focus != engine()) return names[focus];
    return "page:" + *value("document.activeElement.id").string() + " ";
  };
  const auto walk = [&](GtkWidget* from) {
    gtk_widget_grab_focus(from);
    std::string passed = place();
    for (int i = 0; i < 6; ++i) {
      const std::string before = place();
      xdotool("key Tab");
      EXPECT_TRUE(runUntil([&] { return place() != before; })) << passed;
      runFrames(GTK_WIDGET(window));  // the page has the focus before one of its elements has
      passed += place();
    }
    return passed;
  };
  EXPECT_EQ(walk(first), "first before page: page:1 page:2 after last ");
  xdotool("keydown shift");
  EXPECT_EQ(walk(last), "last after page: page:2 page:1 before first ");
  xdotool("keyup shift");
  EXPECT_EQ(gtk_accessible_get_accessible_role(GTK_ACCESSIBLE(slot)), GTK_ACCESSIBLE_ROLE_GROUP);
}

// Runs with two screens, in an order that the compositor chooses. The main one is given other scales, and the window goes
// over to the other one.
TEST_F(SlotTest, IsAsLargeAndAsSharpAsEachScreenHasItAtItsScale) {
  auto* monitors = gdk_display_get_monitors(gdk_display_get_default());
  if (g_list_model_get_n_items(monitors) < 2) GTEST_SKIP();
  gtk_window_set_default_size(window, 480, 300);
  gtk_box_append(GTK_BOX(box), slot);
  present(box);
  show(
      R"(<script src='mraid.js'></script><canvas id=c style='position:fixed;left:0;top:0;width:100%;height:100%'>
</canvas><script>function draw() {
  [c.width, c.height] = [innerWidth * devicePixelRatio, innerHeight * devicePixelRatio];
  for (let x = 0; x < c.width; ++x) {
    c.getContext('2d').fillStyle = x % 2 ? '#f00' : '#00f';
    c.getContext('2d').fillRect(x, 0, 1, c.height);
  }
}</script>)",
      {320, 50}, true);
  const auto sizes = [&] {
    return *value("JSON.stringify([innerWidth, innerHeight, mraid.getCurrentPosition(), mraid.getMaxSize()])")
                .string();
  };
  const std::string sizesBefore = sizes();
  // Whether each column of the canvas is one of pixels.
  const auto isSharp = [&](double scale, int top) {
    value("draw()");
    const auto file = (std::filesystem::temp_directory_path() / "screen.png").string();
    run({"sh", "-c",
         "gst-launch-1.0 -q ximagesrc num-buffers=1 ! videoconvert ! pngenc ! filesink location=" + file});
    const auto screen = GPtr<GdkTexture>::adopt(gdk_texture_new_from_filename(file.c_str(), nullptr));
    if (!screen) return false;
    const int width = gdk_texture_get_width(screen);
    std::vector<uint32_t> pixels(size_t(width * gdk_texture_get_height(screen)));
    gdk_texture_download(screen, reinterpret_cast<guchar*>(pixels.data()), size_t(width) * 4);
    const auto* row = &pixels[size_t(top + 25 * scale) * size_t(width)];
    for (int x = int(80 * scale) + 1; x < int(400 * scale); ++x)
      if ((row[x] & 0xffffff) + (row[x - 1] & 0xffffff) != 0xff00ff || row[x] == row[x - 1]) return false;
    return true;
  };
  const auto main = GPtr<GdkMonitor>::adopt(GDK_MONITOR(g_list_model_get_item(monitors, 0)));
  const std::string mainName = gdk_monitor_get_connector(main);
  const std::pair<bool, const char*> steps[] = {
      {true, "1"}, {true, "1.5"}, {true, "2"}, {false, "1"}, {true, "2"}};
  for (const auto& [isMain, scale] : steps) {
    const bool isFirst = isMain == (mainName == "X11-1");
    const std::string screen = isFirst ? "X11-1" : "X11-2";
    SCOPED_TRACE(screen + " " + scale);
    swaymsg("output " + screen + " scale " + scale);
    const double wanted = std::stod(scale);
    const int top = isFirst ? 840 : 0;  // in pixels: above, the second lies over the first
    swaymsg("[app_id=.*] move absolute position " + std::string(isFirst ? "0 " : "4000 ") +
            std::to_string(int(top / wanted)));
    const int whole = int(std::ceil(wanted));  // what the engine draws at
    EXPECT_TRUE(runUntil([&] { return value("devicePixelRatio") == JSON(whole); }));
    EXPECT_TRUE(whole != wanted || runUntil([&] { return isSharp(wanted, top); }));
    EXPECT_EQ(sizes(), sizesBefore);
    EXPECT_EQ(seen().geometry, (CGRect{{80, 0}, {320, 50}}));
    const double told = gtk_check_version(4, 14, 0) ? whole : wanted;  // older toolkits know no other
    EXPECT_TRUE(!isMain || runUntil([&] { return Platform::current().mainScreen().scale() == told; }));
  }
}

}  // namespace
}  // namespace velto::test
