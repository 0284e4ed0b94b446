// A view that darkens or lightens what lies behind it, as frosted glass does. Main thread.
#pragma once

#include "velto/Export.h"
#include "velto/platform/ui/UIView.h"

#include <cstdint>
#include <memory>

namespace velto {

enum UIBlurEffectStyle : int64_t { UIBlurEffectStyleDark = 2 };

// The tint of the glass is painted, what lies behind it stays sharp: toolkits have no cheap way to blur it.
class VELTO_EXPORT UIVisualEffectView : public UIView {
 public:
  static std::shared_ptr<UIVisualEffectView> initWithBlurEffect(int64_t style);
  int64_t blurEffectStyle() const { return style_; }

 private:
  explicit UIVisualEffectView(int64_t style);
  int64_t style_;
};

}  // namespace velto
