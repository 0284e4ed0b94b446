// Where a banner stands in its container, and how an expand or resize of its page moves it and its web view.
#include "velto/platform/Platform.h"
#include "velto/platform/UIDevice.h"
#include "velto/ui/VeltoBannerViewControllerPrivate.h"

namespace velto {
namespace {

using Attribute = NSLayoutAttribute;

// The edges that nothing of the device covers. Systems older than 11 know them at top and bottom only.
struct Guides {
  NSLayoutAnchor top, bottom, left, right;
};

Guides guidesOf(UIView& container, UIViewController& host) {
  const auto safe = container.safeAreaLayoutGuide();
  if (Platform::current().device().isSystemVersionAtLeast(11))
    return {safe.topAnchor(), safe.bottomAnchor(), safe.leftAnchor(), safe.rightAnchor()};
  const auto bars = host.view()->safeAreaLayoutGuide();
  const auto box = container.boxGuide();
  return {bars.topAnchor(), bars.bottomAnchor(), box.leftAnchor(), box.rightAnchor()};
}

}  // namespace

void VeltoBannerViewControllerPrivate::_resizeAndMoveView(CGSize size, int64_t position) {
  const auto container = viewAd_.lock();
  const auto vc = vc_.lock();
  if (!container || !vc) return;
  const auto own = view()->boxGuide();
  const auto guides = guidesOf(*container, *vc);

  NSLayoutConstraints list;
  const auto activate = [&list](std::shared_ptr<NSLayoutConstraint> constraint) {
    constraint->setActive(true);
    list.push_back(std::move(constraint));
  };

  if (position == VeltoBannerPositionTop || position == VeltoBannerPositionFullScreen)
    activate(own.topAnchor().constraintEqualToAnchor(guides.top));
  if (position == VeltoBannerPositionBottom || position == VeltoBannerPositionFullScreen ||
      position == VeltoBannerPositionResized)
    activate(own.bottomAnchor().constraintEqualToAnchor(guides.bottom));
  if (position == VeltoBannerPositionLocation)
    activate(own.topAnchor().constraintEqualToAnchor(guides.top, location_.y));

  if (position == VeltoBannerPositionTop || position == VeltoBannerPositionBottom ||
      position == VeltoBannerPositionResized)
    activate(NSLayoutConstraint::constraintWithItem({view()}, Attribute::CenterX, {container},
                                                    Attribute::CenterX, 1, 0));
  if (position == VeltoBannerPositionLocation)
    activate(own.leftAnchor().constraintEqualToAnchor(guides.left, location_.x));
  if (position == VeltoBannerPositionFullScreen) {
    activate(own.leftAnchor().constraintEqualToAnchor(guides.left));
    activate(own.rightAnchor().constraintEqualToAnchor(guides.right));
  }

  // Without a size the pins alone decide.
  if (size.width != 0 && size.height != 0) {
    for (const auto& constraint : NSLayoutConstraint::constraintsWithVisualFormat(
             "[view(size)]", NSLayoutFormatAlignAllCenterY, {{"size", size.width}}, {{"view", view()}}))
      list.push_back(constraint);
    for (const auto& constraint : NSLayoutConstraint::constraintsWithVisualFormat(
             "V:[view(size)]", NSLayoutFormatAlignAllCenterX, {{"size", size.height}}, {{"view", view()}}))
      list.push_back(constraint);
  }
  viewContraints_ = list;
  container->addConstraints(list);
}

// The offset of a resize is not applied: a resized banner stands at the bottom centre of its container.
void VeltoBannerViewControllerPrivate::_expandOrResizeMainWebView(int64_t action, CGSize size,
                                                                  CGPoint /*offset*/) {
  const auto page = webView();
  if (!page || !ad()) return;
  if (const auto container = viewAd_.lock()) container->removeConstraints(viewContraints_);
  view()->removeConstraints(webViewContraints_);

  int64_t placement = position_;
  int64_t webViewPosition = position_;
  CGSize newSize = ad()->size;
  if (action == Expand) {
    placement = VeltoBannerPositionFullScreen;
    newSize = {};
  } else if (action == Resize) {
    placement = VeltoBannerPositionResized;
    webViewPosition = VeltoBannerPositionFullScreen;  // pins to the top left
    newSize = size;
  }
  _resizeAndMoveView(newSize, placement);
  webViewContraints_ = setupWKWebViewConstraintsFor(page, newSize, webViewPosition);
  form_ = action == Expand   ? VeltoBannerStateExpanded
          : action == Resize ? VeltoBannerStateResized
                             : VeltoBannerStateShown;
  tellState();
}

std::shared_ptr<WKWebView> VeltoBannerViewControllerPrivate::_initSecondMRAIDWebView() {
  if (const auto container = viewAd_.lock()) container->removeConstraints(viewContraints_);
  auto second = addWKWebViewInViewWithNavigationDelegate(shown_);
  _resizeAndMoveView({}, VeltoBannerPositionFullScreen);
  setupWKWebViewConstraintsFor(second, CGSize{});
  form_ = VeltoBannerStateExpanded;
  tellState();
  return second;
}

}  // namespace velto
