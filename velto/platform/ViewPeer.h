// Supplied by the platform: what stands behind each view on the screen. The view tree, its layout and its
// animations are the library's own (platform/ui/); a peer only puts one view where it is told and reports what
// a person does to it. A web view's peer is in WebViewPeer.h, what makes them all in ViewSystem.h.
//
// Everything here is called on the main thread and calls back on it. A peer is made with its view, owned by
// it, and dies with it; whatever it shows must be gone from the screen by then. Frames are in the superview's
// coordinates.
#pragma once

#include "velto/Export.h"
#include "velto/platform/Geometry.h"
#include "velto/platform/UIColor.h"
#include "velto/platform/WindowSight.h"

#include <optional>
#include <string>

namespace velto {

class UIView;

// Keys that mean something to what is presented over a window.
enum class UIKey { Space, LeftArrow, RightArrow, UpArrow, DownArrow, M };

class VELTO_EXPORT ViewPeer {
 public:
  virtual ~ViewPeer() = default;

  // The view that this peer stands for, set before any other call.
  // A person's touch is reported to it: UIView::peerTapped().
  void setOwner(UIView* owner) { owner_ = owner; }

  virtual void setFrame(const CGRect& frame) = 0;  // also many times a second, while an animation runs
  virtual void setAlpha(double alpha) = 0;         // 0 … 1
  virtual void setHidden(bool hidden) = 0;
  virtual void setBackgroundColor(const UIColor& color) = 0;
  // Whether taps are to be reported; they still reach what is below.
  virtual void setTouchable(bool touchable) = 0;

  // While it is on, this view, which lies over all others of its window, has the keyboard: the focus goes
  // into it, cannot leave it, and goes back where it was when it ends; Escape is reported to it
  // (UIView::peerEscaped()), and so are the keys above where nothing inside takes them
  // (UIView::peerKeyPressed()). Several may be on; the last one counts.
  virtual void setModal(bool modal) = 0;

  // In front of its other children, but behind `front`, which is one of them, where that is not null. The child is
  // in no other view.
  virtual void insertSubview(ViewPeer& child, ViewPeer* front) = 0;
  virtual void removeFromSuperview() = 0;

  // For who measures what can be seen. Changes of these are told by ViewChanges::note() (platform/ui/).
  virtual bool paintsContent() const { return false; }                 // more than a background
  virtual std::optional<CGRect> clip() const { return std::nullopt; }  // shows nothing outside of it
  // Asked of root views, and of those that know more of their own sight than the views around them tell: they
  // lie among the host application's widgets, and are covered by those.
  virtual bool knowsSight() const { return false; }
  virtual WindowSight windowSight() const { return {}; }

 protected:
  UIView* owner_ = nullptr;
};

// A rounded rectangle painted behind a button's title; colours may be out of range.
struct ButtonShape {
  CGRect rect;
  double cornerRadius = 0;
  UIColor fillColor;
  UIColor strokeColor;
  double lineWidth = 0;
  double shadowOpacity = 0;
  double shadowRadius = 0;
};

struct ButtonLook {
  std::string title;
  UIColor titleColor;
  double fontSize = 0;  // points
  bool enabled = true;
  bool showsTouchWhenHighlighted = false;
  std::optional<ButtonShape> shape;
};

// A push button. Reports UIButton::peerHighlighted() while
// pressed and UIButton::peerTouchedUpInside() when let go inside.
class VELTO_EXPORT ButtonPeer : public virtual ViewPeer {
 public:
  virtual void setLook(const ButtonLook& look) = 0;
  bool paintsContent() const override { return true; }
};

}  // namespace velto
