// Ads in slots: the room they ask for, where they go when that is not enough, and what of the toolkit's own
// ways they take part in.
#include "velto/measurement/ViewSight.h"
#include "velto/measurement/Viewability.h"
#include "velto/platform/Platform.h"
#include "velto/platform/UIDevice.h"
#include "velto/platform/ui/WKWebView.h"

#include <map>

#include "DisplayTest.h"
#include "FoldedSplit.h"

namespace velto::test {
namespace {

constexpr uint32_t red = 0xff0000;
// The ad is red, but for what covers it; its script counts what happened to it.
constexpr char page[] =
    "<body style='margin:0;background:#f00'><script>var ticks=0;setInterval(()=>++ticks,10);"
    "var born=Math.random()</script>";

class SlotTest : public test::DisplayTest {
 protected:
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
  GtkWidget* find(GtkWidget* within, const char* type) {
    if (std::string(G_OBJECT_TYPE_NAME(within)) == type) return within;
    for (auto* child = gtk_widget_get_first_child(within); child; child = gtk_widget_get_next_sibling(child))
      if (auto* found = find(child, type)) return found;
    return nullptr;
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
  EXPECT_EQ(value("innerWidth"), JSON(728)) << "the page knows nothing of it";
  EXPECT_EQ(seen().percentageInView, 100);

  banner->removeBanner();
  EXPECT_TRUE(stands(below, {{0, 0}, {480, 10}}));
  gtk_box_remove(GTK_BOX(box), below);
  auto* kept = gtk::adSlot({.room = CGSize{320, 50}});
  gtk_box_append(GTK_BOX(box), kept);
  EXPECT_TRUE(stands(kept, {{0, 0}, {480, 50}})) << "or the room that it is told to keep";
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
  auto* above = painted(10, 300, 0, 0, 1);
  gtk_box_append(GTK_BOX(box), above);
  gtk_box_append(GTK_BOX(box), slot);
  present(box);
  show(std::string("<script src='mraid.js'></script>") + page, {320, 50}, true);
  const JSON born = value("born");
  const CGRect inline_{{80, 300}, {320, 50}};
  EXPECT_TRUE(stands(engine(), inline_));
  EXPECT_EQ(value("mraid.getMaxSize().height"), JSON(600)) << "a page may grow as far as the window";

  value("mraid.expand()");
  EXPECT_TRUE(stands(engine(), {{0, 0}, {480, 600}}));
  EXPECT_FALSE(gtk_widget_is_ancestor(engine(), slot));
  EXPECT_EQ(boundsOf(slot).minY(), 300) << "its place is kept";
  EXPECT_TRUE(runUntil([&] { return value("mraid.getState()+innerHeight") == JSON("expanded600"); }));
  gtk_window_set_default_size(window, 500, 640);
  EXPECT_TRUE(stands(engine(), {{0, 0}, {500, 640}}));
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
    const auto covers = seen().obstructions;
    const auto picture = pictureOf(window);
    return !covers.empty() && std::all_of(covers.begin(), covers.end(), [&](const CGRect& cover) {
      return picture.at(int(cover.midX()), int(cover.midY())) != red;
    });
  };
  EXPECT_TRUE(runUntil(toastIsSeen));
  EXPECT_LT(seen().percentageInView, 90);
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

// A list that makes few rows and uses them again: ten of its 200 items are slots.
TEST_F(SlotTest, ScrollsWithItsListUnderTheWheelUnlessThePageUsesThat) {
  std::vector<GtkWidget*> slots;
  for (int i = 0; i < 10; ++i)
    slots.push_back(GTK_WIDGET(g_object_ref_sink(i ? gtk::adSlot({.room = CGSize{320, 50}}) : slot)));
  auto* items = gtk_string_list_new(nullptr);
  for (int i = 0; i < 200; ++i) gtk_string_list_append(items, std::to_string(i).c_str());
  auto* factory = gtk_signal_list_item_factory_new();
  const auto bind = +[](GtkListItemFactory*, GtkListItem* item, std::vector<GtkWidget*>* all) {
    const guint row = gtk_list_item_get_position(item);
    auto* label = painted(300, 40, 0, 0, 1);
    gtk_list_item_set_child(item, row % 20 == 2 ? (*all)[row / 20] : label);
    if (row % 20 == 2) g_object_unref(g_object_ref_sink(label));
  };
  const auto unbind = +[](GtkListItemFactory*, GtkListItem* item) { gtk_list_item_set_child(item, nullptr); };
  g_signal_connect(factory, "bind", G_CALLBACK(bind), &slots);
  g_signal_connect(factory, "unbind", G_CALLBACK(unbind), nullptr);
  auto* list = gtk_list_view_new(GTK_SELECTION_MODEL(gtk_no_selection_new(G_LIST_MODEL(items))), factory);
  auto* scrolled = gtk_scrolled_window_new();
  gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scrolled), list);
  auto* adjustment = gtk_scrolled_window_get_vadjustment(GTK_SCROLLED_WINDOW(scrolled));
  present(scrolled);
  show(page, {320, 50});
  EXPECT_TRUE(agrees({}));
  const JSON born = value("born");

  const auto turn = [&](int button) {
    const CGRect ad = boundsOf(engine());
    click(window, {ad.midX(), ad.midY()}, button);
  };
  const double row = boundsOf(slot).minY();
  turn(5);
  EXPECT_TRUE(runUntil([&] { return gtk_adjustment_get_value(adjustment) > 0; }));
  EXPECT_TRUE(runUntil([&] { return boundsOf(engine()).minY() < row; }));
  gtk_adjustment_set_value(adjustment, row + 25);
  EXPECT_TRUE(agrees({"viewport"}));
  gtk_adjustment_set_value(adjustment, 3000);
  EXPECT_TRUE(runUntil([&] { return seen().percentageInView == 0; }));
  gtk_adjustment_set_value(adjustment, 0);
  EXPECT_TRUE(agrees({}));
  EXPECT_EQ(value("born"), born) << "rows come and go, the page stays";

  value("var turns=0;addEventListener('wheel',()=>{++turns})");
  turn(5);
  EXPECT_TRUE(runUntil([&] { return value("turns") != JSON(0); }));
  EXPECT_EQ(gtk_adjustment_get_value(adjustment), 0);
  banner.reset();
  gtk_window_destroy(std::exchange(window, nullptr));
  for (auto* one : slots) g_object_unref(one);
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

// Runs with two screens, of which the second keeps its scale: the first is given others, and the window goes over.
TEST_F(SlotTest, IsAsLargeAndAsSharpAsEachScreenHasItAtItsScale) {
  if (g_list_model_get_n_items(gdk_display_get_monitors(gdk_display_get_default())) < 2) GTEST_SKIP();
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
  struct Step {
    int place;
    const char* screen;
    const char* scale;
  };
  for (const auto& [place, screen, scale] :
       {Step{0, "X11-1", "1"}, Step{0, "X11-1", "1.5"}, Step{0, "X11-1", "2"}, Step{4000, "X11-2", "1"},
        Step{0, "X11-1", "2"}}) {
    SCOPED_TRACE(std::string(screen) + " " + scale);
    swaymsg(std::string("output ") + screen + " scale " + scale);
    const double wanted = std::stod(scale);
    const int top = place == 0 ? 840 : 0;  // in pixels: above, the second lies over the first
    swaymsg("[app_id=.*] move absolute position " + std::to_string(place) + " " +
            std::to_string(int(top / wanted)));
    const double given =
        gtk_check_version(4, 14, 0) ? std::ceil(wanted) : wanted;  // older ones know no other
    EXPECT_TRUE(runUntil([&] {
      return value("`${devicePixelRatio}`") == JSON(given == 1.5 ? "1.5" : std::to_string(int(given)));
    }));
    EXPECT_TRUE(given != wanted || runUntil([&] { return isSharp(wanted, top); }));
    EXPECT_EQ(sizes(), sizesBefore);
    EXPECT_EQ(seen().geometry, (CGRect{{80, 0}, {320, 50}}));
    EXPECT_TRUE(place != 0 || Platform::current().mainScreen().scale() == given);
  }
}

}  // namespace
}  // namespace velto::test
