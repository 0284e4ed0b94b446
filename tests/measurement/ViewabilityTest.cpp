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
class Painter {
 public:
  static constexpr int scale = 4;
  Painter(const UIView& root, const UIView& ad, const FriendlyViews& friendly)
      : ad_(ad),
        friendly_(friendly),
        width_(pixels(root.frame().size.width)),
        height_(pixels(root.frame().size.height)),
        canvas_(static_cast<size_t>(width_ * height_)) {
    const Box window{0, 0, width_, height_};
    for (const auto& child : root.subviews()) paint(*child, 0, 0, window, false);
  }
  double seen() const {
    return static_cast<double>(std::count(canvas_.begin(), canvas_.end(), true)) / (scale * scale);
  }

 private:
  struct Box {
    int left, top, right, bottom;
  };
  static int pixels(double points) { return static_cast<int>(std::lround(points * scale)); }

  void paint(const UIView& view, int x, int y, Box visible, bool ofAd) {
    if (view.isHidden() || view.alpha() <= 0) return;
    if (std::count(friendly_.begin(), friendly_.end(), &view)) return;
    if (const auto clip = view.peer().clip())
      visible = {std::max(visible.left, x + pixels(clip->minX())),
                 std::max(visible.top, y + pixels(clip->minY())),
                 std::min(visible.right, x + pixels(clip->maxX())),
                 std::min(visible.bottom, y + pixels(clip->maxY()))};
    const Box box{x + pixels(view.frame().minX()), y + pixels(view.frame().minY()),
                  x + pixels(view.frame().maxX()), y + pixels(view.frame().maxY())};
    const bool isAd = &view == &ad_;
    if (isAd || (view.paints() && !ofAd))
      for (int row = std::max(box.top, visible.top); row < std::min(box.bottom, visible.bottom); ++row)
        for (int column = std::max(box.left, visible.left); column < std::min(box.right, visible.right);
             ++column)
          canvas_[static_cast<size_t>(row * width_ + column)] = isAd;
    for (const auto& child : view.subviews()) paint(*child, box.left, box.top, visible, ofAd || isAd);
  }

  const UIView& ad_;
  const FriendlyViews& friendly_;
  int width_;
  int height_;
  std::vector<char> canvas_;  // whether the ad is on top there
};

class ViewabilityTest : public HeadlessTest {
 protected:
  ViewabilityTest() : window({120, 160}), random(7) {}
  double number(double from, double to) {
    return std::round(std::uniform_real_distribution(from, to)(random) * Painter::scale) / Painter::scale;
  }
  bool chance(double probability) { return std::bernoulli_distribution(probability)(random); }
  std::shared_ptr<UIView> randomView() {
    const CGRect frame{{number(-30, 100), number(-30, 140)}, {number(0, 90), number(0, 90)}};
    std::shared_ptr<UIView> view;
    if (chance(0.2)) {
      view = UIView::makeWithPeer(std::make_unique<ClippingPeer>(
          platform->mainQueue(),
          CGRect{{number(-30, 100), number(-30, 140)}, {number(20, 120), number(20, 120)}}));
    } else {
      view = UIView::make();
    }
    view->setFrame(frame);
    if (chance(0.5)) view->setBackgroundColor(UIColor::blackColor());
    if (chance(0.1)) view->setHidden(true);
    if (chance(0.1)) view->setAlpha(0);
    return view;
  }
  std::shared_ptr<UIView> add(CGRect frame, UIView& to, bool painted = true) {
    auto view = UIView::make();
    view->setFrame(frame);
    if (painted) view->setBackgroundColor(UIColor::blackColor());
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
    const double painted = Painter(window.view(), *ad, friendly).seen();
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
  auto list =
      UIView::makeWithPeer(std::make_unique<ClippingPeer>(platform->mainQueue(), CGRect{{0, 0}, {100, 60}}));
  list->setFrame({{0, 0}, {100, 160}});
  window.view().addSubview(list);
  const auto ad = add({{10, 20}, {80, 40}}, *list);
  EXPECT_EQ(look(*ad).percentageInView, 100);
  EXPECT_EQ(look(*ad).reasons, Reasons{});

  const auto check = [&](int percentage, const Reasons& reasons) {
    const auto seen = look(*ad);
    EXPECT_EQ(seen.percentageInView, percentage) << ::testing::PrintToString(reasons);
    EXPECT_EQ(seen.reasons, reasons);
  };
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
  EXPECT_EQ(looks, 1);
  EXPECT_EQ(watcher->latest().percentageInView, 100);
  platform->advance(1min);
  EXPECT_EQ(looks, 1);
  EXPECT_EQ(platform->mainQueue().pending(), 0u) << "not even a timer";

  ad->setFrame({{-50, 0}, {100, 100}});
  platform->runUntilIdle();
  EXPECT_EQ(told, std::vector{50}) << "at once after a rest";
  for (int i = 0; i < 60; ++i) {
    ad->setFrame({{-50 + i / 2.0, 0}, {100, 100}});
    platform->advance(16666us);
  }
  EXPECT_GE(looks, 2 + 4);
  EXPECT_LE(looks, 2 + 5);
  platform->advance(1s);
  EXPECT_EQ(told.back(), 80) << "the last change is not lost";
  for (const double x : {-10, -60}) {  // the second by the library, while the first waits
    ad->setFrame({{x, 0}, {100, 100}});
    if (x == -60) watcher->hurry();
    ad->setFrame({{x, 0.5}, {100, 100}});
    platform->runUntilIdle();
  }
  EXPECT_EQ(told.back(), 40) << "at once";
  ad->setFrame({{-20, 0}, {100, 100}});
  platform->advance(1s);
  EXPECT_EQ(told.back(), 80);
  const int before = looks;
  ad->setAlpha(1);  // nothing new
  platform->advance(1s);
  EXPECT_EQ(looks, before + 1);
  EXPECT_EQ(told.back(), 80);
  watcher.reset();
  ad->setAlpha(0.5);
  EXPECT_EQ(platform->mainQueue().pending(), 0u);
}

}  // namespace
}  // namespace velto::test
