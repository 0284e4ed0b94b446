// A colour. Shared by all platforms.
#pragma once

#include "velto/Export.h"

#include <optional>

namespace velto {

// Components run from 0 to 1 but are not clamped; whoever paints clamps.
struct RGBA {
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 0;
  bool operator==(const RGBA&) const = default;
};

class VELTO_EXPORT UIColor {
 public:
  UIColor() : UIColor(RGBA{}) {}  // clear
  explicit UIColor(RGBA components) : components_(components) {}

  static UIColor colorWithWhite(double white, double alpha) { return UIColor({white, white, white, alpha}); }
  static UIColor clearColor() { return UIColor(); }
  static UIColor blackColor() { return colorWithWhite(0, 1); }
  static UIColor whiteColor() { return colorWithWhite(1, 1); }
  // A colour that the platform paints in a way of its own (a
  // pattern, a theme's); it cannot be read as components.
  static UIColor unreadable() {
    UIColor color;
    color.components_.reset();
    return color;
  }

  std::optional<RGBA> components() const { return components_; }
  UIColor colorWithAlphaComponent(double alpha) const {
    UIColor color = *this;
    if (color.components_) color.components_->alpha = alpha;
    return color;
  }
  bool operator==(const UIColor&) const = default;

 private:
  std::optional<RGBA> components_;
};

}  // namespace velto
