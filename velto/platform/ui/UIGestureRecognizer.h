// A tap on a view: a touch that comes and goes on it or on anything inside it, except on a control.
#pragma once

#include "velto/Export.h"

#include <functional>
#include <memory>

namespace velto {

class UITapGestureRecognizer;

// Asked when another recogniser (such as the page's own) sees the same touch.
class VELTO_EXPORT UIGestureRecognizerDelegate {
 public:
  virtual ~UIGestureRecognizerDelegate() = default;
  // gestureRecognizer:shouldRecognizeSimultaneouslyWithGestureRecognizer:
  // the other one is the page's, which has no object.
  virtual bool gestureRecognizer(UITapGestureRecognizer& recognizer) = 0;
};

class VELTO_EXPORT UITapGestureRecognizer {
 public:
  explicit UITapGestureRecognizer(std::function<void()> action) : action_(std::move(action)) {}

  void setDelegate(std::weak_ptr<UIGestureRecognizerDelegate> delegate) { delegate_ = std::move(delegate); }

  // Called by the view that it is attached to, main thread. `alsoTakenByPage` tells that something below it,
  // such as a page, takes the touch for itself as well.
  void recognize(bool alsoTakenByPage) {
    if (alsoTakenByPage) {
      auto delegate = delegate_.lock();
      if (!delegate || !delegate->gestureRecognizer(*this)) return;
    }
    action_();
  }

 private:
  std::function<void()> action_;
  std::weak_ptr<UIGestureRecognizerDelegate> delegate_;
};

}  // namespace velto
