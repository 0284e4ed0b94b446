// One ad on the screen: its page or another network's adapter, what the page says and asks for, its close button,
// and the orientation that it forces. Its life is the life of that one ad: when its controller lets go of it, nothing
// of the old page, adapter or timers reaches anybody any more. What differs between banners and interstitials (where
// it stands, what ends it) is asked of the controller. Rich media is in VeltoShownAdMRAID.cpp. Main thread.
#pragma once

#include "velto/ads/VeltoAd.h"
#include "velto/ads/VeltoAdMediationCoreAdapter.h"
#include "velto/mraid/UIViewControllerMRAIDSDKVelto.h"
#include "velto/timeline/LoadRecord.h"
#include "velto/ui/AdPages.h"
#include "velto/ui/ForcedOrientation.h"
#include "velto/ui/SecondPart.h"
#include "velto/ui/UIViewControllerWKWebViewSDKVelto.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace velto {

class VeltoAdViewController;

class VeltoShownAd final : public std::enable_shared_from_this<VeltoShownAd>,
                           public UIViewControllerWKWebViewSDKVelto,
                           public UIViewControllerMRAIDSDKVelto,
                           public VeltoAdMediationAdapterDelegate,
                           public AdPages,
                           public LoadNotes {
 public:
  using Why = VeltoAdEndReason;
  using AdPages::WebView, AdPages::webView;
  using UIViewControllerWKWebViewSDKVelto::webView;
  // The ad may be null: the place stays empty. The load is the one that this thread works for (LoadScope).
  static std::shared_ptr<VeltoShownAd> shownBy(VeltoAdViewController& by, std::shared_ptr<VeltoAd> ad);
  ~VeltoShownAd() override;

  // From here on it is silent, and what it forced ends. Its views stay where they are until they are removed.
  void end(Why why);
  void endLoad(Why why);  // which its weight comes before
  void removeViews();

  // The page's view, not yet placed; the rich media of an ad that has any; the adapter of another network.
  const WebView& makeWebView();
  void takeHandler();
  void takeAdapter();
  void load();
  // An ad that its adapter shows is shown for good: it is not offered again.
  void tellShown() const;

  const std::shared_ptr<VeltoAd>& ad() const { return ad_; }
  const std::shared_ptr<VeltoAdMediationCoreAdapterProtocol>& adapter() const { return adapter_; }
  void dropAdapter() { adapter_.reset(); }
  const std::shared_ptr<VeltoCloseButton>& veltoCloseButton() const { return veltoCloseButton_; }
  void setVeltoCloseButton(std::shared_ptr<VeltoCloseButton> button);

  // Unless it has ended by then.
  void after(std::chrono::milliseconds delay, std::function<void()> step);

  // What its views report.
  void veltoBannerInjected(WKWebView& webView) override;
  void veltoAdLoaded(WKWebView& webView) override;
  void veltoDismissWKWebView(WKWebView& webView) override;
  void veltoWKWebViewDidFinishNavigation(WKWebView& webView) override;
  void veltoWKWebViewDidFailNavigation(const NSError& error) override;
  void mediationBannerDidPress() override;
  void mediationBannerDidClose() override;

  // What the page commands.
  std::shared_ptr<VeltoMRAIDHandler> veltoGetMRAIDHandler() override { return mraidHandler_; }
  CGRect veltoMRAIDGetFullscreenFrame() override;
  void veltoMRAIDRemoveCloseCustomButton() override;
  void veltoMRAIDUnload() override;
  void veltoMRAIDResize(const std::shared_ptr<VeltoMRAIDPropertyResize>& property,
                        const VeltoCloseButtonUIConfiguration& btnCloseConfiguration) override;
  void veltoMRAIDCloseResize() override;
  void veltoMRAIDExpand(const std::optional<std::string>& partURL, const CloseButton& button) override;
  void veltoMRAIDCloseExpand() override;
  void veltoMRAIDCloseInterstitial() override;
  void playVideoAt(const NSURL& url) override;
  void _tapCloseButtonExpand() { closeExpansion(Why::ClosedByPerson); }
  void _tapCloseButtonResize();

  void _notificationUICurrentOrientation(int64_t orientation) { orientation_.deviceTurned(orientation); }
  void _restoreOriginalOrientation() { orientation_.restore(); }

 private:
  VeltoShownAd(VeltoAdViewController& controller, std::shared_ptr<VeltoAd> ad)
      : controller_(&controller), ad_(std::move(ad)) {}
  UIViewController& viewController() override;
  PreparedPage& preparedPage() override;
  std::string site() const override;
  std::weak_ptr<UIViewControllerWKWebViewSDKVelto> self() override { return weak_from_this(); }
  bool isShown() const override { return controller_ != nullptr; }
  void handleMRAIDAction(const NSURL& url, WKWebView& webView) override;
  void forceOrientation(int64_t orientation) override;
  void linkTapped(VeltoTap outcome) override { note(VeltoTimelineKind::Tapped, outcome); }
  void noteState();
  std::shared_ptr<AdWatch> watch(const WebView& page);
  void tooHeavy(const VeltoAdExcess& excess);
  void closeExpansion(Why why);
  void _setMRAIDAsReady(const WebView& webView);
  void expandIntoSecondPart(const std::shared_ptr<VeltoAd>& part, const CloseButton& btnCloseConfiguration);
  void removeSecondMRAIDWebView();
  std::function<void()> action(void (VeltoShownAd::*tapped)());  // nothing once the ad has ended
  VeltoAdViewController* controller_;                            // null once it has ended
  std::shared_ptr<VeltoAd> ad_;
  SecondPart secondPart_;
  int expansions_ = 0;       // so far
  bool isExpanded_ = false;  // whatever state its page has got itself into
  std::shared_ptr<VeltoAdMediationCoreAdapterProtocol> adapter_;
  std::shared_ptr<VeltoMRAIDHandler> mraidHandler_;  // of a rich-media ad
  std::shared_ptr<VeltoCloseButton> veltoCloseButton_;
  ForcedOrientation orientation_;
};

}  // namespace velto
