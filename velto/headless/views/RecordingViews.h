// What stands behind views and buttons on the headless platform: nothing is painted, the last value of
// everything is kept for the test to look at. Main thread; every call from elsewhere throws std::logic_error.
#pragma once

#include "velto/Export.h"
#include "velto/platform/ViewPeer.h"

#include <memory>
#include <vector>

namespace velto::headless {

class VirtualQueue;

class VELTO_EXPORT RecordingViewPeer : public virtual ViewPeer {
 public:
  explicit RecordingViewPeer(std::shared_ptr<VirtualQueue> queue);
  ~RecordingViewPeer() override;

  // The recording peer of a view made on the headless platform.
  static RecordingViewPeer& of(const UIView& view);

  // What would be on the screen now, in the middle of an animation too.
  const CGRect& frame() const { return frame_; }
  double alpha() const { return alpha_; }
  bool isHidden() const { return hidden_; }
  const UIColor& backgroundColor() const { return backgroundColor_; }
  bool isTouchable() const { return touchable_; }
  bool isModal() const { return modal_; }
  RecordingViewPeer* superview() const { return superview_; }
  const std::vector<RecordingViewPeer*>& subviews() const { return subviews_; }  // painted first to last
  UIView* owner() const { return owner_; }

  void setFrame(const CGRect& frame) override;
  void setAlpha(double alpha) override;
  void setHidden(bool hidden) override;
  void setBackgroundColor(const UIColor& color) override;
  void setTouchable(bool touchable) override;
  void setModal(bool modal) override;
  void insertSubview(ViewPeer& child, ViewPeer* front) override;
  void removeFromSuperview() override;
  WindowSight windowSight() const override { return sight_; }
  void setWindowSight(WindowSight sight);

 protected:
  VirtualQueue& queue() const { return *queue_; }

 private:
  void detach();

  std::shared_ptr<VirtualQueue> queue_;
  CGRect frame_;
  double alpha_ = 1;
  bool hidden_ = false;
  UIColor backgroundColor_;
  bool touchable_ = false;
  bool modal_ = false;
  WindowSight sight_;
  RecordingViewPeer* superview_ = nullptr;
  std::vector<RecordingViewPeer*> subviews_;
};

class VELTO_EXPORT RecordingButtonPeer : public RecordingViewPeer, public ButtonPeer {
 public:
  using RecordingViewPeer::RecordingViewPeer;
  const ButtonLook& look() const { return look_; }
  void setLook(const ButtonLook& look) override;

 private:
  ButtonLook look_;
};

}  // namespace velto::headless
