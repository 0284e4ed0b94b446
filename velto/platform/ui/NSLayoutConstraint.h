// A linear relation between two edges, centres or lengths of views: first = second * multiplier + constant.
// Shared by all platforms; the solver (LayoutSolver.h) turns the active ones into frames. Main thread.
#pragma once

#include "velto/Export.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace velto {

// What of a frame follows the superview where no constraints say (UIView.h).
enum UIViewAutoresizing : unsigned {
  UIViewAutoresizingFlexibleWidth = 2,
  UIViewAutoresizingFlexibleHeight = 16
};

class UIView;

enum class NSLayoutAttribute {
  NotAnAttribute = 0,
  Left = 1,
  Right = 2,
  Top = 3,
  Bottom = 4,
  Width = 7,
  Height = 8,
  CenterX = 9,
  CenterY = 10,
  LeftMargin = 13,
  RightMargin = 14,
  TopMargin = 15,
  BottomMargin = 16,
};

enum NSLayoutFormatOptions : unsigned {
  NSLayoutFormatAlignAllCenterX = 512,
  NSLayoutFormatAlignAllCenterY = 1024
};

// What a constraint speaks of: a view's own box, or the part of it that nothing of the device covers.
struct NSLayoutItem {
  enum class Region { Bounds, SafeArea };
  std::weak_ptr<UIView> view;
  Region region = Region::Bounds;
};

class VELTO_EXPORT NSLayoutConstraint : public std::enable_shared_from_this<NSLayoutConstraint> {
 public:
  static std::shared_ptr<NSLayoutConstraint> constraintWithItem(NSLayoutItem item,
                                                                NSLayoutAttribute attribute,
                                                                NSLayoutItem toItem,
                                                                NSLayoutAttribute toAttribute,
                                                                double multiplier, double constant);

  // Understands the formats "[name(metric)]" and "V:[name(metric)]", a fixed width or height; throws
  // std::invalid_argument on any other, and on names that are not given. The options align views that stand
  // beside each other, so with a single view they change nothing.
  static std::vector<std::shared_ptr<NSLayoutConstraint>> constraintsWithVisualFormat(
      const std::string& format, unsigned options, const std::map<std::string, double>& metrics,
      const std::map<std::string, std::shared_ptr<UIView>>& views);

  // Puts it on the nearest view that holds both items, or takes it off. Without such a view nothing happens.
  void setActive(bool active);
  bool isActive() const { return !holder.expired(); }

  NSLayoutItem firstItem;
  NSLayoutAttribute firstAttribute = NSLayoutAttribute::NotAnAttribute;
  NSLayoutItem secondItem;  // no view: the relation is to the constant alone
  NSLayoutAttribute secondAttribute = NSLayoutAttribute::NotAnAttribute;
  double multiplier = 1;
  double constant = 0;
  std::weak_ptr<UIView> holder;  // the view whose list it stands in; UIView keeps it
};

using NSLayoutConstraints = std::vector<std::shared_ptr<NSLayoutConstraint>>;

// One attribute of one item, for writing a constraint as an equation.
struct NSLayoutAnchor {
  NSLayoutItem item;
  NSLayoutAttribute attribute;
  std::shared_ptr<NSLayoutConstraint> constraintEqualToAnchor(const NSLayoutAnchor& other,
                                                              double constant = 0) const {
    return NSLayoutConstraint::constraintWithItem(item, attribute, other.item, other.attribute, 1, constant);
  }
};

// The anchors of a view's box or of its safe area.
struct UILayoutGuide {
  NSLayoutItem item;
  NSLayoutAnchor topAnchor() const { return {item, NSLayoutAttribute::Top}; }
  NSLayoutAnchor bottomAnchor() const { return {item, NSLayoutAttribute::Bottom}; }
  NSLayoutAnchor leftAnchor() const { return {item, NSLayoutAttribute::Left}; }
  NSLayoutAnchor rightAnchor() const { return {item, NSLayoutAttribute::Right}; }
};

}  // namespace velto
