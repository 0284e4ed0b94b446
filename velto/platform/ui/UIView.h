// A rectangle on the screen: the library's own view tree, the same on every platform. A peer (ViewPeer.h)
// shows each view. Views are owned by their superview and by whoever else holds the pointer. Main thread only.
#pragma once

#include "velto/Export.h"
#include "velto/platform/Geometry.h"
#include "velto/platform/Handle.h"
#include "velto/platform/UIColor.h"
#include "velto/platform/ViewPeer.h"
#include "velto/platform/ui/NSLayoutConstraint.h"
#include "velto/platform/ui/UIGestureRecognizer.h"
#include "velto/platform/ui/UIResponder.h"

#include <memory>
#include <vector>

namespace velto {

class VELTO_EXPORT UIView : public UIResponder, public std::enable_shared_from_this<UIView> {
 public:
  static std::shared_ptr<UIView> make();
  // For platforms, which wrap a view of the host application with a peer of their own.
  static std::shared_ptr<UIView> makeWithPeer(std::unique_ptr<ViewPeer> peer);
  UIView(const UIView&) = delete;
  UIView& operator=(const UIView&) = delete;
  ~UIView() override;

  // In the superview's coordinates. Setting it lays the subviews out; a running animation ends there then.
  const CGRect& frame() const { return frame_; }
  void setFrame(const CGRect& frame);
  CGRect bounds() const { return {{0, 0}, frame_.size}; }
  double alpha() const { return alpha_; }
  void setAlpha(double alpha);
  bool isHidden() const { return hidden_; }
  void setHidden(bool hidden);
  const UIColor& backgroundColor() const { return backgroundColor_; }
  void setBackgroundColor(const UIColor& color);
  // Whether there is anything to be seen of the view itself, its subviews left aside.
  bool paints() const;

  // The tree. A view is added in front of all others but those that stay there, also one that is a subview already;
  // one that has another superview is moved.
  void addSubview(const std::shared_ptr<UIView>& view);
  void removeFromSuperview();
  UIView* superview() const { return superview_; }
  const std::vector<std::shared_ptr<UIView>>& subviews() const { return subviews_; }
  bool isDescendantOfView(const UIView& view) const;  // a view is its own descendant
  // Whether the topmost superview is shown by a window of the host application.
  bool isInWindow() const;
  UIResponder* nextResponder() const override;

  // Layout by constraints. A view translates its autoresizing mask (keeps its frame) until told otherwise.
  bool translatesAutoresizingMaskIntoConstraints() const { return translatesMask_; }
  void setTranslatesAutoresizingMaskIntoConstraints(bool translates);
  void setAutoresizingMask(unsigned mask) { autoresizingMask_ = mask; }
  const NSLayoutConstraints& constraints() const { return constraints_; }
  // Those that speak of it, whoever holds them.
  const NSLayoutConstraints& involvedIn() const { return involvedIn_; }
  void addConstraints(const NSLayoutConstraints& constraints);  // one that is there already stays where it is
  void removeConstraints(const NSLayoutConstraints& constraints);
  void setNeedsLayout();            // a layout pass follows in the next turn of the main queue
  void layoutIfNeeded();            // or now, for the whole tree that this view is in
  virtual void layoutSubviews() {}  // called after the subviews have their new frames

  UILayoutGuide boxGuide();             // the view's own edges
  UILayoutGuide safeAreaLayoutGuide();  // the edges of its safe area
  CGRect safeAreaFrame() const;         // own coordinates
  // What a view in it gets that asks for all the room there is: more where this one can leave its place.
  virtual CGRect fullScreenFrame() const { return safeAreaFrame(); }
  UIEdgeInsets safeAreaInsets() const;
  static constexpr double layoutMargin = 8;                               // points
  UIEdgeInsets layoutMargins() const;                                     // as much inside the safe area
  CGPoint convertPointFromView(CGPoint point, const UIView& view) const;  // both in one tree

  void addGestureRecognizer(std::shared_ptr<UITapGestureRecognizer> recognizer);
  virtual bool staysInFront() const { return false; }
  virtual bool isControl() const { return false; }  // whether its touches belong to it alone

  // For animations (UIViewAnimation.h): by how much what is shown differs from frame and alpha, which are final.
  void displace(const CGRect& frame, double alpha);
  void setAnimation(Handle animation) { animation_ = std::move(animation); }

  // For peers: a person tapped at a point of this view (own coordinates).
  virtual void peerTapped(CGPoint point);
  virtual void peerEscaped() {}                                 // Escape, while this view was the modal one
  virtual bool peerKeyPressed(UIKey /*key*/) { return false; }  // whether the key meant something
  // For platforms, on the root views they make: the window came or went, its safe area changed.
  void platformSetInWindow(bool inWindow);
  void platformSetSafeAreaInsets(const UIEdgeInsets& insets);
  ViewPeer& peer() const { return *peer_; }

 protected:
  explicit UIView(std::unique_ptr<ViewPeer> peer);

 private:
  friend class UIViewController;
  void layoutTree();
  void showFrame();
  void showAlpha();
  void involve(const std::shared_ptr<NSLayoutConstraint>& constraint);
  void takeTiesOff(const UIView& view);
  void insertInFront(const std::shared_ptr<UIView>& view);
  void resizeFlexibleSubviews(CGSize from);
  void windowChanged(bool inWindow);
  UIView& root();

  std::unique_ptr<ViewPeer> peer_;
  CGRect frame_, frameDisplacement_;
  double alpha_ = 1, alphaDisplacement_ = 0;
  bool hidden_ = false;
  UIColor backgroundColor_;
  UIView* superview_ = nullptr;
  std::vector<std::shared_ptr<UIView>> subviews_;
  UIViewController* controller_ = nullptr;  // whose own view this is
  NSLayoutConstraints constraints_, involvedIn_;
  bool translatesMask_ = true;
  unsigned autoresizingMask_ = 0;
  bool needsLayout_ = false, rootInWindow_ = false;
  UIEdgeInsets rootSafeAreaInsets_;
  std::vector<std::shared_ptr<UITapGestureRecognizer>> recognizers_;
  Handle animation_;
};

}  // namespace velto
