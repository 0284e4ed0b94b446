// Tinted glass.
#include "velto/platform/ui/UIVisualEffectView.h"

#include "velto/platform/Platform.h"
#include "velto/platform/ViewSystem.h"

namespace velto {
namespace {
constexpr double darkLevel = 0.11;
constexpr double lightLevel = 0.97;
constexpr double tintAlpha = 0.73;
}  // namespace

std::shared_ptr<UIVisualEffectView> UIVisualEffectView::initWithBlurEffect(int64_t style) {
  return std::shared_ptr<UIVisualEffectView>(new UIVisualEffectView(style));
}

UIVisualEffectView::UIVisualEffectView(int64_t style)
    : UIView(Platform::current().views().makeView()), style_(style) {
  setBackgroundColor(
      UIColor::colorWithWhite(style == UIBlurEffectStyleDark ? darkLevel : lightLevel, tintAlpha));
}

}  // namespace velto
