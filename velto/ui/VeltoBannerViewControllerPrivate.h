// The working controller of a banner: fetches the ad, hosts its web view (or another network's view) as a
// child of the host's view controller, refreshes it, and carries out what its page asks for. Main thread.
#pragma once

#include "velto/ads/VeltoAdMediationCoreAdapter.h"
#include "velto/core/VeltoSettings.h"
#include "velto/measurement/UIViewControllerOMSDKSDKVelto.h"
#include "velto/mraid/UIViewControllerMRAIDSDKVelto.h"
#include "velto/platform/NSTimer.h"
#include "velto/platform/ui/UIViewController.h"
#include "velto/ui/UIViewControllerCoreSDKVelto.h"
#include "velto/ui/UIViewControllerUIAnimationSDKVelto.h"
#include "velto/ui/UIViewControllerUISDKVelto.h"
#include "velto/ui/UIViewControllerWKWebViewSDKVelto.h"
#include "velto/video/AVAudioSDKVelto.h"
#include "velto/video/AVVideoSDKVelto.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace velto {

class VeltoBannerViewControllerPrivate final : public UIViewController,
                                               public UIViewControllerCoreSDKVelto,
                                               public UIViewControllerWKWebViewSDKVelto,
                                               public UIViewControllerUISDKVelto,
                                               public UIViewControllerUIAnimationSDKVelto,
                                               public UIViewControllerMRAIDSDKVelto,
                                               public UIViewControllerOMSDKSDKVelto,
                                               public AVAudioSDKVelto,
                                               public AVVideoSDKVelto,
                                               public VeltoAdMediationAdapterDelegate,
                                               public MediationBannerViewPresenter {
 public:
  static std::shared_ptr<VeltoBannerViewControllerPrivate> initWithDelegate(
      const std::shared_ptr<VeltoBannerViewControllerDelegate>& delegate, VeltoBannerSize andSize,
      int64_t andPosition, CGPoint andLocation, const std::shared_ptr<UIView>& andView);
  ~VeltoBannerViewControllerPrivate() override;

  void load() { _loadAndNotifyFailure(true); }
  void load(const VeltoSettings& settings);
  void removeBanner();
  // Nobody holds the public object any more: leaves the screen, and calls nobody from here on.
  void abandon();
  void setRefreshTimeSeconds(int64_t seconds) { refreshTimeSeconds_ = seconds; }
  void setEnableAutoRefresh(bool enable) { autoRefresh_ = enable; }
  void setAnimation(int64_t animation) { animation_ = animation; }

  void _loadAndNotifyFailure(bool notifyFailure);

  // What was fetched.
  void fetchBannerSuccess(const std::shared_ptr<VeltoAd>& ad) override;
  MediationBannerViewPresenter* mediationBannerViewPresenter() override { return this; }
  void presentMediationBannerView(const std::shared_ptr<UIView>& view,
                                  const std::shared_ptr<VeltoAd>& ad) override;

  // What the web view reports.
  void veltoAdLoaded(WKWebView& webView) override;
  void veltoDismissWKWebView(WKWebView& webView) override;
  void veltoWKWebViewDidFinishNavigation(WKWebView& webView) override;
  void veltoWKWebViewDidFailNavigation(const NSError& error) override;

  // What a person does.
  void _adDidPress();
  void mediationBannerDidPress() override { _adDidPress(); }
  void mediationBannerDidClose() override;

  // What the page commands (VeltoBannerViewControllerMRAID.cpp).
  std::shared_ptr<VeltoMRAIDHandler> veltoGetMRAIDHandler() override { return mraidHandler_; }
  void playVideoAt(const NSURL& url) override { AVVideoSDKVelto::playVideoAt(url); }
  CGRect veltoMRAIDGetFullscreenFrame() override;
  void veltoMRAIDRemoveCloseCustomButton() override;
  void veltoMRAIDUnload() override { removeBanner(); }
  void veltoMRAIDResize(const std::shared_ptr<VeltoMRAIDPropertyResize>& property,
                        const VeltoCloseButtonUIConfiguration& btnCloseConfiguration) override;
  void veltoMRAIDCloseResize() override;
  void veltoMRAIDExpand(const std::optional<std::string>& secondPartURL,
                        const CloseButton& btnCloseConfiguration) override;
  void veltoMRAIDCloseExpand() override;
  void _tapCloseButtonExpand();
  void _tapCloseButtonResize();

  // Placement (VeltoBannerViewControllerPlacement.cpp). Actions: 0 expand, 1 close expand, 2 resize, 3 close
  // resize.
  enum ExpandOrResize : int64_t { Expand = 0, CloseExpand = 1, Resize = 2, CloseResize = 3 };
  void _resizeAndMoveView(CGSize size, int64_t position);
  void _expandOrResizeMainWebView(int64_t action, CGSize size, CGPoint offset);
  void _expandActionInMainWebView(int64_t action) { _expandOrResizeMainWebView(action, {}, {}); }
  void _resizeActionInMainWebView(int64_t action, CGSize size, CGPoint offset) {
    _expandOrResizeMainWebView(action, size, offset);
  }

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
  const NSLayoutConstraints& viewContraints() const { return viewContraints_; }
  const NSLayoutConstraints& webViewContraints() const { return webViewContraints_; }
  bool hasRefreshTimer() const { return timerRefresh_ != nullptr; }

  // The second part of an expanded page while there is one, else the main page.
  std::shared_ptr<WKWebView> activeWebView() const {
    return getActiveWebView(webView_, secondaryMRAIDWebView_);
  }

  using UIViewControllerWKWebViewSDKVelto::webView;

 private:
  VeltoBannerViewControllerPrivate() = default;
  UIViewController& viewController() override { return *this; }
  void tellMeasurement(float volume) override { volumePlaybackNativeVideoChangeOMSD(volume); }
  VeltoBannerViewControllerPrivate* bannerController() override { return abandoned_ ? nullptr : this; }
  bool animatesAsBanner() const override { return true; }
  std::shared_ptr<WKWebView> makeWebView(std::weak_ptr<WKNavigationDelegate> delegate) override {
    return createWKWebViewInstance(std::move(delegate));
  }
  void handleMRAIDAction(const NSURL& url, WKWebView& webView) override;

  std::shared_ptr<VeltoBannerViewControllerPrivate> self();
  VeltoControllerDelegate delegate() const { return delegate_.lock(); }

  bool _addBanner(const std::shared_ptr<UIView>& mediationView, CGSize withSize);
  bool findContainer();
  void _resetBannerView();
  void _invalidateBanner();
  void _adLoaded(const std::shared_ptr<UIView>& view);
  void _setMRAIDAsReady(const std::shared_ptr<WKWebView>& webView);
  void _handleRefreshTimer();
  void _refreshAd() { _loadAndNotifyFailure(false); }
  void _initSecondMRAIDWebView();
  void removeSecondMRAIDWebView();
  void _notificationAdMobAdapterGADBannerReady(const NSNotification& notification);
  void _notificationUICurrentOrientation(const NSNotification& notification);
  void _restoreOriginalOrientation();
  // Unless it, or the page that it shows, is gone by then.
  void afterATenth(std::function<void(VeltoBannerViewControllerPrivate&)> step);

  bool autoRefresh_ = false;
  bool abandoned_ = false;
  bool firstAnimationCompleted_ = false;  // the entry animation has run, once for this controller's life
  int64_t position_ = VeltoBannerPositionTop;
  VeltoBannerSize size_ = VeltoBannerSizeSmart;
  int64_t animation_ = VeltoAnimationNone;
  std::unique_ptr<NSTimer> timerRefresh_;
  int64_t refreshTimeSeconds_ = 30;
  std::optional<VeltoSettings> settings_;               // of the last load
  std::shared_ptr<VeltoCloseButton> veltoCloseButton_;  // while a page is expanded or resized
  std::weak_ptr<UIView> viewAd_;                        // the host's view that contains the banner
  std::shared_ptr<WKWebView> webView_;
  std::shared_ptr<WKWebView> secondaryMRAIDWebView_;  // of a two-part expand
  std::shared_ptr<VeltoAdMediationCoreAdapterProtocol> adapter_;
  std::shared_ptr<VeltoAd> ad_;
  std::weak_ptr<UIViewController> vc_;  // the host's
  std::weak_ptr<VeltoBannerViewControllerDelegate> delegate_;
  NSLayoutConstraints viewContraints_;               // in the container
  NSLayoutConstraints webViewContraints_;            // in the own view
  std::shared_ptr<VeltoMRAIDHandler> mraidHandler_;  // of a rich-media ad
  std::optional<int64_t> originalOrientation_;       // to go back to
  std::string audioContext_;                         // its address marks our observation of the volume
  CGPoint location_;
  Handle adapterReadyObserver_;
  Handle orientationObserver_;
};

}  // namespace velto
