// The working controller of an interstitial, and the screen itself: fetches the ad, is presented over the
// host's view controller, counts the close button down, and carries out what its page asks for. Main thread.
#pragma once

#include "velto/ads/VeltoAdMediationCoreAdapter.h"
#include "velto/core/VeltoSettings.h"
#include "velto/measurement/UIViewControllerOMSDKSDKVelto.h"
#include "velto/mraid/UIViewControllerMRAIDSDKVelto.h"
#include "velto/platform/NSTimer.h"
#include "velto/platform/ui/UIViewController.h"
#include "velto/platform/ui/UIViewControllerTransitioning.h"
#include "velto/ui/UIViewControllerCoreSDKVelto.h"
#include "velto/ui/UIViewControllerUIAnimationSDKVelto.h"
#include "velto/ui/UIViewControllerUISDKVelto.h"
#include "velto/ui/UIViewControllerWKWebViewSDKVelto.h"
#include "velto/ui/VeltoUIAnimation.h"
#include "velto/video/AVAudioSDKVelto.h"
#include "velto/video/AVVideoSDKVelto.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace velto {

class VeltoInterstitialViewControllerPrivate final : public UIViewController,
                                                     public UIViewControllerCoreSDKVelto,
                                                     public UIViewControllerWKWebViewSDKVelto,
                                                     public UIViewControllerUISDKVelto,
                                                     public UIViewControllerUIAnimationSDKVelto,
                                                     public UIViewControllerMRAIDSDKVelto,
                                                     public UIViewControllerOMSDKSDKVelto,
                                                     public AVAudioSDKVelto,
                                                     public AVVideoSDKVelto,
                                                     public VeltoAdMediationAdapterDelegate,
                                                     public MediationBannerPresenter,
                                                     public UIViewControllerTransitioningDelegate {
 public:
  static std::shared_ptr<VeltoInterstitialViewControllerPrivate> initWithDelegate(
      const std::shared_ptr<VeltoInterstitialViewControllerDelegate>& delegate);
  ~VeltoInterstitialViewControllerPrivate() override;

  void setAutoShowWhenReady(bool autoShow) { autoShow_ = autoShow; }
  void setAnimation(int64_t animation) { animation_ = animation; }
  void load() { fetch(std::nullopt); }
  void load(const VeltoSettings& settings) { fetch(settings); }
  bool isReady() const { return isReady_; }
  void show();
  // Nobody holds the public object any more: leaves the screen, and calls nobody from here on.
  void abandon();

  // What was fetched.
  void fetchBannerSuccess(const std::shared_ptr<VeltoAd>& ad) override;
  MediationBannerPresenter* mediationBannerPresenter() override { return this; }
  void presentMediationBanner(const std::shared_ptr<VeltoAd>& ad) override;

  // What the web view reports.
  void veltoBannerInjected(WKWebView& webView) override;
  void veltoAdLoaded(WKWebView&) override {}
  void veltoDismissWKWebView(WKWebView& webView) override;
  void veltoWKWebViewDidFinishNavigation(WKWebView& webView) override;
  void veltoWKWebViewDidFailNavigation(const NSError& error) override;

  // What a person does.
  void _adDidPress();
  void _tapCloseButton() { dismissInterstitialViewController(true); }
  bool accessibilityPerformEscape() override;
  void mediationBannerDidPress() override { _adDidPress(); }
  void mediationBannerDidClose() override { dismissInterstitialViewController(true); }

  // What the page commands (VeltoInterstitialViewControllerMRAID.cpp).
  std::shared_ptr<VeltoMRAIDHandler> veltoGetMRAIDHandler() override { return mraidHandler_; }
  void playVideoAt(const NSURL& url) override { AVVideoSDKVelto::playVideoAt(url); }
  CGRect veltoMRAIDGetFullscreenFrame() override;
  void veltoMRAIDRemoveCloseCustomButton() override;
  void veltoMRAIDCloseInterstitial() override { dismissInterstitialViewController(true); }
  void veltoMRAIDUnload() override { dismissInterstitialViewController(true); }
  void veltoMRAIDResize(const std::shared_ptr<VeltoMRAIDPropertyResize>& property,
                        const VeltoCloseButtonUIConfiguration& btnCloseConfiguration) override;
  void veltoMRAIDCloseResize() override;
  void veltoMRAIDExpand(const std::optional<std::string>& secondPartURL,
                        const CloseButton& btnCloseConfiguration) override;
  void veltoMRAIDCloseExpand() override { _tapCloseButtonExpand(); }
  void _tapCloseButtonExpand();
  void _tapCloseButtonResize();
  // Actions: 0 expand, 1 close expand, 2 resize, 3 close resize. The own view is never moved.
  enum ExpandOrResize : int64_t { Expand = 0, CloseExpand = 1, Resize = 2, CloseResize = 3 };
  void _expandOrResizeMainWebView(int64_t action, CGSize size, CGPoint offset);

  std::shared_ptr<UIViewControllerAnimatedTransitioning> animationControllerForPresentedController(
      UIViewController& presented, UIViewController& presentingController,
      UIViewController& sourceController) override;
  std::shared_ptr<UIViewControllerAnimatedTransitioning> animationControllerForDismissedController(
      UIViewController& dismissed) override;

  void dismissInterstitialViewController(bool animated);

  // A new value of the output volume, 0 … 1.
  void observeValueForKeyPath(const std::string& keyPath, float newValue, const void* context) override;

  void viewWillAppear(bool animated) override;
  void viewWillDisappear(bool animated) override;
  void viewWillTransitionToSize(CGSize size, UIViewControllerTransitionCoordinator& coordinator) override;
  bool shouldAutorotate() const override;
  uint64_t supportedInterfaceOrientations() const override;

  // What is shown now; for tests and debuggers.
  const std::shared_ptr<VeltoAd>& ad() const { return ad_; }
  const std::shared_ptr<WKWebView>& webView() const { return webView_; }
  const std::shared_ptr<VeltoCloseButton>& veltoCloseButton() const { return veltoCloseButton_; }
  bool hasCloseTimer() const { return timerClose_ != nullptr; }

  // The second part of an expanded page while there is one, else the main page.
  std::shared_ptr<WKWebView> activeWebView() const {
    return getActiveWebView(webView_, secondaryMRAIDWebView_);
  }

  using UIViewControllerWKWebViewSDKVelto::webView;

 private:
  VeltoInterstitialViewControllerPrivate() = default;
  UIViewController& viewController() override { return *this; }
  void tellMeasurement(float volume) override { volumePlaybackNativeVideoChangeOMSD(volume); }
  VeltoInterstitialViewControllerPrivate* interstitialController() override {
    return abandoned_ ? nullptr : this;
  }
  bool animatesAsBanner() const override { return false; }
  std::shared_ptr<WKWebView> makeWebView(std::weak_ptr<WKNavigationDelegate> delegate) override {
    return createWKWebViewInstance(std::move(delegate));
  }
  void handleMRAIDAction(const NSURL& url, WKWebView& webView) override;

  std::shared_ptr<VeltoInterstitialViewControllerPrivate> self();
  VeltoControllerDelegate delegate() const { return delegate_.lock(); }
  // From the call to show until it has gone again.
  bool isOnScreen() const { return showing_ || dismissing_ || presentingViewController(); }

  void fetch(const std::optional<VeltoSettings>& settings);
  bool takesNow(const std::shared_ptr<VeltoAd>& ad);
  void takeWaitingAd();
  void becomeReady(const std::shared_ptr<VeltoAd>& ad, bool withWebView);
  void _addBlurEffect();
  void _addBannerInView(bool withWebView, CGSize size);
  void _addInterstitialCloseButtonWithTimer(std::optional<double> timer);
  void _adLoaded();
  bool _presentBanner();
  void presented();
  void failed();
  void _updateInterfaceOrientation();
  void _startCounterTimer();
  void _updateCounterTimer();
  void _setMRAIDAsReady(const std::shared_ptr<WKWebView>& webView);
  void _initSecondMRAIDWebView();
  void _invalidateBanner();
  void _removeAllWebViews();
  void removeCloseButton();
  void _notificationAdMobAdapterGADInterstitialReady(const NSNotification& notification);
  void _notificationAdMobAdapterGADInterstitialError();
  void _notificationUICurrentOrientation(const NSNotification& notification);
  void _restoreOriginalOrientation();
  // The same, unless it shows another page by then.
  void afterATenthOnThisPage(std::function<void(VeltoInterstitialViewControllerPrivate&)> step);
  void afterATenth(
      std::function<void(VeltoInterstitialViewControllerPrivate&)> step);  // unless it is gone by then

  bool isReady_ = false;
  bool autoShow_ = false;
  bool showing_ = false;     // show was called, and nothing is presented yet
  bool dismissing_ = false;  // on its way out
  bool abandoned_ = false;
  int64_t animation_ = VeltoAnimationNone;
  std::unique_ptr<NSTimer> timerClose_;
  std::optional<float> timerValue_;  // seconds until the close button is active
  std::shared_ptr<VeltoCloseButton> veltoCloseButton_;
  std::shared_ptr<WKWebView> webView_;
  std::shared_ptr<WKWebView> secondaryMRAIDWebView_;  // of a two-part expand
  std::shared_ptr<VeltoAdMediationCoreAdapterProtocol> adapter_;
  std::shared_ptr<VeltoAd> ad_;
  std::shared_ptr<VeltoAd> waitingAd_;  // came while another was on the screen
  std::weak_ptr<UIViewController> vc_;  // the host's, which presents
  std::weak_ptr<VeltoInterstitialViewControllerDelegate> delegate_;
  std::shared_ptr<VeltoUIAnimatedTransitioning> animator_;
  NSLayoutConstraints webViewContraints_;
  uint64_t interfaceOrientationMask_ = UIInterfaceOrientationMaskAll;  // fixed when it is presented
  std::shared_ptr<VeltoMRAIDHandler> mraidHandler_;                    // of a rich-media ad
  std::optional<int64_t> originalOrientation_;                         // to go back to
  std::string audioContext_;  // its address marks our observation of the volume
  Handle adapterReadyObserver_;
  Handle adapterErrorObserver_;
  Handle orientationObserver_;
};

}  // namespace velto
