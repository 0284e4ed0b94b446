// What a rich-media page makes of its ad: expand, resize, close. The page is told a moment later, when the
// views have their new frames.
#include "velto/core/VeltoInspector.h"
#include "velto/mraid/VeltoMRAIDTables.h"
#include "velto/ui/VeltoAdViewController.h"
#include "velto/ui/VeltoShownAd.h"

#include <algorithm>

namespace velto {
namespace {

using namespace std::chrono_literals;
constexpr auto aTenth = 100ms;

}  // namespace

void VeltoShownAd::handleMRAIDAction(const NSURL& url, WKWebView& webView) {
  if (!controller_ || !mraidHandler_) return;
  if (&webView == webView_.get()) {
    const bool leaves = url.host() == "close" && controller_->endsWithItsExpansion();
    if (!leaves && secondPart_.keeps(url)) return;
    if (secondaryMRAIDWebView_ && secondPart_.takes(url)) return;
  }
  // The page may call itself resized, but the ad stays as large as it is and keeps its close button.
  const bool isResized = mraidHandler_->state == MRAIDState[MRAIDStateResized];
  if (isExpanded_ && isResized && url.host() == "resize") return;
  mraidHandleAction(url, webView);
  noteState();
}

// What the page may call itself now.
void VeltoShownAd::noteState() {
  if (!mraidHandler_) return;
  const auto found = std::find(MRAIDState.begin(), MRAIDState.end(), mraidHandler_->state);
  if (found == MRAIDState.end()) return;
  static_assert(static_cast<size_t>(VeltoRichMedia::Hidden) == MRAIDStateHidden);
  note(VeltoTimelineKind::RichMedia, static_cast<VeltoRichMedia>(found - MRAIDState.begin()));
}

void VeltoShownAd::_setMRAIDAsReady(const WebView& webView) {
  if (!mraidHandler_) return;
  VeltoAdViewController::activateAudioSession();
  mraidReady(webView, webView == secondaryMRAIDWebView_, veltoMRAIDGetFullscreenFrame().size, mraidHandler_);
  noteState();
}

CGRect VeltoShownAd::veltoMRAIDGetFullscreenFrame() {
  if (!controller_) return {};
  const auto [viewAd, vc] = controller_->surroundings();
  return UIViewControllerUISDKVelto::getFullScreenFrameFor(viewAd, vc);
}

std::function<void()> VeltoShownAd::action(void (VeltoShownAd::*tapped)()) {
  return [weak = weak_from_this(), tapped] {
    if (const auto alive = weak.lock()) (alive.get()->*tapped)();
  };
}

// --- expand

void VeltoShownAd::veltoMRAIDExpand(const std::optional<std::string>& secondPartURL,
                                    const CloseButton& btnCloseConfiguration) {
  if (!controller_ || !webView_) return;
  if (secondPartURL) {
    preparedPage().prepare(webView_);  // the second view may live beside the first
    secondPart_.fetchBegins();
    return controller_->fetchSecondaryMRAIDContentFor(
        *secondPartURL, [weak = weak_from_this(), address = *secondPartURL, btnCloseConfiguration](
                            const std::shared_ptr<VeltoAd>& part, const std::optional<VeltoErrorAd>& error) {
          const auto alive = weak.lock();
          if (!alive) return;
          if (!part)
            inspectRefusal("expand",
                           address + " could not be had: " +
                               (error ? error->descriptionError().value_or("") : "it is no markup"));
          alive->expandIntoSecondPart(part, btnCloseConfiguration);
          for (const auto& command : alive->secondPart_.fetchEnds())
            if (alive->webView_) alive->handleMRAIDAction(command, *alive->webView_);
        });
  }
  ++expansions_;
  isExpanded_ = true;
  controller_->_expandActionInMainWebView(VeltoAdViewController::Expand);
  const auto [viewAd, vc] = controller_->surroundings();
  const auto button = mraidExpandFor(webView_, viewAd, vc, btnCloseConfiguration,
                                     action(&VeltoShownAd::_tapCloseButtonExpand), mraidHandler_);
  if (!button) return;  // the page has a close button of its own
  veltoCloseButton_ = button;
  controller_->addFriendlyObstructionOMSDKFor(button);
}

void VeltoShownAd::expandIntoSecondPart(const std::shared_ptr<VeltoAd>& part,
                                        const CloseButton& btnCloseConfiguration) {
  if (!controller_ || secondaryMRAIDWebView_) return;  // an earlier command has brought one
  if (!part) {
    preparedPage().drop();
    // Forced for nothing, but on a screen, where the page may force it without an expansion.
    if (!isExpanded_ && !controller_->endsWithItsExpansion()) _restoreOriginalOrientation();
    return;
  }
  ++expansions_;
  isExpanded_ = true;
  secondaryMRAIDWebView_ = controller_->_initSecondMRAIDWebView();
  secondPart_.opens(*mraidHandler_);
  secondWatch_ = watch(secondaryMRAIDWebView_);
  loadBannerDataIn(secondaryMRAIDWebView_, part);
  const auto [viewAd, vc] = controller_->surroundings();
  const auto button = mraidExpandFor(secondaryMRAIDWebView_, viewAd, vc, btnCloseConfiguration,
                                     action(&VeltoShownAd::_tapCloseButtonExpand), mraidHandler_);
  if (button)
    veltoCloseButton_ = button;
  else if (veltoCloseButton_ && veltoCloseButton_->superview() == controller_->view().get())
    controller_->view()->addSubview(veltoCloseButton_);  // to the front: a person must be able to leave
  else
    veltoMRAIDRemoveCloseCustomButton();  // of a page that lies below now
}

void VeltoShownAd::veltoMRAIDCloseExpand() {
  if (!controller_ || !webView_) return;
  if (controller_->endsWithItsExpansion()) return closeExpansion(Why::PageLeft);
  isExpanded_ = false;
  removeSecondMRAIDWebView();
  controller_->_expandActionInMainWebView(VeltoAdViewController::CloseExpand);
  controller_->view()->layoutIfNeeded();  // the page is told of the frame that it goes back to
  mraidCloseExpandFor(webView_, controller_->view()->frame(), mraidHandler_);
  _restoreOriginalOrientation();
}

void VeltoShownAd::closeExpansion(Why why) {
  if (!controller_) return;
  if (controller_->endsWithItsExpansion()) {
    mraidCloseExpandFor(webView_, controller_->view()->frame(), mraidHandler_);
    _restoreOriginalOrientation();
    return controller_->leave(why);
  }
  controller_->_expandActionInMainWebView(VeltoAdViewController::CloseExpand);
  after(aTenth, [this, closed = expansions_] {
    if (closed != expansions_ || !isExpanded_) return;  // closed meanwhile, or expanded again
    isExpanded_ = false;
    removeSecondMRAIDWebView();  // or it would lie over the ad for ever
    mraidCloseExpandFor(webView_, controller_->view()->frame(), mraidHandler_);
    _restoreOriginalOrientation();
    noteState();
  });
}

void VeltoShownAd::removeSecondMRAIDWebView() {
  if (!secondaryMRAIDWebView_) return;
  secondaryMRAIDWebView_->setNavigationDelegate({});
  secondaryMRAIDWebView_->removeFromSuperview();
  secondaryMRAIDWebView_.reset();
  secondWatch_.reset();
  if (mraidHandler_) secondPart_.closes(*mraidHandler_);
  // The second part was what is measured and told of its sight; now it is the first again.
  mraidIsViewable(mraidHandler_ && mraidHandler_->isViewable, webView_, mraidHandler_);
  if (controller_ && controller_->omidSession()) controller_->startOMSDKSessionFor(webView_, nullptr);
}

// --- resize

void VeltoShownAd::veltoMRAIDResize(const std::shared_ptr<VeltoMRAIDPropertyResize>& property,
                                    const VeltoCloseButtonUIConfiguration& btnCloseConfiguration) {
  if (!controller_ || !webView_) return;
  const CGRect frame = property ? property->frame : CGRect{};
  const bool offsetCounts = property && property->allowOffscreen.value_or(0) != 0;
  controller_->_resizeActionInMainWebView(VeltoAdViewController::Resize, frame.size,
                                          offsetCounts ? frame.origin : CGPoint{});
  after(aTenth, [this, btnCloseConfiguration] {
    if (isExpanded_) return;              // which covers everything by now
    veltoMRAIDRemoveCloseCustomButton();  // of a resize just before
    veltoCloseButton_ = controller_->addCloseButtonInView(
        webView_, btnCloseConfiguration, action(&VeltoShownAd::_tapCloseButtonResize), std::nullopt);
    controller_->addFriendlyObstructionOMSDKFor(veltoCloseButton_);
    mraidResizeFor(webView_, controller_->view()->frame(), mraidHandler_);
    noteState();
  });
}

void VeltoShownAd::veltoMRAIDCloseResize() {
  if (!controller_ || !webView_) return;
  if (isExpanded_ && !controller_->endsWithItsExpansion()) return veltoMRAIDCloseExpand();
  isExpanded_ = false;
  removeSecondMRAIDWebView();
  controller_->_resizeActionInMainWebView(VeltoAdViewController::CloseResize, {}, {});
  after(aTenth, [this] {
    if (isExpanded_) return;
    mraidCloseResizeFor(webView_, controller_->view()->frame(), mraidHandler_);
    noteState();
  });
}

void VeltoShownAd::_tapCloseButtonResize() {
  veltoMRAIDRemoveCloseCustomButton();
  veltoMRAIDCloseResize();
}

void VeltoShownAd::veltoMRAIDRemoveCloseCustomButton() {
  if (!controller_ || !veltoCloseButton_) return;
  veltoCloseButton_->removeFromSuperview();
  controller_->removeFriendlyObstructionOMSDKFor(veltoCloseButton_);
  veltoCloseButton_.reset();
  controller_->closeButtonRemoved();
}

// --- leaving

void VeltoShownAd::veltoMRAIDUnload() {
  if (controller_) controller_->leave(Why::PageLeft);
}

void VeltoShownAd::veltoMRAIDCloseInterstitial() {
  if (controller_ && controller_->endsWithItsExpansion()) controller_->leave(Why::PageLeft);
}

void VeltoShownAd::playVideoAt(const NSURL& url) {
  if (controller_) controller_->playVideoAt(url);
}

}  // namespace velto
