// The working controller of a banner: fetches the ad, puts it (a page, or another network's view) into the
// host's view as a child of the host's view controller, and refreshes it. What the ad itself does stands in
// VeltoShownAd. Main thread.
#pragma once

#include "velto/core/VeltoSettings.h"
#include "velto/platform/NSTimer.h"
#include "velto/ui/VeltoAdViewController.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace velto {

class VeltoBannerViewControllerPrivate final : public VeltoAdViewController,
                                               public MediationBannerViewPresenter {
 public:
  static std::shared_ptr<VeltoBannerViewControllerPrivate> initWithDelegate(
      const std::shared_ptr<VeltoBannerViewControllerDelegate>& delegate, VeltoBannerSize andSize,
      int64_t andPosition, CGPoint andLocation, const std::shared_ptr<UIView>& andView);
  ~VeltoBannerViewControllerPrivate() override;

  void load();
  void load(const VeltoSettings& settings);
  void removeBanner() { removeBecause(Why::Removed); }
  // Nobody holds the public object any more: leaves the screen, and calls nobody from here on.
  void abandon();
  void setSize(VeltoBannerSize size) { size_ = size; }
  void setRefreshPaused(bool paused);
  VeltoBannerState state() const;
  CGSize adSize() const;
  void setRefreshTimeSeconds(int64_t seconds) { refreshTimeSeconds_ = seconds; }
  void setEnableAutoRefresh(bool enable) { autoRefresh_ = enable; }

  void _loadAndNotifyFailure(bool notifyFailure);

  // What was fetched.
  void fetchBannerSuccess(const std::shared_ptr<VeltoAd>& ad) override;
  MediationBannerViewPresenter* mediationBannerViewPresenter() override { return this; }
  void presentMediationBannerView(const std::shared_ptr<UIView>& view,
                                  const std::shared_ptr<VeltoAd>& ad) override;

  // Placement (VeltoBannerViewControllerPlacement.cpp).
  void _resizeAndMoveView(CGSize size, int64_t position);
  void _expandOrResizeMainWebView(int64_t action, CGSize size, CGPoint offset) override;
  std::shared_ptr<WKWebView> _initSecondMRAIDWebView() override;
  Surroundings surroundings() override { return {viewAd_.lock(), vc_.lock()}; }

  // What the ad's events mean for a banner.
  void pageLoaded() override { _adLoaded(webView()); }
  void pageFailed(const NSError& error) override;
  void adapterClosed() override;
  void leave(Why why) override;
  void replaceHeavyAd() override;
  bool endsWithItsExpansion() const override { return false; }
  // Where heavy ads have to go, each must be known by its own process.
  bool sharesProcess() const override { return heavyAdPolicy() == VeltoHeavyAdPolicyReport; }

  // For tests and debuggers.
  const NSLayoutConstraints& viewContraints() const { return viewContraints_; }
  bool hasRefreshTimer() const { return timerRefresh_ != nullptr; }

 private:
  VeltoBannerViewControllerPrivate() : VeltoAdViewController("banner") {}
  VeltoBannerViewControllerPrivate* bannerController() override { return abandoned_ ? nullptr : this; }
  bool animatesAsBanner() const override { return true; }
  VeltoControllerDelegate delegate() const override { return delegate_.lock(); }
  std::shared_ptr<VeltoBannerViewControllerPrivate> self();

  bool startShowing(const std::shared_ptr<VeltoAd>& ad, const std::shared_ptr<UIView>& mediationView);
  void removeBecause(Why why, const std::shared_ptr<VeltoShownAd>& only = nullptr);
  // Nothing: it stands in its place. Else why not.
  std::optional<Why> _addBanner(const std::shared_ptr<UIView>& mediationView, CGSize withSize);
  std::optional<Why> findContainer();
  void takeOff(Why why) override;
  std::shared_ptr<VeltoShownAd> _resetBannerView(Why why);
  void _invalidateBanner(Why why);
  void _adLoaded(const std::shared_ptr<UIView>& view);
  void _handleRefreshTimer();
  double _refreshInterval() const;
  void _leaveEmpty(Why why);
  void _refreshAd();
  int64_t stateNow() const override { return state(); }
  const char* kindName() const override { return "banner"; }
  const char* stateName() const override;
  void loadAgain() override { load(); }
  CGSize adSizeNow() const override { return adSize(); }
  void _notificationAdMobAdapterGADBannerReady(const NSNotification& notification);

  bool autoRefresh_ = false;
  bool refreshPaused_ = false;
  bool refreshDue_ = false;  // came due while paused
  bool loaded_ = false;      // what is shown, or what it took the place of, has told that it has loaded
  VeltoBannerState form_ = VeltoBannerStateShown;
  bool firstAnimationCompleted_ = false;  // the entry animation has run, once for this controller's life
  int64_t position_ = VeltoBannerPositionTop;
  VeltoBannerSize size_ = VeltoBannerSizeSmart;
  std::unique_ptr<NSTimer> timerRefresh_;
  int64_t refreshTimeSeconds_ = 30;
  int processesLost_ = 0;                  // by the ads of this place, one after the other
  std::optional<VeltoSettings> settings_;  // of the last load
  bool loadedSinceRemoval_ = false;        // since the last call that asked for one
  std::weak_ptr<UIView> viewAd_;           // the host's view that contains the banner
  bool viewAdIsGiven_ = false;             // else it is the whole of its controller's
  std::weak_ptr<VeltoBannerViewControllerDelegate> delegate_;
  NSLayoutConstraints viewContraints_;  // in the container
  CGPoint location_;
  Handle adapterReadyObserver_;
};

}  // namespace velto
