// A list of the toolkit's with ads in slots between its rows, under the wheel and under a finger.
#include "../../examples/demo/LinkTrap.h"
#include "../support/Finger.h"
#include "SlotTest.h"

namespace velto::test {
namespace {

demo::LinkTrap trap;  // before anything asks for the applications of this desktop

// It makes few rows and uses them again: ten of its 200 items are slots.
class ScrollTest : public SlotTest {
 protected:
  ScrollTest() {
    gtk_widget_realize(GTK_WIDGET(window));
    if (!gtk::x11WindowOf(GTK_WIDGET(window))) gtk_window_fullscreen(window);
    for (int i = 0; i < 10; ++i)
      slots.push_back(GTK_WIDGET(g_object_ref_sink(i ? gtk::adSlot({.room = CGSize{320, 50}}) : slot)));
    auto* items = gtk_string_list_new(nullptr);
    for (int i = 0; i < 200; ++i) gtk_string_list_append(items, std::to_string(i).c_str());
    auto* factory = gtk_signal_list_item_factory_new();
    const auto bind = +[](GtkListItemFactory*, GtkListItem* item, std::vector<GtkWidget*>* all) {
      const guint row = gtk_list_item_get_position(item);
      auto* label = painted(300, 40, 0, 0, 1);
      gtk_list_item_set_child(item, row % 20 == 10 ? (*all)[row / 20] : label);
      if (row % 20 == 10) g_object_unref(g_object_ref_sink(label));
    };
    const auto unbind =
        +[](GtkListItemFactory*, GtkListItem* item) { gtk_list_item_set_child(item, nullptr); };
    g_signal_connect(factory, "bind", G_CALLBACK(bind), &slots);
    g_signal_connect(factory, "unbind", G_CALLBACK(unbind), nullptr);
    auto* list = gtk_list_view_new(GTK_SELECTION_MODEL(gtk_no_selection_new(G_LIST_MODEL(items))), factory);
    auto* scrolled = gtk_scrolled_window_new();
    gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scrolled), list);
    adjustment = gtk_scrolled_window_get_vadjustment(GTK_SCROLLED_WINDOW(scrolled));
    present(scrolled);
    show(page, {320, 50});
  }
  ~ScrollTest() override {
    banner.reset();
    gtk_window_destroy(std::exchange(window, nullptr));
    for (auto* one : slots) g_object_unref(one);
  }
  double position() const { return gtk_adjustment_get_value(adjustment); }

  std::vector<GtkWidget*> slots;
  GtkAdjustment* adjustment;
};

TEST_F(ScrollTest, UnderTheWheelUnlessThePageUsesThat) {
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
}

// The same under a finger. What a page hears is written down, with the number of fingers that are down.
class TouchTest : public ScrollTest {
 protected:
  static constexpr char touched[] =
      R"(<script src='mraid.js'></script><a href='https://shop.example/tapped' style='display:block;height:50px'></a>
<script>var heard='', painted; requestAnimationFrame(() => requestAnimationFrame(() => painted = 1));
for (const t of ['touchstart', 'touchend', 'touchcancel', 'click'])
  addEventListener(t, e => heard += t + (e.touches ? e.touches.length : '') + ' ')</script>)";

  TouchTest() { showTouched(""); }
  void showTouched(const std::string& more) {
    show(touched + std::string(page) + more, {320, 50}, true);
    ASSERT_TRUE(becomes("painted", JSON(1))) << "before that it gets no touches";
  }
  CGPoint middle() {
    const CGRect ad = boundsOf(engine());
    return {ad.midX(), ad.midY()};
  }
  bool hears(const std::string& words) {
    const bool heard = becomes("heard", JSON(words));
    EXPECT_TRUE(heard) << *value("heard").string();
    value("heard=''");
    return heard;
  }
  static Finger& only() {
    static Finger made;
    return made;
  }
  Finger& finger = only();
};

TEST_F(TouchTest, ScrollsTheListAndGoesOnAfterIt) {
  const double row = boundsOf(slot).minY();
  int shown = 0, wrong = 0, afterwards = 0;
  double last = 0;
  std::function<void()> look = [&] {
    const double top = boundsOf(slot).minY();
    if (position() == last || top < 1) return;
    ++shown;
    last = position();
    if (last > 80) ++afterwards;
    const auto picture = pictureOf(window);
    const bool isThere = picture.at(240, int(top)) == red && picture.at(240, int(top) - 1) != red;
    if (!isThere || std::abs(top - (row - last)) > 1) ++wrong;
  };
  auto* clock = gtk_widget_get_frame_clock(GTK_WIDGET(window));
  const auto afterPaint = +[](std::function<void()>* after) { (*after)(); };
  const gulong looks = g_signal_connect_swapped(clock, "after-paint", G_CALLBACK(afterPaint), &look);
  const CGPoint start = middle();
  value("MessageChannel = null");  // whatever the page does to itself
  finger.down(start);
  EXPECT_TRUE(hears("touchstart1 "));
  for (int i = 1; i <= 4; ++i) {
    finger.move({start.x, start.y - 10 * i});
    runFrames(GTK_WIDGET(window), 2);
  }
  EXPECT_TRUE(runUntil([&] { return position() > 20; }));
  for (int i = 5; i <= 8; ++i) finger.flick({start.x, start.y - 10 * i});
  finger.up({start.x, start.y - 80});
  EXPECT_TRUE(runUntil([&] { return position() > 100 && afterwards > 2; }));
  EXPECT_EQ(wrong, 0) << "of " << shown;
  EXPECT_TRUE(hears("touchcancel0 "));
  value("mraid.open('https://shop.example/scrolled')");
  EXPECT_TRUE(runUntil([&] { return !refused.empty(); })) << "that was no touch of the ad";
  EXPECT_EQ(delegate->heard, Heard{});
  g_signal_handler_disconnect(clock, looks);

  finger.down({start.x, 300});  // stops it
  finger.up({start.x, 300});
  gtk_adjustment_set_value(adjustment, 0);
  runFrames(GTK_WIDGET(window));
  finger.down(middle());
  finger.up(middle());
  EXPECT_TRUE(runUntil([&] { return !trap.opened().empty(); }));
  EXPECT_TRUE(hears("touchstart1 touchend0 click "));
  EXPECT_EQ(trap.opened(), (std::vector<std::string>{"https://shop.example/tapped"}));
  EXPECT_EQ(delegate->heard, Heard{"press"});
}

TEST_F(TouchTest, IsThePagesWhereThatUsesIt) {
  const std::pair<const char*, bool> pages[] = {
      {"<style>a{touch-action:none}</style>", true},
      {"<script>addEventListener('touchstart',e=>e.preventDefault(),{passive:false})</script>", true},
      {"<script>addEventListener('touchmove',e=>e.preventDefault(),{passive:false})</script>", true},
      {"<style>a{overflow:auto}</style><script>document.links[0].innerHTML='<br>'.repeat(99)</script>", true},
      {"<style>a{touch-action:pan-y}</style>", false},
  };
  for (const auto& [more, isPages] : pages) {
    SCOPED_TRACE(more);
    showTouched(more);
    const CGPoint start = middle();
    finger.down(start);
    EXPECT_TRUE(hears("touchstart1 "));
    finger.move({start.x, start.y - 5});
    runFrames(GTK_WIDGET(window));
    value("1");
    for (int i = 1; i <= 4; ++i) finger.move({start.x, start.y - 10 * i});
    runFrames(GTK_WIDGET(window));
    finger.up({start.x, start.y - 40});
    EXPECT_TRUE(hears(isPages ? "touchend0 " : "touchcancel0 "));
    EXPECT_TRUE(runUntil([&] { return (position() == 0) == isPages; }));
  }
}

}  // namespace
}  // namespace velto::test
