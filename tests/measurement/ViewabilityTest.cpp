// What can be seen of an ad: random trees of views against a painter that fills pixels, the reasons, and when
// anybody looks at all.
#include "velto/measurement/ViewSight.h"
#include "velto/measurement/ViewabilityWatcher.h"
#include "velto/platform/ui/ViewChanges.h"

#include <array>
#include <random>

#include "../support/HeadlessTest.h"

namespace velto::test {
namespace {

using namespace std::chrono_literals;

// A view that shows nothing outside of a rectangle, as a scrolled list of the application does.
class ClippingPeer : public headless::RecordingViewPeer {
 public:
  ClippingPeer(headless::VirtualQueue& queue, CGRect clip)
      : RecordingViewPeer(std::shared_ptr<headless::VirtualQueue>(&queue, [](auto*) {})), clip_(clip) {}
  std::optional<CGRect> clip() const override { return clip_; }

 private:
  CGRect clip_;
};

// Paints whole trees into pixels of a quarter of a point, so that edges at quarters are exact.
struct Painter {
  static constexpr int scale = 4;
  const UIView& ad;
  const FriendlyViews& friendly;
  int width, height;
  // Is the ad on top there?
  std::vector<char> canvas = std::vector<char>(static_cast<size_t>(width * height));

  static int pixels(double points) { return static_cast<int>(std::lround(points * scale)); }
  struct Box {
    int left, top, right, bottom;
    Box(CGRect rect, int x, int y)
        : left(x + pixels(rect.minX())),
          top(y + pixels(rect.minY())),
          right(x + pixels(rect.maxX())),
          bottom(y + pixels(rect.maxY())) {}
    void cut(const Box& other) {
      left = std::max(left, other.left);
      top = std::max(top, other.top);
      right = std::min(right, other.right);
      bottom = std::min(bottom, other.bottom);
    }
  };

  void paint(const UIView& view, int x, int y, Box visible, bool ofAd) {
    if (view.isHidden() || view.alpha() <= 0) return;
    if (std::count(friendly.begin(), friendly.end(), &view)) return;
    if (const auto clip = view.peer().clip()) visible.cut(Box(*clip, x, y));
    Box box(view.frame(), x, y);
    x = box.left;
    y = box.top;
    box.cut(visible);
    const bool isAd = &view == &ad;
    if (isAd || (view.paints() && !ofAd))
      for (int row = box.top; row < box.bottom; ++row)
        for (int column = box.left; column < box.right; ++column)
          canvas[static_cast<size_t>(row * width + column)] = isAd;
    for (const auto& child : view.subviews()) paint(*child, x, y, visible, ofAd || isAd);
  }
};

class ViewabilityTest : public HeadlessTest {
 protected:
  ViewabilityTest() : window({120, 160}), random(7) {}
  double number(double from, double to) {
    return std::round(std::uniform_real_distribution(from, to)(random) * Painter::scale) / Painter::scale;
  }
  bool chance(double probability) { return std::bernoulli_distribution(probability)(random); }
  std::shared_ptr<UIView> clippingView(CGRect clip) {
    return UIView::makeWithPeer(std::make_unique<ClippingPeer>(platform->mainQueue(), clip));
  }
  CGRect randomFrame(double least, double most) {
    return {{number(-30, 100), number(-30, 140)}, {number(least, most), number(least, most)}};
  }
  std::shared_ptr<UIView> randomView() {
    auto view = chance(0.2) ? clippingView(randomFrame(20, 120)) : UIView::make();
    view->setFrame(randomFrame(0, 90));
    if (chance(0.5)) view->setBackgroundColor(UIColor::blackColor());
    view->setHidden(chance(0.1));
    view->setAlpha(chance(0.1) ? 0 : 1);
    return view;
  }
  std::shared_ptr<UIView> add(CGRect frame, UIView& to) {
    auto view = UIView::make();
    view->setFrame(frame);
    view->setBackgroundColor(UIColor::blackColor());
    to.addSubview(view);
    return view;
  }
  Viewability look(const UIView& ad, const FriendlyViews& friendly = {}) {
    return viewabilityOf(sightOf(&ad, friendly));
  }

  headless::HostWindow window;
  std::mt19937 random;
};

TEST_F(ViewabilityTest, RandomTreesAgreeWithAPainterOfPixels) {
  int partly = 0;
  for (int round = 0; round < 1500; ++round) {
    std::vector<std::shared_ptr<UIView>> views{window.controller()->view()};
    const int count = std::uniform_int_distribution(1, 14)(random);
    for (int i = 0; i < count; ++i) {
      const auto parent = views[std::uniform_int_distribution<size_t>(0, views.size() - 1)(random)];
      views.push_back(randomView());
      parent->addSubview(views.back());
    }
    const auto& ad = views[std::uniform_int_distribution<size_t>(1, views.size() - 1)(random)];
    FriendlyViews friendly;
    for (size_t i = 1; i < views.size(); ++i)
      if (!ad->isDescendantOfView(*views[i]) && chance(0.15)) friendly.push_back(views[i].get());
    const auto seen = look(*ad, friendly);
    const double area = ad->frame().size.width * ad->frame().size.height;
    const CGRect whole = window.view().frame();
    Painter painter{*ad, friendly, Painter::pixels(whole.size.width), Painter::pixels(whole.size.height)};
    painter.paint(window.view(), 0, 0, {whole, 0, 0}, false);
    const double painted =
        static_cast<double>(std::count(painter.canvas.begin(), painter.canvas.end(), true)) /
        (Painter::scale * Painter::scale);
    ASSERT_NEAR(seen.pixelsInView, painted, area * 0.001) << "round " << round;
    ASSERT_EQ(seen.percentageInView, area > 0 ? std::lround(100 * seen.pixelsInView / area) : 0);
    ASSERT_EQ(seen.reasons.empty(), seen.percentageInView == 100);
    if (painted > 0 && painted < area) ++partly;
    for (const auto& child : std::vector(window.view().subviews())) child->removeFromSuperview();
  }
  EXPECT_GT(partly, 150) << "hardly a case that says anything";
}

TEST_F(ViewabilityTest, ReasonsSayWhyItIsLess) {
  using Reasons = std::vector<std::string>;
  const auto list = clippingView({{0, 0}, {100, 60}});
  list->setFrame({{0, 0}, {100, 160}});
  window.view().addSubview(list);
  const auto ad = add({{10, 20}, {80, 40}}, *list);
  const auto check = [&](int percentage, const Reasons& reasons) {
    const auto seen = look(*ad);
    EXPECT_EQ(seen.percentageInView, percentage) << ::testing::PrintToString(reasons);
    EXPECT_EQ(seen.reasons, reasons);
  };
  check(100, {});
  ad->setFrame({{10, 40}, {80, 40}});
  check(50, {"clipped"});
  ad->setFrame({{-40, 20}, {80, 40}});
  check(50, {"viewport"});
  const auto cover = add({{0, 20}, {20, 40}}, window.view());
  check(25, {"viewport", "obstructed"});
  cover->setBackgroundColor(UIColor::clearColor());
  check(50, {"viewport"});
  ad->setFrame({{10, 20}, {80, 40}});
  window.setSight({.minimized = true});
  check(0, {"backgrounded"});
  window.setSight({.focused = false});
  check(0, {"noWindowFocus"});
  window.setSight({.measurable = false});
  check(0, {"unmeasurable"});
  window.setSight({.onScreen = CGRect{{0, 0}, {30, 200}}});
  check(25, {"viewport"});
  window.setSight({.covers = {{{10, 20}, {40, 40}}, {{20, 20}, {40, 40}}}});
  check(38, {"obstructed"});
  EXPECT_EQ(look(*ad).obstructions.size(), 2u);
  window.setSight({});
  list->setAlpha(0);
  check(0, {"hidden"});
  list->setAlpha(1);
  ad->setFrame({{10, 20}, {0, 40}});
  check(0, {"hidden"});
  window.hide();
  check(0, {"notFound"});
  EXPECT_EQ(viewabilityOf(sightOf(nullptr, {})).reasons, Reasons{"notFound"});
}

TEST_F(ViewabilityTest, NobodyLooksWhileNothingChangesAndThenAtMostFiveTimesASecond) {
  int looks = 0;
  std::vector<int> told;
  const auto ad = add({{0, 0}, {100, 100}}, window.view());
  platform->runUntilIdle();
  auto watcher = ViewabilityWatcher::watch(
      [&] {
        ++looks;
        return sightOf(ad.get(), {});
      },
      [&](const Viewability& seen) { told.push_back(seen.percentageInView); });
  platform->advance(1min);
  EXPECT_EQ(looks, 1);
  EXPECT_EQ(watcher->latest().percentageInView, 100);
  EXPECT_EQ(platform->mainQueue().pending(), 0u) << "not even a timer";

  for (int i = 0; i < 60; ++i) {
    ad->setFrame({{-50 + i / 2.0, 0}, {100, 100}});
    platform->advance(16666us);
    EXPECT_EQ(told.front(), 50) << "at once after a rest";
  }
  EXPECT_EQ(looks, 1 + 5);
  platform->advance(1s);
  EXPECT_EQ(told.back(), 80) << "the last change is not lost";
  for (const double x : {-10, -60}) {  // the second by the library, while the first waits
    ad->setFrame({{x, 0}, {100, 100}});
    if (x == -60) watcher->hurry();
    ad->setFrame({{x, 0.5}, {100, 100}});
    platform->runUntilIdle();
  }
  EXPECT_EQ(told.back(), 40) << "at once";
  platform->advance(1s);
  watcher.reset();
  ad->setAlpha(0.5);
  EXPECT_EQ(platform->mainQueue().pending(), 0u);
}

}  // namespace
}  // namespace velto::test
