// What the ad in a slot wants of it, read from the slot's constraints after each layout. A banner holds its own view in
// the slot's: with a size, with all edges while it is expanded, with neither while it has no ad. For platforms that have
// slots; main thread only.
#pragma once

#include "velto/Export.h"
#include "velto/platform/Geometry.h"

#include <memory>
#include <optional>

namespace velto {

class UIView;

class VELTO_EXPORT AdRoom {
 public:
  // Where the ad stands: in the slot, over it since it is larger for now, or over all of the window.
  enum class Kind { Slot, Grown, Window };

  // Reads what the slot's view says now; whether it said anything.
  bool read(const UIView& slot);

  Kind kind() const { return kind_; }
  CGSize size() const { return size_; }  // of the ad; nothing while there is none
  bool isEmpty() const { return size_ == CGSize{}; }

  // What a slot asks for, which keeps some room free while there is no ad, or none.
  CGSize asked(const std::optional<CGSize>& kept) const;
  // A slot that is narrower than its ad shows it smaller, as far as it can still be read.
  static constexpr double leastScale = 0.4;
  double scaleIn(double width) const;  // 1 for a negative width: any
  // The least scale that a width may bring: for a negative one that of the narrowest slot.
  double leastScaleIn(double width) const { return width < 0 && !isEmpty() ? leastScale : scaleIn(width); }

  // Where the slot's view is, for a slot in that place of a window. An ad that has grown stands as it does in a view
  // that is high enough: on the slot's lower edge, in its middle, as far as the window reaches.
  CGRect frameIn(const CGRect& slot, CGSize window) const;

 private:
  bool take(Kind kind, CGSize size);

  std::weak_ptr<UIView> ad_;  // whose size it is
  CGSize size_;
  CGSize grown_;  // of an ad that is larger for now
  Kind kind_ = Kind::Slot;
};

}  // namespace velto
