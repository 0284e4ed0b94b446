// The view tree, the constraint solver and the animations.
#include "velto/platform/ui/LayoutSolver.h"
#include "velto/platform/ui/UIViewAnimation.h"
#include "velto/platform/ui/ViewChanges.h"
#include "velto/ui/UIViewControllerUISDKVelto.h"
#include "velto/ui/VeltoUIAnimation.h"

#include <random>

#include "UITest.h"

namespace velto {
namespace {

using namespace std::chrono_literals;
using A = NSLayoutAttribute;

class LayoutTest : public test::UITest {
 protected:
  std::shared_ptr<UIView> child(const std::shared_ptr<UIView>& parent) {
    auto view = UIView::make();
    view->setTranslatesAutoresizingMaskIntoConstraints(false);
    parent->addSubview(view);
    return view;
  }
  static std::shared_ptr<NSLayoutConstraint> tie(const std::shared_ptr<UIView>& a, A attribute,
                                                 const std::shared_ptr<UIView>& b, A other,
                                                 double multiplier = 1, double constant = 0) {
    return NSLayoutConstraint::constraintWithItem({a}, attribute, {b}, other, multiplier, constant);
  }
  std::shared_ptr<UIView> root = window->controller()->view();
};

TEST_F(LayoutTest, AnyTwoEquationsOfAnAxisGiveTheFrame) {
  // Random frames, described by random pairs of attributes, must come back.
  std::mt19937 random(7);
  const std::vector<A> attributes{A::Left, A::CenterX, A::Right, A::Width};
  const std::vector<A> vertical{A::Top, A::CenterY, A::Bottom, A::Height};
  const auto value = [](const CGRect& f, size_t i, bool x) {
    const double start = x ? f.minX() : f.minY();
    const double length = x ? f.size.width : f.size.height;
    return i == 3 ? length : start + length * static_cast<double>(i) / 2;
  };
  for (int round = 0; round < 300; ++round) {
    const auto view = child(root);
    std::uniform_real_distribution<double> place(-200, 900);
    std::uniform_real_distribution<double> extent(0, 500);
    const CGRect wanted{{place(random), place(random)}, {extent(random), extent(random)}};
    const CGRect rootFrame{{0, 0}, root->frame().size};
    NSLayoutConstraints list;
    for (const bool x : {true, false}) {
      const size_t first = random() % 4;
      const size_t second = (first + 1 + random() % 3) % 4;
      for (const size_t i : {first, second}) {
        const size_t other = random() % 4;
        const double multiplier = 0.5 + static_cast<double>(random() % 4);
        const double constant = value(wanted, i, x) - multiplier * value(rootFrame, other, x);
        list.push_back(tie(view, (x ? attributes : vertical)[i], root, (x ? attributes : vertical)[other],
                           multiplier, constant));
        if (random() % 2) {  // the same relation, told from the other side
          auto& c = *list.back();
          std::swap(c.firstItem, c.secondItem);
          std::swap(c.firstAttribute, c.secondAttribute);
          c.constant = -c.constant / multiplier;
          c.multiplier = 1 / multiplier;
        }
      }
    }
    root->addConstraints(list);
    const CGRect got = solvedFrame(*view);
    for (const size_t i : {0U, 2U})  // the edges
      for (const bool x : {true, false}) EXPECT_NEAR(value(got, i, x), value(wanted, i, x), 1e-6);
    view->removeFromSuperview();
    EXPECT_TRUE(root->constraints().empty()) << "a view takes its ties along";
  }
}

TEST_F(LayoutTest, MovingToTheFrontKeepsConstraintsAndMasksFollowTheSuperview) {
  const auto view = child(root);
  tie(view, A::Left, root, A::Left, 1, 5)->setActive(true);
  const auto filling = UIView::make();
  root->addSubview(filling);
  root->addSubview(view);
  EXPECT_EQ(root->subviews().back(), view);
  EXPECT_EQ(root->constraints().size(), 1U);
  filling->setFrame({{0, 0}, {390, 844}});
  filling->setAutoresizingMask(UIViewAutoresizingFlexibleWidth | UIViewAutoresizingFlexibleHeight);
  window->resize({500, 400});
  EXPECT_EQ(filling->frame().size, (CGSize{500, 400}));
  tie(view, A::Top, root, A::Top, 1, 5)->setActive(true);
  filling->addConstraints(root->constraints());
  EXPECT_TRUE(root->constraints().empty());
  EXPECT_EQ(filling->constraints().size(), 2U);
  filling->removeConstraints(filling->constraints());
  EXPECT_TRUE(filling->constraints().empty() && view->involvedIn().empty());
}

TEST_F(LayoutTest, WhoWatchesHearsOfALayoutOnceHoweverMuchItMoves) {
  for (int i = 0; i < 20; ++i) {
    const auto view = child(root);
    for (const auto side : {A::Left, A::Right, A::Bottom}) tie(view, side, root, side)->setActive(true);
  }
  root->layoutIfNeeded();
  int told = 0;
  const Handle watch = ViewChanges::observe([&] { ++told; });
  window->resize({500, 400});
  root->layoutIfNeeded();
  EXPECT_EQ(root->subviews().back()->frame().size.width, 500);
  EXPECT_EQ(told, 2) << "the window's size, and all that it moved";
}

TEST_F(LayoutTest, SpringAndEaseBeginAtZeroEndAtOneAndSpringOvershoots) {
  for (const double part : {0.0, 0.5, 1.0}) EXPECT_NEAR(easeInOut(2 * part, 2), part, 1e-12);
  EXPECT_NEAR(springPosition(0, 1.2, 0.5, 5), 0, 1e-12);
  EXPECT_NEAR(springPosition(1e-4, 1.2, 0.5, 5) / 1e-4, 5, 0.05) << "the initial velocity counts";
  EXPECT_NEAR(springPosition(1.199, 1.2, 0.5, 5), 1, 0.002);
  double highest = 0;
  for (double t = 0; t < 1.2; t += 0.01) highest = std::max(highest, springPosition(t, 1.2, 0.5, 5));
  EXPECT_GT(highest, 1.05);
}

TEST_F(LayoutTest, SlidesStartOutsideAndEndInPlace) {
  const CGRect place{{35, 10}, {320, 50}};
  const auto slide = [&](int64_t kind) {
    const auto view = UIView::make();
    root->addSubview(view);
    const auto& peer = headless::RecordingViewPeer::of(*view);
    bool finished = false;
    VeltoUIAnimation::animatePresentView(view, root, nullptr, place, kind, 1.2, 0,
                                         [&](bool done) { finished = done; });
    EXPECT_EQ(view->frame(), place) << "the model is final at once";
    const CGPoint start = peer.frame().origin;
    EXPECT_EQ(start.y, 10);
    EXPECT_EQ(peer.alpha(), 1);
    platform->advance(600ms);
    EXPECT_FALSE(finished);
    platform->advance(650ms);
    EXPECT_TRUE(finished) << kind;
    EXPECT_EQ(peer.frame(), place);
    return start.x;
  };
  for (const auto& [kind, x] : {std::pair(0, 35), {2, 35 - 390}, {3, 35 - 390}, {4, 390}, {5, 390}})
    EXPECT_EQ(slide(kind), x) << kind;
  std::set<double> random;
  for (int i = 0; i < 64; ++i) random.insert(slide(1));
  EXPECT_EQ(random, (std::set<double>{35 - 390, 390})) << "from either side";
}

TEST_F(LayoutTest, AnAnimationEndsAtItsTargetWhateverBecomesOfTheView) {
  const auto view = UIView::make();
  root->addSubview(view);
  auto& peer = dynamic_cast<headless::RecordingViewPeer&>(view->peer());
  std::vector<bool> finished;
  const auto fade = [&](double alpha) {
    animateWithDuration(1, 0, view, {.frame = CGRect{{100, 0}, {50, 50}}, .alpha = alpha},
                        [&](bool done) { finished.push_back(done); });
  };
  fade(0.5);
  platform->advance(500ms);
  EXPECT_NEAR(peer.frame().minX(), 50, 5);
  view->setFrame({{300, 7}, {8, 8}});
  EXPECT_NEAR(peer.frame().minX(), 250, 5) << "on its way to another place, without a jump back";
  platform->advance(600ms);
  EXPECT_EQ(peer.frame(), (CGRect{{300, 7}, {8, 8}}));
  EXPECT_EQ(peer.alpha(), 0.5);

  fade(1);
  platform->advance(200ms);
  fade(0.25);
  platform->advance(2s);
  EXPECT_EQ(finished, (std::vector{true, false, true})) << "one animation takes over from another";
  EXPECT_EQ(peer.frame(), view->frame());
  EXPECT_EQ(peer.alpha(), 0.25);
}

}  // namespace
}  // namespace velto
