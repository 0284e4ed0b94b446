// Fetch, dispatch and delegate routing.
#include "velto/ui/UIViewControllerCoreSDKVelto.h"

#include "velto/ads/VeltoAdManager.h"
#include "velto/ads/VeltoAdMediationCoreAdapter.h"
#include "velto/platform/AnswerOnMain.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"
#include "velto/platform/ViewSystem.h"
#include "velto/platform/ui/UIViewController.h"

#include <utility>

namespace velto {
namespace {

using BannerDelegate = std::shared_ptr<VeltoBannerViewControllerDelegate>;
using InterstitialDelegate = std::shared_ptr<VeltoInterstitialViewControllerDelegate>;

template <class T>
T delegateAs(const VeltoControllerDelegate& delegate) {
  const T* held = std::get_if<T>(&delegate);
  return held ? *held : nullptr;
}

constexpr auto nothing = [](auto&, auto&) {};

VeltoAdKind kindOf(const VeltoAd& ad) {
  if (ad.sourceType == VeltoAdSourceMediation) return VeltoAdKind::Adapter;
  return ad.sourceType == VeltoAdSourceMRAID ? VeltoAdKind::RichMedia : VeltoAdKind::Markup;
}

// Why nobody here can show what an adapter brought.
VeltoAdEndReason whyNotShown(const VeltoAd& ad) {
  if (!ad.adapter || !ad.adapter->rootViewControllerUser()) return VeltoAdEndReason::AdapterTakesNoController;
  return ad.adapter->adType() == VeltoAdTypeBanner && !ad.adapter->getBannerView()
             ? VeltoAdEndReason::AdapterWithoutView
             : VeltoAdEndReason::AdapterOfOtherKind;
}

}  // namespace

// A question that is on its way. Its holders are on other threads too, and may drop it without an answer.
class UIViewControllerCoreSDKVelto::Pending {
 public:
  Pending(std::weak_ptr<UIViewController> asking, UIViewControllerCoreSDKVelto& mixin,
          VeltoControllerDelegate delegate, std::shared_ptr<LoadRecord> load)
      : controller_(std::move(asking)),
        mixin_(&mixin),
        delegate_(std::move(delegate)),
        load_(std::move(load)) {
    ++mixin_->fetching_;
  }
  Pending(Pending&& other) noexcept
      : controller_(std::move(other.controller_)),
        mixin_(std::exchange(other.mixin_, nullptr)),
        delegate_(std::move(other.delegate_)),
        load_(std::move(other.load_)),
        isOpen_(other.isOpen_) {}
  ~Pending() {
    const auto alive = controller_.lock();
    if (!alive || !mixin_ || !isOpen_) return;
    load_->end(Platform::currentOrNull() ? VeltoAdEndReason::AdapterNeverAnswered
                                         : VeltoAdEndReason::PlatformGone);
    --mixin_->fetching_;
    mixin_->fetchFailed();
    mixin_->tellState();
  }

  // An empty list of networks answers twice.
  void answer(const std::shared_ptr<VeltoAd>& ad, const std::optional<VeltoErrorAd>& error,
              bool notifyFailure) {
    const auto alive = controller_.lock();
    if (!alive) return;
    if (std::exchange(isOpen_, false)) --mixin_->fetching_;
    // From here on the load is the shown ad's.
    const LoadScope scope(std::exchange(load_, nullptr));
    if (const auto& load = LoadScope::current(); load && error) load->end(error->reason);
    if (ad) LoadScope::add(VeltoTimelineKind::Resolved, kindOf(*ad));
    mixin_->_processAd(ad, error, delegate_, notifyFailure);
    mixin_->tellState();
  }

 private:
  std::weak_ptr<UIViewController> controller_;
  UIViewControllerCoreSDKVelto* mixin_;
  VeltoControllerDelegate delegate_;
  std::shared_ptr<LoadRecord> load_;
  bool isOpen_ = true;
};

std::shared_ptr<UIViewController> UIViewControllerCoreSDKVelto::getUserViewControllerForDelegate(
    const VeltoControllerDelegate& delegate) {
  std::shared_ptr<UIViewController> answer;
  const auto ask = [&](auto& asked, auto&) { answer = asked.presentViewController(); };
  notify(delegate, ask, ask);
  return answer;
}

void UIViewControllerCoreSDKVelto::fetchBannerDataFor(VeltoAdType type,
                                                      const std::optional<VeltoSettings>& settings,
                                                      VeltoBannerSize size,
                                                      const VeltoControllerDelegate& delegate,
                                                      bool notifyFailure) {
  const auto trial = std::exchange(trial_, std::nullopt);
  const auto load = beginLoad(trial           ? VeltoAskedBy::Inspector
                              : notifyFailure ? VeltoAskedBy::Application
                                              : VeltoAskedBy::Refresh);
  // The answer's holders may drop it on a thread of their own, or never call it.
  const auto pending = endingOnMain(Pending(viewController().weak_from_this(), *this, delegate, load));
  const LoadScope scope(load);
  const auto answer = [pending, notifyFailure](const std::shared_ptr<VeltoAd>& ad,
                                               const std::optional<VeltoErrorAd>& error) {
    pending->answer(ad, error, notifyFailure);
  };
  if (trial && trial->failure)
    Platform::current().mainQueue().post(
        [answer, why = *trial->failure] { answer(nullptr, VeltoErrorAd::because(why)); });
  else
    VeltoAdManager::fetchFor(type, size, settings, answer);
  tellState();
}

void UIViewControllerCoreSDKVelto::_processAd(const std::shared_ptr<VeltoAd>& ad,
                                              const std::optional<VeltoErrorAd>& error,
                                              const VeltoControllerDelegate& delegate, bool notifyFailure) {
  notifiesFailure_ = notifyFailure;
  if (error) fetchFailed();
  if (error && notifyFailure) return notifyDidFail(delegate, error);

  const auto sourceType = ad ? ad->sourceType : VeltoAdSourceMarkup;
  if (sourceType == VeltoAdSourceMarkup || sourceType == VeltoAdSourceMRAID) {
    if (ad)
      if (auto failure = Platform::current().views().webContentFailure())
        return refuse(VeltoErrorAd::because(VeltoAdEndReason::EngineUnavailable, std::move(failure)),
                      delegate);
    // A refresh that failed comes here without an ad: the one shown so far has had its time.
    return fetchBannerSuccess(ad);
  }
  if (ad->adapter && ad->adapter->rootViewControllerUser()) {
    if (ad->adapter->adType() == VeltoAdTypeBanner) {
      const auto view = ad->adapter->getBannerView();
      auto* presenter = mediationBannerViewPresenter();
      if (view && presenter) return presenter->presentMediationBannerView(view, ad);
    } else if (ad->adapter->adType() == VeltoAdTypeInterstitial) {
      if (auto* presenter = mediationBannerPresenter()) return presenter->presentMediationBanner(ad);
    }
  }
  refuse(VeltoErrorAd::because(whyNotShown(*ad)), delegate);
}

void UIViewControllerCoreSDKVelto::refuse(const VeltoErrorAd& why, const VeltoControllerDelegate& delegate) {
  fetchFailed();
  if (const auto& load = LoadScope::current()) load->end(why.reason);
  if (notifiesFailure_) notifyDidFail(delegate, why);
}

void UIViewControllerCoreSDKVelto::fetchSecondaryMRAIDContentFor(const std::string& url,
                                                                 VeltoAdCompletion completionHandler) {
  VeltoAdManager::fetchForSecondaryMRAIDContent(
      url, [handler = std::move(completionHandler)](const std::shared_ptr<VeltoAd>& ad,
                                                    const std::optional<VeltoErrorAd>& error) {
        if (error) return handler(nullptr, error);
        if (ad && ad->sourceType == VeltoAdSourceMRAID) return handler(ad, std::nullopt);
        handler(nullptr, VeltoErrorAd::veltoErrorAdWithCode(VeltoErrorDeveloper));
      });
}

template <class BannerCall, class InterstitialCall>
void UIViewControllerCoreSDKVelto::notify(const VeltoControllerDelegate& delegate, BannerCall bannerCall,
                                          InterstitialCall interstitialCall) {
  if (auto* banner = bannerController()) {
    if (const auto held = delegateAs<BannerDelegate>(delegate)) bannerCall(*held, *banner);
  } else if (auto* interstitial = interstitialController()) {
    if (const auto held = delegateAs<InterstitialDelegate>(delegate)) interstitialCall(*held, *interstitial);
  }
}

void UIViewControllerCoreSDKVelto::notifyDidChangeState(const VeltoControllerDelegate& delegate) {
  notify(
      delegate, [](auto& host, auto& own) { host.veltoBannerViewControllerDidChangeState(own); },
      [](auto& host, auto& own) { host.veltoInterstitialViewControllerDidChangeState(own); });
}

void UIViewControllerCoreSDKVelto::notifyDidFinishLoad(const VeltoControllerDelegate& delegate) {
  tellState();
  notify(
      delegate, [](auto& host, auto& own) { host.veltoBannerViewControllerDidFinishLoad(own); },
      [](auto& host, auto& own) { host.veltoInterstitialViewControllerDidFinishLoad(own); });
}

void UIViewControllerCoreSDKVelto::notifyDidFail(const VeltoControllerDelegate& delegate,
                                                 const std::optional<VeltoErrorAd>& veltoErrorAd) {
  const auto error = veltoErrorAd.value_or(VeltoErrorAd::veltoErrorAdWithCode(VeltoErrorServer));
  tellState();
  notify(
      delegate, [&](auto& host, auto& own) { host.veltoBannerViewControllerDidFail(own, error); },
      [&](auto& host, auto& own) { host.veltoInterstitialViewControllerDidFail(own, error); });
}

void UIViewControllerCoreSDKVelto::notifyDidPress(const VeltoControllerDelegate& delegate) {
  notify(
      delegate, [](auto& host, auto& own) { host.veltoBannerViewControllerDidPress(own); },
      [](auto& host, auto& own) { host.veltoInterstitialViewControllerDidPress(own); });
}

void UIViewControllerCoreSDKVelto::notifyDidClose(const VeltoControllerDelegate& delegate) {
  notify(
      delegate, [](auto& host, auto& own) { host.veltoBannerViewControllerDidClose(own); },
      [](auto& host, auto& own) { host.veltoInterstitialViewControllerDidClose(own); });
}

void UIViewControllerCoreSDKVelto::notifyDidAppear(const VeltoControllerDelegate& delegate) {
  notify(delegate, nothing,
         [](auto& host, auto& own) { host.veltoInterstitialViewControllerDidAppear(own); });
}

void UIViewControllerCoreSDKVelto::notifyDidDisappear(const VeltoControllerDelegate& delegate) {
  notify(delegate, nothing, [](auto& host, auto& own) { host.onVeltoInterstitialDismissed(own); });
}

}  // namespace velto
