// What banners and interstitials share: asking for an ad, deciding how the answer is shown, telling the
// delegate. A mixin of the working controllers; main thread.
#pragma once

#include "velto/ads/VeltoAdResolver.h"
#include "velto/core/VeltoSettings.h"
#include "velto/timeline/LoadRecord.h"
#include "velto/ui/VeltoDelegates.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace velto {

class UIView;

// A working controller that puts another network's banner view into place.
class MediationBannerViewPresenter {
 public:
  virtual ~MediationBannerViewPresenter() = default;
  virtual void presentMediationBannerView(const std::shared_ptr<UIView>& view,
                                          const std::shared_ptr<VeltoAd>& ad) = 0;
};

// A working controller that presents another network's full-screen ad.
class MediationBannerPresenter {
 public:
  virtual ~MediationBannerPresenter() = default;
  virtual void presentMediationBanner(const std::shared_ptr<VeltoAd>& ad) = 0;
};

// How a working controller takes what was fetched.
class UIViewControllerCoreVeltoSDKProtocol {
 public:
  virtual ~UIViewControllerCoreVeltoSDKProtocol() = default;
  // Null after a refresh that failed: nothing is reported then, and nothing is left to show.
  virtual void fetchBannerSuccess(const std::shared_ptr<VeltoAd>& /*ad*/) {}
  // Null: it does not show such ads, and a fetch that brings one fails.
  virtual MediationBannerViewPresenter* mediationBannerViewPresenter() { return nullptr; }
  virtual MediationBannerPresenter* mediationBannerPresenter() { return nullptr; }
};

class UIViewControllerCoreSDKVelto : public UIViewControllerCoreVeltoSDKProtocol {
 public:
  // The host's view controller, from a delegate of the kind that fits this controller; else null.
  std::shared_ptr<UIViewController> getUserViewControllerForDelegate(const VeltoControllerDelegate& delegate);

  // Asks the ad manager. The answer is dropped when this controller is gone by then; the delegate is kept
  // until it came, and then let go of on the main thread.
  void fetchBannerDataFor(VeltoAdType type, const std::optional<VeltoSettings>& settings,
                          VeltoBannerSize size, const VeltoControllerDelegate& delegate, bool notifyFailure);
  void _processAd(const std::shared_ptr<VeltoAd>& ad, const std::optional<VeltoErrorAd>& error,
                  const VeltoControllerDelegate& delegate, bool notifyFailure);
  // The handler gets an ad only when it is rich media.
  void fetchSecondaryMRAIDContentFor(const std::string& url, VeltoAdCompletion completionHandler);

  // Each tells the delegate if it is of the kind that fits this controller.
  void notifyDidFinishLoad(const VeltoControllerDelegate& delegate);
  void notifyDidFail(const VeltoControllerDelegate& delegate,
                     const std::optional<VeltoErrorAd>& veltoErrorAd);
  void notifyDidPress(const VeltoControllerDelegate& delegate);
  void notifyDidClose(const VeltoControllerDelegate& delegate);
  void notifyDidAppear(const VeltoControllerDelegate& delegate);     // interstitials only
  void notifyDidDisappear(const VeltoControllerDelegate& delegate);  // interstitials only
  void notifyDidChangeState(const VeltoControllerDelegate& delegate);

  // Which kind of controller this is: one of the two is not null.
  virtual VeltoBannerViewControllerPrivate* bannerController() { return nullptr; }
  virtual VeltoInterstitialViewControllerPrivate* interstitialController() { return nullptr; }

 protected:
  virtual UIViewController& viewController() = 0;
  virtual std::shared_ptr<LoadRecord> beginLoad(VeltoAskedBy by) = 0;
  // An answer brought nothing to show.
  virtual void fetchFailed() {}
  // The state may be another one than it was; what has not changed is not told again.
  virtual void tellState() {}
  // Of the answer that is being dispatched: whether the host asked for it and hears of its failure. A refresh
  // fails silently.
  bool notifiesFailure() const { return notifiesFailure_; }
  // The next fetch is that of a person who tries something at an inspecting tool. With a reason nobody is asked, and that
  // is the answer.
  struct Trial {
    std::optional<VeltoAdEndReason> failure;
  };
  std::optional<Trial> trial_;
  // Whether an answer is on its way.
  bool isFetching() const { return fetching_ > 0; }

 private:
  class Pending;
  template <class BannerCall, class InterstitialCall>
  void notify(const VeltoControllerDelegate& delegate, BannerCall bannerCall,
              InterstitialCall interstitialCall);

  // An ad came that cannot be shown.
  void refuse(const VeltoErrorAd& why, const VeltoControllerDelegate& delegate);

  bool notifiesFailure_ = true;
  int fetching_ = 0;
};

}  // namespace velto
