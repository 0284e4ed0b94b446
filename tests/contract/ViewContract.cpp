// Views in a window: where they end up, and whom a touch reaches.
#include "velto/platform/ui/UIButton.h"
#include "velto/platform/ui/ViewChanges.h"
#include "velto/platform/ui/WKWebView.h"

#include <algorithm>

#include "PlatformUnderTest.h"

namespace velto {
namespace {

struct PlainButton : UIButton {
  PlainButton() = default;
};

// Takes a touch along with whatever is inside.
struct Generous : UIGestureRecognizerDelegate {
  bool gestureRecognizer(UITapGestureRecognizer&) override { return true; }
};

class ViewContract : public WindowContract {
 protected:
  UIView& root() { return *window_->view(); }
  CGPoint centre(const UIView& view) {
    return root().convertPointFromView({view.frame().size.width / 2, view.frame().size.height / 2}, view);
  }
  std::shared_ptr<UIView> addTouchable(UIView& parent, const CGRect& frame, int& taps) {
    auto view = UIView::make();
    view->setFrame(frame);
    view->setBackgroundColor(UIColor::whiteColor());  // a platform may let touches through what shows nothing
    auto recognizer = std::make_shared<UITapGestureRecognizer>([&taps] { ++taps; });
    recognizer->setDelegate(generous_);
    view->addGestureRecognizer(recognizer);
    parent.addSubview(view);
    return view;
  }

  std::shared_ptr<Generous> generous_ = std::make_shared<Generous>();
};

TEST_F(ViewContract, ATapReachesTheViewsUnderItAndNoOthers) {
  int outer = 0, inner = 0, beside = 0;
  auto view = addTouchable(root(), {{40, 60}, {300, 200}}, outer);
  auto child = addTouchable(*view, {{100, 50}, {100, 100}}, inner);
  auto other = addTouchable(root(), {{40, 300}, {300, 100}}, beside);
  runUntilShown();

  subject().tap({45, 65});  // the outer alone
  EXPECT_TRUE(runUntil([&] { return outer == 1; }));
  EXPECT_EQ(inner, 0);

  subject().tap(centre(*child));
  EXPECT_TRUE(runUntil([&] { return inner == 1 && outer == 2; }));

  view->setFrame({{40, 450}, {300, 100}});
  other->setHidden(true);
  runUntilShown();
  subject().tap(centre(*other));  // hidden
  subject().tap({45, 65});        // where the outer was
  subject().tap({45, 455});       // where it is
  EXPECT_TRUE(runUntil([&] { return outer == 3; }));
  EXPECT_EQ(beside, 0);
  EXPECT_EQ(inner, 1);
}

TEST_F(ViewContract, AControlKeepsItsTouchForItself) {
  int taps = 0;
  int pressed = 0;
  auto view = addTouchable(root(), {{40, 60}, {300, 200}}, taps);
  auto button = std::make_shared<PlainButton>();
  button->setTitle("X");
  button->addAction([&] { ++pressed; }, UIControlEventTouchUpInside);
  button->setFrame({{240, 10}, {50, 50}});
  view->addSubview(button);
  runUntilShown();
  subject().tap(centre(*button));
  EXPECT_TRUE(runUntil([&] { return pressed == 1; }));
  button->setEnabled(false);
  runUntilShown();
  subject().tap(centre(*button));
  subject().tap({60, 200});
  EXPECT_TRUE(runUntil([&] { return taps > 0; }));
  EXPECT_EQ(taps, 1);
  EXPECT_EQ(pressed, 1);
}

TEST_F(ViewContract, ViewsTellWhatTheyShowAndWhenItChanges) {
  const WindowSight sight = root().peer().windowSight();
  EXPECT_TRUE(!sight.minimized && sight.focused && sight.covers.empty());

  const auto view = UIView::make();
  EXPECT_FALSE(view->paints());
  EXPECT_TRUE(WKWebView::initWithFrame({}, {})->paints());
  runUntilShown();
  int changes = 0;
  Handle observer = ViewChanges::observe([&] { ++changes; });
  const CGRect frame{{10, 10}, {50, 50}};
  const std::vector<std::function<void()>> steps{[&] { root().addSubview(view); },
                                                 [&] { view->setFrame(frame); },
                                                 [&] { view->setBackgroundColor(UIColor::blackColor()); },
                                                 [&] { view->setAlpha(0.5); },
                                                 [&] { view->setHidden(true); },
                                                 [&] { view->removeFromSuperview(); }};
  for (size_t i = 0; i < steps.size(); ++i) {
    changes = 0;
    steps[i]();
    EXPECT_GT(changes, 0) << "step " << i;
  }
  EXPECT_TRUE(view->paints());
  observer.cancel();
  changes = 0;
  root().addSubview(view);
  EXPECT_EQ(changes, 0);
}

TEST_F(ViewContract, TheDisplayLinkTicksUntilItsHandleGoes) {
  std::vector<double> ticks;
  Handle link = platform().views().displayLink([&](double seconds) {
    ticks.push_back(seconds);
    if (ticks.size() == 5) link.cancel();
  });
  EXPECT_TRUE(ticks.empty());
  EXPECT_TRUE(runUntil([&] { return ticks.size() == 5; }));
  EXPECT_TRUE(std::is_sorted(ticks.begin(), ticks.end()));
  EXPECT_LT(ticks.front(), ticks.back());
  runFor(std::chrono::milliseconds(60));
  EXPECT_EQ(ticks.size(), 5u);
}

}  // namespace
}  // namespace velto
