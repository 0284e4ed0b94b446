// Shared layout of ad views and close buttons.
#include "velto/ui/UIViewControllerUISDKVelto.h"

#include "velto/core/VeltoConstants.h"
#include "velto/platform/Platform.h"
#include "velto/platform/UIDevice.h"

namespace velto {
namespace {

using Attribute = NSLayoutAttribute;

void append(NSLayoutConstraints& list, const NSLayoutConstraints& more) {
  list.insert(list.end(), more.begin(), more.end());
}

std::shared_ptr<NSLayoutConstraint> sameAttribute(const std::shared_ptr<UIView>& view,
                                                  const std::shared_ptr<UIView>& container,
                                                  Attribute attribute, double constant) {
  return NSLayoutConstraint::constraintWithItem({view}, attribute, {container}, attribute, 1.0, constant);
}

NSLayoutConstraints fillingConstraints(UIView& view, UIView& container) {
  const auto inner = view.boxGuide();
  const bool hasSafeArea = Platform::current().device().isSystemVersionAtLeast(11);
  const auto outer = hasSafeArea ? container.safeAreaLayoutGuide() : container.boxGuide();
  return {inner.topAnchor().constraintEqualToAnchor(outer.topAnchor()),
          inner.bottomAnchor().constraintEqualToAnchor(outer.bottomAnchor()),
          inner.leftAnchor().constraintEqualToAnchor(outer.leftAnchor()),
          inner.rightAnchor().constraintEqualToAnchor(outer.rightAnchor())};
}

Attribute verticalPin(int64_t closePosition) {
  switch (closePosition) {
    case VeltoClosePositionCenter:
      return Attribute::CenterY;
    case VeltoClosePositionBottomLeft:
    case VeltoClosePositionBottomCenter:
    case VeltoClosePositionBottomRight:
      return Attribute::BottomMargin;
    default:
      return Attribute::TopMargin;
  }
}

Attribute horizontalPin(int64_t closePosition) {
  switch (closePosition) {
    case VeltoClosePositionTopCenter:
    case VeltoClosePositionCenter:
    case VeltoClosePositionBottomCenter:
      return Attribute::CenterX;
    case VeltoClosePositionTopRight:
    case VeltoClosePositionBottomRight:
      return Attribute::RightMargin;
    default:
      return Attribute::LeftMargin;
  }
}

}  // namespace

NSLayoutConstraints UIViewControllerUISDKVelto::setupWKWebViewConstraintsFor(const View& adView,
                                                                             CGSize size) {
  return _addAdView(adView, size, Attribute::CenterY, Attribute::CenterX);
}

NSLayoutConstraints UIViewControllerUISDKVelto::setupWKWebViewConstraintsFor(const View& adView, CGSize size,
                                                                             int64_t position) {
  if (position == VeltoBannerPositionTop) return _addAdView(adView, size, Attribute::Top, Attribute::CenterX);
  if (position == VeltoBannerPositionBottom)
    return _addAdView(adView, size, Attribute::Bottom, Attribute::CenterX);
  return _addAdView(adView, size, Attribute::Top, Attribute::Left);
}

NSLayoutConstraints UIViewControllerUISDKVelto::addMediationBannerView(const View& adView, CGSize size) {
  return _addAdView(adView, size, Attribute::CenterY, Attribute::CenterX);
}

NSLayoutConstraints UIViewControllerUISDKVelto::_addAdView(const View& adView, CGSize size,
                                                           NSLayoutAttribute verticalAttribute,
                                                           NSLayoutAttribute horizontalAttribute) {
  const auto& container = viewController().view();
  adView->setTranslatesAutoresizingMaskIntoConstraints(false);
  if (adView->superview() != container.get()) container->addSubview(adView);

  NSLayoutConstraints list;
  if (size == CGSize{}) {
    list = fillingConstraints(*adView, *container);
    for (const auto& constraint : list) constraint->setActive(true);
  } else {
    append(list,
           NSLayoutConstraint::constraintsWithVisualFormat("[adView(size)]", NSLayoutFormatAlignAllCenterY,
                                                           {{"size", size.width}}, {{"adView", adView}}));
    append(list,
           NSLayoutConstraint::constraintsWithVisualFormat("V:[adView(size)]", NSLayoutFormatAlignAllCenterX,
                                                           {{"size", size.height}}, {{"adView", adView}}));
    list.push_back(sameAttribute(adView, container, horizontalAttribute, 0));
    list.push_back(sameAttribute(adView, container, verticalAttribute, 0));
  }
  container->addConstraints(list);
  return list;
}

std::shared_ptr<WKWebView> UIViewControllerUISDKVelto::addWKWebViewInViewWithNavigationDelegate(
    std::weak_ptr<WKNavigationDelegate> delegate) {
  return makeWebView(std::move(delegate));
}

std::shared_ptr<VeltoCloseButton> UIViewControllerUISDKVelto::addCloseButtonInView(
    const View& view, const VeltoCloseButtonUIConfiguration& configuration, std::function<void()> action,
    std::optional<double> timer) {
  auto button = VeltoCloseButton::buttonWithType(configuration.buttonType, timer);
  button->setTranslatesAutoresizingMaskIntoConstraints(false);
  button->addAction(
      [weak = viewController().weak_from_this(), action = std::move(action)] {
        if (const auto alive = weak.lock()) action();
      },
      UIControlEventTouchUpInside);
  view->addSubview(button);

  // Downward by the margin and leftward by it, whatever edge the position names: pages rely on where that
  // puts it.
  const double margin = configuration.margin;
  const double size = configuration.size;
  view->addConstraints({sameAttribute(button, view, verticalPin(configuration.position), margin),
                        sameAttribute(button, view, horizontalPin(configuration.position), -margin)});
  view->addConstraints(
      NSLayoutConstraint::constraintsWithVisualFormat("[btn(size)]", 0, {{"size", size}}, {{"btn", button}}));
  view->addConstraints(NSLayoutConstraint::constraintsWithVisualFormat("V:[btn(size)]", 0, {{"size", size}},
                                                                       {{"btn", button}}));
  return button;
}

void UIViewControllerUISDKVelto::addTapGestureRecognizerInView(std::function<void()> action) {
  auto recognizer = std::make_shared<UITapGestureRecognizer>(
      [weak = viewController().weak_from_this(), action = std::move(action)] {
        if (const auto alive = weak.lock()) action();
      });
  recognizer->setDelegate(
      std::shared_ptr<UIGestureRecognizerDelegate>(viewController().shared_from_this(), this));
  viewController().view()->addGestureRecognizer(std::move(recognizer));
}

// The page's own touches must still work.
bool UIViewControllerUISDKVelto::gestureRecognizer(UITapGestureRecognizer&) {
  return true;
}

CGRect UIViewControllerUISDKVelto::getFullScreenFrameFor(const View& view,
                                                         const std::shared_ptr<UIViewController>& vc) {
  if (!view || !vc) return {};
  if (Platform::current().device().isSystemVersionAtLeast(11)) return view->fullScreenFrame();
  const CGSize size = view->frame().size;
  const double top = vc->topLayoutGuideLength();
  return {{0, top}, {size.width, size.height - top - vc->bottomLayoutGuideLength()}};
}

void UIViewControllerUISDKVelto::setOrientation(int64_t orientation,
                                                bool postCurrentOrientationNotification) {
  if (orientation == UIDeviceOrientationUnknown) return;
  auto& platform = Platform::current();
  if (postCurrentOrientationNotification)
    platform.notificationCenter().postNotification(
        {constNotificationUICurrentOrientation, platform.device().orientation()});
  platform.device().setOrientation(orientation);
  UIViewController::attemptRotationToDeviceOrientation();
}

}  // namespace velto
