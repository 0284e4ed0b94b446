// Constraints as wishes.
#include "velto/platform/ui/AdRoom.h"

#include "velto/platform/ui/UIView.h"

#include <algorithm>
#include <cmath>

namespace velto {
namespace {

constexpr double largestRoom = 4096;  // points; an answer may name any size

// What the slot's view holds of one of its subviews.
struct Wish {
  bool any = false;
  bool fills = false;  // pinned to all edges
  CGSize size;
};

Wish wishOf(const UIView& view, const UIView& subview) {
  Wish wish;
  int edges = 0;
  for (const auto& constraint : view.constraints()) {
    if (constraint->firstItem.view.lock().get() != &subview) continue;
    wish.any = true;
    switch (constraint->firstAttribute) {
      case NSLayoutAttribute::Width:
        wish.size.width = constraint->constant;
        break;
      case NSLayoutAttribute::Height:
        wish.size.height = constraint->constant;
        break;
      case NSLayoutAttribute::Left:
      case NSLayoutAttribute::Right:
      case NSLayoutAttribute::Top:
      case NSLayoutAttribute::Bottom:
        ++edges;
        break;
      default:
        break;
    }
  }
  wish.fills = edges == 4;
  return wish;
}

}  // namespace

bool AdRoom::take(Kind kind, CGSize size) {
  kind_ = kind;
  size_ = size;
  return true;
}

// The size of the view's first content is the ad's own; another size later is one that the page asked for.
bool AdRoom::read(const UIView& slot) {
  const auto& subviews = slot.subviews();
  if (subviews.empty()) {
    ad_.reset();
    return take(Kind::Slot, {});
  }
  const auto& banner = subviews.back();
  const Wish wish = wishOf(slot, *banner);
  if (!wish.any) return false;  // it is about to say
  if (wish.fills) return take(Kind::Window, size_);
  const auto ad = banner->subviews().empty() ? nullptr : banner->subviews().front();
  if (!ad || ad != ad_.lock() || wish.size == size_) {
    ad_ = ad;
    return take(Kind::Slot, wish.size);
  }
  const bool fits = wish.size.width <= slot.frame().size.width && wish.size.height <= size_.height;
  if (kind_ == Kind::Slot && fits) return false;
  grown_ = wish.size;
  return take(Kind::Grown, size_);
}

CGSize AdRoom::asked(const std::optional<CGSize>& kept) const {
  const CGSize room = isEmpty() ? kept.value_or(CGSize{}) : size_;
  return {std::clamp(room.width, 0.0, largestRoom), std::clamp(room.height, 0.0, largestRoom)};
}

double AdRoom::scaleIn(double width) const {
  if (size_.width <= 0 || width < 0 || width >= size_.width) return 1;
  return std::max(leastScale, width / size_.width);
}

CGRect AdRoom::frameIn(const CGRect& slot, CGSize window) const {
  if (kind_ == Kind::Slot) return slot;
  if (kind_ == Kind::Window) return {{0, 0}, window};
  const auto inside = [](double start, double length, double all) {
    return std::max(0.0, std::min(start, all - length));
  };
  return {{std::round(inside(slot.midX() - grown_.width / 2, grown_.width, window.width)),
           std::round(inside(slot.maxY() - grown_.height, grown_.height, window.height))},
          grown_};
}

}  // namespace velto
