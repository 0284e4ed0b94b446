// A push button with a title for each state and an optional painted shape. Main thread only.
#pragma once

#include "velto/Export.h"
#include "velto/platform/ui/UIView.h"

#include <functional>
#include <map>
#include <optional>
#include <string>

namespace velto {

enum UIControlState : unsigned {
  UIControlStateNormal = 0,
  UIControlStateHighlighted = 1,
  UIControlStateDisabled = 2
};
enum UIControlEvents : unsigned { UIControlEventTouchUpInside = 64 };

class VELTO_EXPORT UIButton : public UIView {
 public:
  void setTitle(const std::string& title);  // for all states
  const std::string& title() const { return title_; }
  void setTitleColor(const UIColor& color, UIControlState state);
  UIColor titleColor(UIControlState state) const;  // the normal state's where the state has none
  void setTitleFontSize(double points);
  void setShowsTouchWhenHighlighted(bool shows);
  void setEnabled(bool enabled);
  bool isEnabled() const { return enabled_; }
  virtual void setHighlighted(bool highlighted);
  bool isHighlighted() const { return highlighted_; }
  void addAction(std::function<void()> action, UIControlEvents events);
  bool isControl() const override { return true; }

  // Presses it as a person would: nothing while it is disabled.
  void sendTouchUpInside();

  // For peers.
  void peerHighlighted(bool highlighted) { setHighlighted(highlighted); }
  void peerTouchedUpInside() { sendTouchUpInside(); }
  void peerTapped(CGPoint point) override;

 protected:
  UIButton();
  void setShape(std::optional<ButtonShape> shape);
  const std::optional<ButtonShape>& shape() const { return shape_; }

 private:
  explicit UIButton(std::unique_ptr<ButtonPeer> peer);
  UIButton(ButtonPeer* buttonPeer, std::unique_ptr<ViewPeer> peer);
  void updateLook();

  ButtonPeer* buttonPeer_;
  std::string title_;
  std::map<UIControlState, UIColor> titleColors_;
  double fontSize_ = 17;
  bool showsTouch_ = false;
  bool enabled_ = true;
  bool highlighted_ = false;
  std::optional<ButtonShape> shape_;
  std::vector<std::function<void()>> actions_;
};

}  // namespace velto
