// Where an ad view is pinned, the close button, the full-screen frame, forced orientations and taps: what
// banners, interstitials and rich media share in layout. A mixin of the working controllers; main thread.
#pragma once

#include "velto/platform/ui/UIViewController.h"
#include "velto/platform/ui/WKWebView.h"
#include "velto/ui/VeltoCloseButton.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace velto {

// Posted before an orientation is forced, with the device's present orientation (a number) as its object.
inline constexpr char constNotificationUICurrentOrientation[] = "constNotificationUICurrentOrientationVelto";

class UIViewControllerUISDKVelto : public UIGestureRecognizerDelegate {
 public:
  using View = std::shared_ptr<UIView>;

  // Put the ad view into this controller's view and pin it; a zero size fills the safe area. What is returned
  // is what to remove again later.
  NSLayoutConstraints setupWKWebViewConstraintsFor(const View& adView, CGSize size);  // centred
  NSLayoutConstraints setupWKWebViewConstraintsFor(const View& adView, CGSize size,
                                                   int64_t position);           // by position
  NSLayoutConstraints addMediationBannerView(const View& adView, CGSize size);  // centred
  NSLayoutConstraints _addAdView(const View& adView, CGSize size, NSLayoutAttribute verticalAttribute,
                                 NSLayoutAttribute horizontalAttribute);

  std::shared_ptr<WKWebView> addWKWebViewInViewWithNavigationDelegate(
      std::weak_ptr<WKNavigationDelegate> delegate);

  std::shared_ptr<VeltoCloseButton> addCloseButtonInView(const View& view,
                                                         const VeltoCloseButtonUIConfiguration& configuration,
                                                         std::function<void()> action,
                                                         std::optional<double> timer);

  // Taps on this controller's view, also those that the page takes.
  void addTapGestureRecognizerInView(std::function<void()> action);
  bool gestureRecognizer(UITapGestureRecognizer& recognizer) override;

  // The safe area of the view, in its own coordinates; zero without a view or controller.
  static CGRect getFullScreenFrameFor(const View& view, const std::shared_ptr<UIViewController>& vc);

  // Turns the device's interface: 0 nothing, 1 portrait, 3 and 4 landscape.
  static void setOrientation(int64_t orientation, bool postCurrentOrientationNotification);

 protected:
  virtual UIViewController& viewController() = 0;
  // The web view host's maker (see UIViewControllerWKWebViewSDKVelto).
  virtual std::shared_ptr<WKWebView> makeWebView(std::weak_ptr<WKNavigationDelegate> delegate) = 0;
};

}  // namespace velto
