// A slot of the headless platform: a place among the application's own things that an ad stands in. Give its controller
// as the delegate's presentViewController. An ad that needs more room for a time lies over the window, and comes back.
// Main thread.
#pragma once

#include "velto/Export.h"
#include "velto/platform/ui/AdRoom.h"
#include "velto/platform/ui/UIViewController.h"

#include <functional>
#include <memory>

namespace velto::headless {

class HostWindow;

class VELTO_EXPORT HostSlot {
 public:
  // In no window yet. `changed` is called when its ad came, went, or wants other room.
  explicit HostSlot(std::function<void()> changed = {});
  HostSlot(const HostSlot&) = delete;
  HostSlot& operator=(const HostSlot&) = delete;
  ~HostSlot();

  const std::shared_ptr<UIViewController>& controller() const { return controller_; }
  UIView& view() const { return *controller_->view(); }

  // Into a window, or (null) out of all of them, with the ad as it is.
  void moveTo(HostWindow* window);
  // Where the window has put it.
  void setFrame(const CGRect& frame);
  const AdRoom& room() const { return room_; }

 private:
  class View;
  void contentChanged();
  void follow();

  std::function<void()> changed_;
  AdRoom room_;
  CGRect frame_;
  std::shared_ptr<View> view_;
  std::shared_ptr<UIViewController> controller_;
  std::weak_ptr<UIViewController> window_;
};

}  // namespace velto::headless
