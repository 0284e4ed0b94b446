// The working controller of an interstitial, and the screen itself: fetches the ad, is presented over the
// host's view controller, and counts the close button down. What the ad itself does stands in VeltoShownAd.
// Main thread.
#pragma once

#include "velto/core/VeltoSettings.h"
#include "velto/platform/NSTimer.h"
#include "velto/platform/ui/UIViewControllerTransitioning.h"
#include "velto/ui/VeltoAdViewController.h"
#include "velto/ui/VeltoUIAnimation.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace velto {

class VeltoInterstitialViewControllerPrivate final : public VeltoAdViewController,
                                                     public MediationBannerPresenter,
                                                     public UIViewControllerTransitioningDelegate {
 public:
  static std::shared_ptr<VeltoInterstitialViewControllerPrivate> initWithDelegate(
      const std::shared_ptr<VeltoInterstitialViewControllerDelegate>& delegate);
  ~VeltoInterstitialViewControllerPrivate() override;

  void setAutoShowWhenReady(bool autoShow) { autoShow_ = autoShow; }
  void load() { fetch(std::nullopt); }
  void load(const VeltoSettings& settings) { fetch(settings); }
  bool isReady() const { return isReady_; }
  bool isLoading() const { return isFetching() || waitingAd_; }
  void show() { showOver({}); }
  std::optional<VeltoErrorAd> show(const std::shared_ptr<UIViewController>& over);
  VeltoInterstitialState state() const;
  // Nobody holds the public object any more: leaves the screen, and calls nobody from here on.
  void abandon();

  // What was fetched.
  void fetchBannerSuccess(const std::shared_ptr<VeltoAd>& ad) override;
  MediationBannerPresenter* mediationBannerPresenter() override { return this; }
  void presentMediationBanner(const std::shared_ptr<VeltoAd>& ad) override;

  // The page is centred; the own view is never moved.
  void _expandOrResizeMainWebView(int64_t action, CGSize size, CGPoint offset) override;
  std::shared_ptr<WKWebView> _initSecondMRAIDWebView() override;
  Surroundings surroundings() override { return {view(), self()}; }

  // What the ad's events mean for an interstitial.
  void pageInjected() override { _adLoaded(); }
  void pageFailed(const NSError& error) override;
  void adapterClosed() override { leave(Why::ClosedByAdapter); }
  void leave(Why why) override { dismissInterstitialViewController(true, why); }
  void replaceHeavyAd() override { leave(Why::PageTooHeavy); }
  bool endsWithItsExpansion() const override { return true; }
  void closeButtonRemoved() override;

  // The ways out.
  void viewWillDisappear(bool animated) override;
  void presenterDidGo() override { goneSoon(); }
  void _tapCloseButton() { leave(Why::ClosedByPerson); }
  bool accessibilityPerformEscape() override;
  void dismissInterstitialViewController(bool animated, Why why = Why::Removed);

  std::shared_ptr<UIViewControllerAnimatedTransitioning> animationControllerForPresentedController(
      UIViewController& presented, UIViewController& presentingController,
      UIViewController& sourceController) override;
  std::shared_ptr<UIViewControllerAnimatedTransitioning> animationControllerForDismissedController(
      UIViewController& dismissed) override;

  bool hasCloseTimer() const { return timerClose_ != nullptr; }  // for tests and debuggers

 private:
  VeltoInterstitialViewControllerPrivate() : VeltoAdViewController("interstitial") {}
  VeltoInterstitialViewControllerPrivate* interstitialController() override {
    return abandoned_ ? nullptr : this;
  }
  bool animatesAsBanner() const override { return false; }
  VeltoControllerDelegate delegate() const override { return delegate_.lock(); }
  std::shared_ptr<VeltoInterstitialViewControllerPrivate> self() {
    return std::static_pointer_cast<VeltoInterstitialViewControllerPrivate>(shared_from_this());
  }
  // From the call to show until it has gone again.
  bool isOnScreen() const { return showing_ || dismissing_ || presentingViewController(); }

  void takeOff(Why why) override;
  int64_t stateNow() const override { return state(); }
  const char* kindName() const override { return "interstitial"; }
  const char* stateName() const override;
  void loadAgain() override { fetch(settings_); }
  void fetch(const std::optional<VeltoSettings>& settings);
  void showOver(const std::weak_ptr<UIViewController>& over, VeltoAskedBy by = VeltoAskedBy::Application);
  bool takesNow(const std::shared_ptr<VeltoAd>& ad);
  void takeWaitingAd();
  void goneSoon();
  void becomeReady(const std::shared_ptr<VeltoAd>& ad, bool withWebView);
  void _addBlurEffect();
  void _addBannerInView(bool withWebView, CGSize size);
  void _addInterstitialCloseButtonWithTimer(std::optional<double> timer);
  void _adLoaded();
  bool _presentBanner();
  void presented();
  void failed(Why why);
  void startCounterSoon();
  void leaveUnlessAdapterPresents();
  void _updateInterfaceOrientation();
  void _startCounterTimer();
  void _updateCounterTimer();
  std::shared_ptr<VeltoShownAd> _invalidateBanner(Why why);
  void _removeAllWebViews(const std::shared_ptr<VeltoShownAd>& ended);
  void _notificationAdMobAdapterGADInterstitialReady(const NSNotification& notification);
  void _notificationAdMobAdapterGADInterstitialError(const NSNotification& notification);

  std::optional<VeltoSettings> settings_;  // of the last load
  bool isReady_ = false;
  bool autoShow_ = false;
  bool showing_ = false;     // show was called, and nothing is presented yet
  bool dismissing_ = false;  // on its way out
  std::unique_ptr<NSTimer> timerClose_;
  std::optional<float> timerValue_;       // seconds until the close button is active
  std::weak_ptr<UIViewController> over_;  // what presents this time; null is the host's usual one
  std::shared_ptr<VeltoAd> waitingAd_;    // came while another was on the screen
  std::shared_ptr<LoadRecord> waitingLoad_;
  std::weak_ptr<VeltoInterstitialViewControllerDelegate> delegate_;
  std::shared_ptr<VeltoUIAnimatedTransitioning> animator_;
  Handle adapterReadyObserver_, adapterErrorObserver_;
};

}  // namespace velto
