// Entry animations: banners slide, interstitials fade in.
#include "velto/ui/UIViewControllerUIAnimationSDKVelto.h"

#include "velto/platform/ui/UIViewAnimation.h"
#include "velto/ui/VeltoUIAnimation.h"

namespace velto {
namespace {
constexpr double bannerSeconds = 1.2;
constexpr double interstitialSeconds = 0.2;
}  // namespace

void UIViewControllerUIAnimationSDKVelto::prepareAnimationForAdView(const std::shared_ptr<UIView>& adView,
                                                                    int64_t animation) {
  if (!adView) return;
  const bool shownAtOnce = animatesAsBanner() && animation == VeltoAnimationNone;
  adView->setAlpha(shownAtOnce ? 1 : 0);
}

bool UIViewControllerUIAnimationSDKVelto::commitAnimationForAdView(const std::shared_ptr<UIView>& adView,
                                                                   int64_t animation) {
  if (!animatesAsBanner()) {
    if (adView)
      animateWithDuration(interstitialSeconds, 0, adView, {.frame = std::nullopt, .alpha = 1.0}, nullptr);
    return true;
  }
  if (!adView) return false;
  if (animation == VeltoAnimationNone) {
    adView->setAlpha(1);  // it may have been prepared for another kind, which was taken back since
    return false;
  }
  adView->layoutIfNeeded();  // the slide ends where the constraints put the view
  VeltoUIAnimation::animatePresentView(adView, viewController().view(), nullptr, adView->frame(), animation,
                                       bannerSeconds, 0, nullptr);
  return true;
}

}  // namespace velto
