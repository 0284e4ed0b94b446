// The slot's view, and where it lies.
#include "velto/headless/views/HostSlot.h"

#include "velto/headless/views/HostWindow.h"
#include "velto/platform/Platform.h"
#include "velto/platform/ViewSystem.h"

namespace velto::headless {

// After each layout it looks at what its ad wants.
class HostSlot::View final : public UIView {
 public:
  explicit View(HostSlot* slot) : UIView(Platform::current().views().makeView()), slot_(slot) {}
  void forget() { slot_ = nullptr; }
  void layoutSubviews() override {
    if (slot_) slot_->contentChanged();
  }
  CGRect fullScreenFrame() const override {
    const auto window = slot_ ? slot_->window_.lock() : nullptr;
    return window ? window->view()->safeAreaFrame() : safeAreaFrame();
  }

 private:
  HostSlot* slot_;
};

HostSlot::HostSlot(std::function<void()> changed)
    : changed_(std::move(changed)),
      view_(std::make_shared<View>(this)),
      controller_(std::make_shared<UIViewController>(view_)) {}

HostSlot::~HostSlot() {
  view_->forget();
  moveTo(nullptr);
}

void HostSlot::moveTo(HostWindow* window) {
  const auto to = window ? window->controller() : nullptr;
  const auto from = window_.lock();
  if (from == to) return;
  const auto alive = controller_;
  if (from) {
    view_->removeFromSuperview();
    controller_->removeFromParentViewController();
  }
  window_ = to;
  if (!to) return;
  to->addChildViewController(controller_);
  to->view()->addSubview(view_);
  follow();
}

void HostSlot::setFrame(const CGRect& frame) {
  frame_ = frame;
  follow();
}

void HostSlot::follow() {
  const auto window = window_.lock();
  view_->setFrame(window ? room_.frameIn(frame_, window->view()->bounds().size) : frame_);
}

void HostSlot::contentChanged() {
  const auto before = room_.kind();
  if (!room_.read(*view_)) return;
  const auto window = window_.lock();
  if (window && before == AdRoom::Kind::Slot && room_.kind() != before)
    window->view()->addSubview(view_);  // comes to the front
  if (window) follow();
  if (changed_) changed_();
}

}  // namespace velto::headless
