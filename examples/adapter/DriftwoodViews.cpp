// See DriftwoodViews.h.
#include "DriftwoodViews.h"

using namespace velto;
using enum NSLayoutAttribute;

namespace {

UIColor color(unsigned rgb) {
  const auto part = [rgb](int shift) { return double(rgb >> shift & 0xff) / 255; };
  return UIColor({part(16), part(8), part(0), 1});
}

const UIColor deep = color(0x0f3d4c);
const UIColor sea = color(0x1b6b7a);
const UIColor foam = color(0xf4efe6);
const UIColor sun = color(0xf2a65a);

// Text, a disc or a pill; what has an action can be pressed.
class Shape : public UIButton {
 public:
  Shape(const std::string& title, double points, const UIColor& ink, const UIColor& fill,
        const std::function<void()>& action)
      : fill_(fill) {
    setTitle(title);
    setTitleFontSize(points);
    setTitleColor(ink, UIControlStateNormal);
    setEnabled(action != nullptr);
    if (action) addAction(action, UIControlEventTouchUpInside);
  }

 private:
  void layoutSubviews() override {
    ButtonShape round;
    round.rect = bounds();
    round.cornerRadius = bounds().size.height / 2;
    round.fillColor = fill_;
    setShape(round);
  }

  const UIColor fill_;
};

struct Pin {
  NSLayoutAttribute attribute;
  double constant;
  double multiplier = 1;
};

// Puts a view into another: lengths are its own, edges and centres the other's.
void put(const std::shared_ptr<UIView>& view, const std::shared_ptr<UIView>& into,
         const std::vector<Pin>& pins, NSLayoutItem::Region region = NSLayoutItem::Region::Bounds) {
  into->addSubview(view);
  view->setTranslatesAutoresizingMaskIntoConstraints(false);
  NSLayoutConstraints constraints;
  for (const auto& [attribute, constant, multiplier] : pins) {
    const bool isLength = (attribute == Width || attribute == Height) && constant != 0;
    constraints.push_back(NSLayoutConstraint::constraintWithItem(
        {view}, attribute, isLength ? NSLayoutItem{} : NSLayoutItem{into, region},
        isLength ? NotAnAttribute : attribute, multiplier, constant));
  }
  into->addConstraints(constraints);
}

std::shared_ptr<UIView> filled(const UIColor& color) {
  const auto view = UIView::make();
  view->setBackgroundColor(color);
  return view;
}

}  // namespace

std::shared_ptr<UIView> makeDriftwoodBanner(const DriftwoodOffer& offer, const DriftwoodActions& actions) {
  const auto banner = filled(deep);
  const auto text = [&](const std::string& title, double points, const UIColor& ink) {
    return std::make_shared<Shape>(title, points, ink, UIColor::clearColor(), actions.press);
  };
  put(text(offer.title, 15, foam), banner, {{Left, 8}, {Top, 5}, {Width, 210}, {Height, 22}});
  put(text(offer.line, 10.5, sun), banner, {{Left, 8}, {Bottom, -5}, {Width, 210}, {Height, 18}});
  put(std::make_shared<Shape>(offer.action, 12, deep, sun, actions.press), banner,
      {{Right, -34}, {CenterY, 0}, {Width, 58}, {Height, 26}});
  put(std::make_shared<Shape>("\u00d7", 15, foam, sea, actions.close), banner,
      {{Right, -7}, {CenterY, 0}, {Width, 20}, {Height, 20}});
  return banner;
}

std::shared_ptr<DriftwoodScreen> DriftwoodScreen::make(const DriftwoodOffer& offer,
                                                       const DriftwoodActions& actions) {
  const std::shared_ptr<DriftwoodScreen> made(new DriftwoodScreen(actions.close));
  const auto& sky = made->view();
  sky->setBackgroundColor(deep);
  const auto text = [](const std::string& title, double points, const UIColor& ink) {
    return std::make_shared<Shape>(title, points, ink, UIColor::clearColor(), nullptr);
  };
  put(std::make_shared<Shape>("", 1, sun, sun, nullptr), sky,
      {{CenterX, 0}, {CenterY, 0, 0.9}, {Width, 220}, {Height, 220}});
  put(filled(sea), sky, {{Left, 0}, {Right, 0}, {Bottom, 0}, {Height, 0, 0.55}});
  put(text(offer.title, 34, foam), sky, {{CenterX, 0}, {CenterY, 0, 1.12}, {Width, 600}, {Height, 50}});
  put(text(offer.line, 17, foam), sky, {{CenterX, 0}, {CenterY, 44, 1.12}, {Width, 600}, {Height, 30}});
  put(std::make_shared<Shape>(offer.action, 18, deep, sun, actions.press), sky,
      {{CenterX, 0}, {CenterY, 0, 1.5}, {Width, 180}, {Height, 48}});
  put(std::make_shared<Shape>("\u00d7", 24, foam, sea, actions.close), sky,
      {{Right, -20}, {Top, 20}, {Width, 40}, {Height, 40}}, NSLayoutItem::Region::SafeArea);
  return made;
}

bool DriftwoodScreen::accessibilityPerformEscape() {
  close_();
  return true;
}
