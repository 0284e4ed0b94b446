// The solver: at most a handful of equations a view, so elimination is written out for two unknowns.
#include "velto/platform/ui/LayoutSolver.h"

#include "velto/platform/ui/UIView.h"

#include <cmath>
#include <optional>

namespace velto {
namespace {

// start * a + length * b = c
struct Equation {
  double a = 0;
  double b = 0;
  double c = 0;
};

bool isHorizontal(NSLayoutAttribute attribute) {
  switch (attribute) {
    case NSLayoutAttribute::Left:
    case NSLayoutAttribute::Right:
    case NSLayoutAttribute::Width:
    case NSLayoutAttribute::CenterX:
    case NSLayoutAttribute::LeftMargin:
    case NSLayoutAttribute::RightMargin:
      return true;
    default:
      return false;
  }
}

// The attribute as a combination of the view's start and length, plus a constant of its margins.
Equation coefficients(NSLayoutAttribute attribute, const UIEdgeInsets& margins) {
  switch (attribute) {
    case NSLayoutAttribute::Left:
    case NSLayoutAttribute::Top:
      return {1, 0, 0};
    case NSLayoutAttribute::Right:
    case NSLayoutAttribute::Bottom:
      return {1, 1, 0};
    case NSLayoutAttribute::CenterX:
    case NSLayoutAttribute::CenterY:
      return {1, 0.5, 0};
    case NSLayoutAttribute::Width:
    case NSLayoutAttribute::Height:
      return {0, 1, 0};
    case NSLayoutAttribute::LeftMargin:
      return {1, 0, margins.left};
    case NSLayoutAttribute::TopMargin:
      return {1, 0, margins.top};
    case NSLayoutAttribute::RightMargin:
      return {1, 1, -margins.right};
    case NSLayoutAttribute::BottomMargin:
      return {1, 1, -margins.bottom};
    case NSLayoutAttribute::NotAnAttribute:
      break;
  }
  return {};
}

// The attribute's value for an ancestor, in the coordinates of the laid-out view's superview.
double ancestorValue(const UIView& ancestor, const NSLayoutItem& item, NSLayoutAttribute attribute,
                     const UIView& superview) {
  CGRect box{{0, 0}, ancestor.frame().size};
  if (item.region == NSLayoutItem::Region::SafeArea) box = ancestor.safeAreaFrame();
  box.origin = superview.convertPointFromView(box.origin, ancestor);
  const auto k = coefficients(attribute, ancestor.layoutMargins());
  const bool horizontal = isHorizontal(attribute);
  const double start = horizontal ? box.origin.x : box.origin.y;
  const double length = horizontal ? box.size.width : box.size.height;
  return k.a * start + k.b * length + k.c;
}

// The constraint as an equation in the view's unknowns; nothing when it speaks of others.
std::optional<Equation> equationFor(const UIView& view, const NSLayoutConstraint& constraint) {
  const auto first = constraint.firstItem.view.lock();
  const auto second = constraint.secondItem.view.lock();
  const bool viewIsFirst =
      first.get() == &view && constraint.firstItem.region == NSLayoutItem::Region::Bounds;
  const bool viewIsSecond =
      second.get() == &view && constraint.secondItem.region == NSLayoutItem::Region::Bounds;
  if (viewIsFirst == viewIsSecond) return std::nullopt;  // of others, or of this view alone

  const auto& ownAttribute = viewIsFirst ? constraint.firstAttribute : constraint.secondAttribute;
  const auto& otherAttribute = viewIsFirst ? constraint.secondAttribute : constraint.firstAttribute;
  const auto& otherItem = viewIsFirst ? constraint.secondItem : constraint.firstItem;
  const auto other = otherItem.view.lock();
  // Its own margins are the plain ones: the safe area would depend on where the view was before.
  const auto own = coefficients(
      ownAttribute, {UIView::layoutMargin, UIView::layoutMargin, UIView::layoutMargin, UIView::layoutMargin});

  if (otherAttribute == NSLayoutAttribute::NotAnAttribute)
    return viewIsFirst ? std::optional(Equation{own.a, own.b, constraint.constant - own.c}) : std::nullopt;
  if (!other || !view.superview() || other.get() == &view || !view.isDescendantOfView(*other))
    return std::nullopt;

  const double value = ancestorValue(*other, otherItem, otherAttribute, *view.superview());
  if (viewIsFirst) return Equation{own.a, own.b, value * constraint.multiplier + constraint.constant - own.c};
  // other = (own attribute) * multiplier + constant
  return Equation{own.a * constraint.multiplier, own.b * constraint.multiplier,
                  value - constraint.constant - own.c * constraint.multiplier};
}

struct Axis {
  std::optional<Equation> first;
  std::optional<Equation> second;

  void take(const Equation& equation) {
    if (std::abs(equation.a) + std::abs(equation.b) < 1e-9) return;
    if (!first)
      first = equation;
    else if (!second && std::abs(determinant(*first, equation)) > 1e-9)
      second = equation;
  }

  void solve(double& start, double& length) const {
    start = length = 0;
    if (!first) return;
    const bool lengthOnly = std::abs(first->a) < 1e-9;
    const Equation rest = second.value_or(lengthOnly ? Equation{1, 0, 0} : Equation{0, 1, 0});
    const double d = determinant(*first, rest);
    // Never a negative zero: pages are told of frames.
    start = (first->c * rest.b - rest.c * first->b) / d + 0.0;
    length = std::max(0.0, (first->a * rest.c - rest.a * first->c) / d);
  }

 private:
  static double determinant(const Equation& p, const Equation& q) { return p.a * q.b - q.a * p.b; }
};

}  // namespace

CGRect solvedFrame(const UIView& view) {
  Axis horizontal;
  Axis vertical;
  for (const UIView* holder = &view; holder; holder = holder->superview()) {
    for (const auto& constraint : view.involvedIn()) {
      if (constraint->holder.lock().get() != holder) continue;
      const auto equation = equationFor(view, *constraint);
      if (!equation) continue;
      const bool viewIsFirst = constraint->firstItem.view.lock().get() == &view;
      const auto attribute = viewIsFirst ? constraint->firstAttribute : constraint->secondAttribute;
      (isHorizontal(attribute) ? horizontal : vertical).take(*equation);
    }
  }
  CGRect frame = view.frame();
  horizontal.solve(frame.origin.x, frame.size.width);
  vertical.solve(frame.origin.y, frame.size.height);
  return frame;
}

}  // namespace velto
