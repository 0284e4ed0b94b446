// Modal presentation.
#include "velto/platform/ui/UIPresentation.h"

#include "velto/platform/AnswerOnMain.h"
#include "velto/platform/Platform.h"
#include "velto/platform/ViewSystem.h"

#include <utility>

namespace velto {
namespace {

constexpr unsigned fillsItsSuperview = UIViewAutoresizingFlexibleWidth | UIViewAutoresizingFlexibleHeight;

// Lies over all of the window, and hears the keyboard.
class Cover final : public UIView {
 public:
  explicit Cover(std::weak_ptr<UIViewController> presented)
      : UIView(Platform::current().views().makeView()), presented_(std::move(presented)) {}
  bool staysInFront() const override { return true; }
  // What a screen makes nothing of goes to the one below it.
  void peerEscaped() override {
    const auto presented = presented_.lock();
    auto* screen = presented.get();
    while (screen && !screen->accessibilityPerformEscape()) screen = screen->presentingViewController();
  }
  bool peerKeyPressed(UIKey key) override {
    const auto presented = presented_.lock();
    return presented && presented->pressesBegan(key);
  }

 private:
  std::weak_ptr<UIViewController> presented_;
};

UIView& rootOf(UIView& view) {
  UIView* root = &view;
  while (root->superview()) root = root->superview();
  return *root;
}

std::shared_ptr<UIViewControllerTransitioningDelegate> delegateOf(
    const std::weak_ptr<UIViewControllerTransitioningDelegate>& delegate, int64_t style) {
  return style == UIModalPresentationCustom ? delegate.lock() : nullptr;
}

}  // namespace

UIPresentation::UIPresentation(UIViewController& presenter, std::shared_ptr<UIViewController> presented)
    : presenter_(&presenter), presented_(std::move(presented)), cover_(std::make_shared<Cover>(presented_)) {
  // No screen may stay over the host's window when nobody is there any more who could close it.
  platformObserver_ = Platform::current().notificationCenter().addObserver(
      notificationPlatformWillGo, [this](const NSNotification&) { gone(); });
}

void UIPresentation::come(UIViewController& source, bool animated, Completion completion) {
  arrival_ = std::move(completion);
  UIView& root = rootOf(*presenter_->view());
  presented_->presenting_ = presenter_;
  root.addSubview(cover_);
  cover_->setFrame(root.bounds());
  cover_->setAutoresizingMask(fillsItsSuperview);
  cover_->peer().setModal(true);

  const auto delegate = delegateOf(presented_->transitioningDelegate_, presented_->modalPresentationStyle_);
  if (animated && delegate)
    animator_ = delegate->animationControllerForPresentedController(*presented_, *presenter_, source);
  if (animator_) return animator_->animateTransition(shared_from_this());

  const auto& view = presented_->view();
  view->setTranslatesAutoresizingMaskIntoConstraints(true);
  view->setAutoresizingMask(fillsItsSuperview);
  view->setAlpha(1);
  cover_->addSubview(view);
  view->setFrame(cover_->bounds());
  completeTransition(true);
}

void UIPresentation::completeTransition(bool) {
  const auto alive = shared_from_this();
  animator_.reset();
  if (phase_ == Phase::Coming) return arrived();
  if (phase_ == Phase::Going) gone();
}

void UIPresentation::arrived() {
  phase_ = Phase::Shown;
  answerOnMain(std::exchange(arrival_, nullptr));
  if (!departures_.empty()) depart(departures_.front().animated);
}

void UIPresentation::go(bool animated, Completion completion) {
  departures_.push_back({animated, std::move(completion)});
  if (phase_ == Phase::Shown) depart(animated);
}

void UIPresentation::depart(bool animated) {
  const auto alive = shared_from_this();
  phase_ = Phase::Going;
  if (const auto above = presented_->presentation_) {  // what it presents goes with it
    above->presenterGone();
    presented_->presentation_.reset();
  }
  const auto delegate = delegateOf(presented_->transitioningDelegate_, presented_->modalPresentationStyle_);
  if (animated && delegate) animator_ = delegate->animationControllerForDismissedController(*presented_);
  if (animator_) return animator_->animateTransition(alive);
  presented_->view()->removeFromSuperview();
  gone();
}

void UIPresentation::gone() {
  const auto alive = shared_from_this();
  auto* presenter = presenter_;
  presenterGone();
  if (presenter) presenter->presentation_.reset();
}

void UIPresentation::presenterGone() {
  const auto alive = shared_from_this();
  if (std::exchange(phase_, Phase::Gone) == Phase::Gone) return;
  if (const auto above = presented_->presentation_) {
    above->presenterGone();
    presented_->presentation_.reset();
  }
  presented_->presenting_ = nullptr;
  presenter_ = nullptr;
  animator_.reset();
  presented_->view()->setAnimation({});  // which may be on its way still
  presented_->view()->removeFromSuperview();
  cover_->peer().setModal(false);
  cover_->removeFromSuperview();
  answerOnMain(std::exchange(arrival_, nullptr));
  for (auto& departure : std::exchange(departures_, {})) answerOnMain(std::move(departure.completion));
  presented_->presenterDidGo();
}

// --- the controllers' side

bool UIViewController::canPresent() const {
  const UIViewController* presenter = this;
  while (presenter->parent_) presenter = presenter->parent_;
  return !presenter->presentation_ && presenter->view()->isInWindow();
}

void UIViewController::presentViewController(const std::shared_ptr<UIViewController>& controller,
                                             bool animated, std::function<void()> completion) {
  UIViewController* presenter = this;
  while (presenter->parent_) presenter = presenter->parent_;
  if (!canPresent() || controller->presenting_) return answerOnMain(std::move(completion));
  presenter->presentation_ = std::make_shared<UIPresentation>(*presenter, controller);
  const auto presentation = presenter->presentation_;
  presentation->come(*this, animated, std::move(completion));
}

void UIViewController::dismissViewControllerAnimated(bool animated, std::function<void()> completion) {
  const auto presentation = presenting_ ? presenting_->presentation_ : presentation_;
  if (presentation) return presentation->go(animated, std::move(completion));
  answerOnMain(std::move(completion));
}

void UIViewController::platformWindowGone() {
  if (const auto presentation = std::exchange(presentation_, nullptr)) presentation->presenterGone();
}

std::shared_ptr<UIViewController> UIViewController::presentedViewController() const {
  return presentation_ ? presentation_->presented() : nullptr;
}

}  // namespace velto
