// What a rich-media page makes its interstitial do: expand, resize, close. The page is told a moment later,
// when the views have their new frames.
#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"
#include "velto/ui/VeltoInterstitialViewControllerPrivate.h"

namespace velto {

void VeltoInterstitialViewControllerPrivate::afterATenthOnThisPage(
    std::function<void(VeltoInterstitialViewControllerPrivate&)> step) {
  afterATenth([page = std::weak_ptr(webView_), step = std::move(step)](auto& own) {
    if (own.webView_ && own.webView_ == page.lock() && own.mraidHandler_) step(own);
  });
}

// A page that was replaced or removed has nothing to say any more.
void VeltoInterstitialViewControllerPrivate::handleMRAIDAction(const NSURL& url, WKWebView& webView) {
  if (&webView == webView_.get() || &webView == secondaryMRAIDWebView_.get()) mraidHandleAction(url, webView);
}

CGRect VeltoInterstitialViewControllerPrivate::veltoMRAIDGetFullscreenFrame() {
  return getFullScreenFrameFor(view(), self());
}

void VeltoInterstitialViewControllerPrivate::_expandOrResizeMainWebView(int64_t action, CGSize size,
                                                                        CGPoint) {
  if (!webView_) return;
  view()->removeConstraints(webViewContraints_);
  if (action == Expand)
    size = {};
  else if (action == CloseExpand || action == CloseResize)
    size = ad_ ? ad_->size : CGSize{};
  webViewContraints_ = setupWKWebViewConstraintsFor(webView_, size);
}

void VeltoInterstitialViewControllerPrivate::veltoMRAIDExpand(const std::optional<std::string>& secondPartURL,
                                                              const CloseButton& btnCloseConfiguration) {
  const auto closeAction = [own = this] {
    own->_tapCloseButtonExpand();
  };  // the button drops it with the controller
  if (secondPartURL) {
    prepareWebContent(webView_);  // the second view may live beside the first
    return fetchSecondaryMRAIDContentFor(
        *secondPartURL,
        [weak = std::weak_ptr(self()), page = std::weak_ptr(webView_), btnCloseConfiguration, closeAction](
            const std::shared_ptr<VeltoAd>& ad, const std::optional<VeltoErrorAd>&) {
          const auto alive = weak.lock();
          const auto view = page.lock();
          // It may show another ad by now, or have got the second part from an earlier command.
          if (!alive || !view || alive->webView_ != view || !alive->mraidHandler_ ||
              alive->secondaryMRAIDWebView_)
            return;
          if (!ad) return alive->dropPreparedWebContent();
          alive->_initSecondMRAIDWebView();
          alive->loadBannerDataIn(alive->secondaryMRAIDWebView_, ad);
          const auto button = alive->mraidExpandFor(alive->secondaryMRAIDWebView_, alive->view(), alive,
                                                    btnCloseConfiguration, closeAction, alive->mraidHandler_);
          if (button)
            alive->veltoCloseButton_ = button;
          else if (alive->veltoCloseButton_)
            alive->view()->addSubview(
                alive->veltoCloseButton_);  // to the front: a person must be able to leave
        });
  }
  _expandOrResizeMainWebView(Expand, {}, {});
  const auto button =
      mraidExpandFor(webView_, view(), self(), btnCloseConfiguration, closeAction, mraidHandler_);
  if (!button) return;  // the page has a close button of its own; ours stays beside it
  veltoCloseButton_ = button;
  addFriendlyObstructionOMSDKFor(veltoCloseButton_);
}

void VeltoInterstitialViewControllerPrivate::_initSecondMRAIDWebView() {
  secondaryMRAIDWebView_ = addWKWebViewInViewWithNavigationDelegate(self());
  setupWKWebViewConstraintsFor(secondaryMRAIDWebView_, CGSize{});
}

void VeltoInterstitialViewControllerPrivate::_tapCloseButtonExpand() {
  mraidCloseExpandFor(webView_, view()->frame(), mraidHandler_);
  _restoreOriginalOrientation();
  dismissInterstitialViewController(true);
}

void VeltoInterstitialViewControllerPrivate::veltoMRAIDResize(
    const std::shared_ptr<VeltoMRAIDPropertyResize>& property,
    const VeltoCloseButtonUIConfiguration& btnCloseConfiguration) {
  const CGRect frame = property ? property->frame : CGRect{};
  const bool offsetCounts = property && property->allowOffscreen.value_or(0) != 0;
  _expandOrResizeMainWebView(Resize, frame.size, offsetCounts ? frame.origin : CGPoint{});
  afterATenthOnThisPage([btnCloseConfiguration](auto& own) {
    own.veltoMRAIDRemoveCloseCustomButton();
    own.veltoCloseButton_ = own.addCloseButtonInView(
        own.webView_, btnCloseConfiguration, [&own] { own._tapCloseButtonResize(); }, std::nullopt);
    own.addFriendlyObstructionOMSDKFor(own.veltoCloseButton_);
    own.mraidResizeFor(own.webView_, own.view()->frame(), own.mraidHandler_);
  });
}

void VeltoInterstitialViewControllerPrivate::veltoMRAIDCloseResize() {
  _expandOrResizeMainWebView(CloseResize, {}, {});
  afterATenth(
      [](auto& own) { own.mraidCloseResizeFor(own.webView_, own.view()->frame(), own.mraidHandler_); });
}

void VeltoInterstitialViewControllerPrivate::_tapCloseButtonResize() {
  veltoMRAIDRemoveCloseCustomButton();
  veltoMRAIDCloseResize();
}

void VeltoInterstitialViewControllerPrivate::veltoMRAIDRemoveCloseCustomButton() {
  if (!veltoCloseButton_) return;
  veltoCloseButton_->removeFromSuperview();
  removeFriendlyObstructionOMSDKFor(veltoCloseButton_);
  veltoCloseButton_.reset();
  // Whatever the page makes of it, a person must be able to leave: unless another button has come, the
  // screen's own comes back.
  Platform::current().mainQueue().post([weak = std::weak_ptr(self())] {
    const auto alive = weak.lock();
    if (alive && alive->isReady_ && !alive->veltoCloseButton_)
      alive->_addInterstitialCloseButtonWithTimer(alive->timerValue_);
  });
}

}  // namespace velto
