// Making constraints, and finding the view that holds both ends of one.
#include "velto/platform/ui/NSLayoutConstraint.h"

#include "velto/platform/ui/UIView.h"

#include <stdexcept>

namespace velto {

std::shared_ptr<NSLayoutConstraint> NSLayoutConstraint::constraintWithItem(
    NSLayoutItem item, NSLayoutAttribute attribute, NSLayoutItem toItem, NSLayoutAttribute toAttribute,
    double multiplier, double constant) {
  auto constraint = std::make_shared<NSLayoutConstraint>();
  constraint->firstItem = std::move(item);
  constraint->firstAttribute = attribute;
  constraint->secondItem = std::move(toItem);
  constraint->secondAttribute = toAttribute;
  constraint->multiplier = multiplier;
  constraint->constant = constant;
  return constraint;
}

std::vector<std::shared_ptr<NSLayoutConstraint>> NSLayoutConstraint::constraintsWithVisualFormat(
    const std::string& format, unsigned /*options*/, const std::map<std::string, double>& metrics,
    const std::map<std::string, std::shared_ptr<UIView>>& views) {
  const bool vertical = format.starts_with("V:");
  const std::string body = vertical ? format.substr(2) : format;
  const auto open = body.find('(');
  if (body.size() < 5 || body.front() != '[' || open == std::string::npos || !body.ends_with(")]"))
    throw std::invalid_argument("layout format not understood: " + format);
  const auto view = views.find(body.substr(1, open - 1));
  const auto metric = metrics.find(body.substr(open + 1, body.size() - open - 3));
  if (view == views.end() || metric == metrics.end())
    throw std::invalid_argument("layout format names something that is not given: " + format);
  return {constraintWithItem({view->second}, vertical ? NSLayoutAttribute::Height : NSLayoutAttribute::Width,
                             {}, NSLayoutAttribute::NotAnAttribute, 1, metric->second)};
}

void NSLayoutConstraint::setActive(bool active) {
  auto self = shared_from_this();
  if (!active) {
    if (auto view = holder.lock()) view->removeConstraints({self});
    return;
  }
  const auto first = firstItem.view.lock();
  const auto second = secondItem.view.lock();
  for (UIView* view = first.get(); view; view = view->superview()) {
    if (second && !second->isDescendantOfView(*view)) continue;
    view->addConstraints({self});
    return;
  }
}

}  // namespace velto
