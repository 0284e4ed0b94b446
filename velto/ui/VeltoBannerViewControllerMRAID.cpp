// What a rich-media page makes its banner do: expand, resize, close. The page is told a moment later, when
// the views have their new frames.
#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"
#include "velto/ui/VeltoBannerViewControllerPrivate.h"

namespace velto {

using namespace std::chrono_literals;

void VeltoBannerViewControllerPrivate::afterATenth(
    std::function<void(VeltoBannerViewControllerPrivate&)> step) {
  Platform::current().mainQueue().postAfter(
      100ms, [weak = std::weak_ptr(self()), page = std::weak_ptr(webView_), step = std::move(step)] {
        const auto alive = weak.lock();
        const auto view = page.lock();
        if (alive && view && alive->webView_ == view) step(*alive);
      });
}

// A page that was replaced or removed has nothing to say any more.
void VeltoBannerViewControllerPrivate::handleMRAIDAction(const NSURL& url, WKWebView& webView) {
  if (&webView == webView_.get() || &webView == secondaryMRAIDWebView_.get()) mraidHandleAction(url, webView);
}

CGRect VeltoBannerViewControllerPrivate::veltoMRAIDGetFullscreenFrame() {
  return getFullScreenFrameFor(viewAd_.lock(), vc_.lock());
}

void VeltoBannerViewControllerPrivate::veltoMRAIDExpand(const std::optional<std::string>& secondPartURL,
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
          // The ad may be another one by now, or have got its second part from an earlier command.
          if (!alive || !view || alive->webView_ != view || alive->secondaryMRAIDWebView_) return;
          if (!ad) return alive->dropPreparedWebContent();
          alive->_initSecondMRAIDWebView();
          alive->loadBannerDataIn(alive->secondaryMRAIDWebView_, ad);
          alive->veltoCloseButton_ =
              alive->mraidExpandFor(alive->secondaryMRAIDWebView_, alive->viewAd_.lock(), alive->vc_.lock(),
                                    btnCloseConfiguration, closeAction, alive->mraidHandler_);
        });
  }
  _expandActionInMainWebView(Expand);
  veltoCloseButton_ =
      mraidExpandFor(webView_, viewAd_.lock(), vc_.lock(), btnCloseConfiguration, closeAction, mraidHandler_);
  addFriendlyObstructionOMSDKFor(veltoCloseButton_);
}

void VeltoBannerViewControllerPrivate::_initSecondMRAIDWebView() {
  if (const auto container = viewAd_.lock()) container->removeConstraints(viewContraints_);
  secondaryMRAIDWebView_ = addWKWebViewInViewWithNavigationDelegate(self());
  _resizeAndMoveView({}, VeltoBannerPositionFullScreen);
  setupWKWebViewConstraintsFor(secondaryMRAIDWebView_, CGSize{});
}

void VeltoBannerViewControllerPrivate::removeSecondMRAIDWebView() {
  if (!secondaryMRAIDWebView_) return;
  secondaryMRAIDWebView_->removeFromSuperview();
  secondaryMRAIDWebView_.reset();
}

void VeltoBannerViewControllerPrivate::veltoMRAIDCloseExpand() {
  removeSecondMRAIDWebView();
  _expandActionInMainWebView(CloseExpand);
  view()->layoutIfNeeded();  // the page is told of the frame that it goes back to
  mraidCloseExpandFor(webView_, view()->frame(), mraidHandler_);
  _restoreOriginalOrientation();
}

void VeltoBannerViewControllerPrivate::_tapCloseButtonExpand() {
  _expandActionInMainWebView(CloseExpand);
  afterATenth([](auto& own) {
    own.removeSecondMRAIDWebView();  // or it would lie over the banner for ever
    own.mraidCloseExpandFor(own.webView_, own.view()->frame(), own.mraidHandler_);
    own._restoreOriginalOrientation();
  });
}

void VeltoBannerViewControllerPrivate::veltoMRAIDResize(
    const std::shared_ptr<VeltoMRAIDPropertyResize>& property,
    const VeltoCloseButtonUIConfiguration& btnCloseConfiguration) {
  const CGRect frame = property ? property->frame : CGRect{};
  const bool offsetCounts = property && property->allowOffscreen.value_or(0) != 0;
  _resizeActionInMainWebView(Resize, frame.size, offsetCounts ? frame.origin : CGPoint{});
  afterATenth([btnCloseConfiguration](auto& own) {
    own.veltoMRAIDRemoveCloseCustomButton();  // of a resize just before
    own.veltoCloseButton_ = own.addCloseButtonInView(
        own.webView_, btnCloseConfiguration, [&own] { own._tapCloseButtonResize(); }, std::nullopt);
    own.addFriendlyObstructionOMSDKFor(own.veltoCloseButton_);
    own.mraidResizeFor(own.webView_, own.view()->frame(), own.mraidHandler_);
  });
}

void VeltoBannerViewControllerPrivate::veltoMRAIDCloseResize() {
  removeSecondMRAIDWebView();  // the first page may have asked for a resize meanwhile
  _resizeActionInMainWebView(CloseResize, {}, {});
  afterATenth(
      [](auto& own) { own.mraidCloseResizeFor(own.webView_, own.view()->frame(), own.mraidHandler_); });
}

void VeltoBannerViewControllerPrivate::_tapCloseButtonResize() {
  veltoMRAIDRemoveCloseCustomButton();
  veltoMRAIDCloseResize();
}

void VeltoBannerViewControllerPrivate::veltoMRAIDRemoveCloseCustomButton() {
  if (!veltoCloseButton_) return;
  veltoCloseButton_->removeFromSuperview();
  removeFriendlyObstructionOMSDKFor(veltoCloseButton_);
  veltoCloseButton_.reset();
}

}  // namespace velto
