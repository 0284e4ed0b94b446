// What other networks announce of the interstitials that they bring.
#include "velto/platform/ui/UIVisualEffectView.h"
#include "velto/ui/VeltoInterstitialViewControllerPrivate.h"

#include <utility>

namespace velto {

// A network shows its ad on a screen over this one, or in views of this one. One that does neither has
// nothing to show.
void VeltoInterstitialViewControllerPrivate::leaveUnlessAdapterPresents() {
  if (presentedViewController()) return;
  for (const auto& subview : view()->subviews())
    if (subview != veltoCloseButton() && !dynamic_cast<UIVisualEffectView*>(subview.get())) return;
  leave(Why::AdapterShowedNothing);
}

void VeltoInterstitialViewControllerPrivate::_notificationAdMobAdapterGADInterstitialReady(
    const NSNotification& notification) {
  const auto adapter = ownAdapterIn(notification);
  if (adapter && adapter->rootViewControllerUser() && ad() && ad()->adapter == adapter) shown_->takeAdapter();
}

// Nothing of the network's comes over this screen, which can be closed as any other. An ad that waits for its
// turn has failed.
void VeltoInterstitialViewControllerPrivate::_notificationAdMobAdapterGADInterstitialError(
    const NSNotification& notification) {
  const auto adapter = notification.objectAs<VeltoAdMediationCoreAdapter>();
  if (!adapter) return;
  if (ad() && ad()->adapter == adapter) {
    shown_->dropAdapter();
    note(VeltoTimelineKind::AdapterFailed);
  }
  if (!waitingAd_ || waitingAd_->adapter != adapter) return;
  waitingAd_.reset();
  if (const auto load = std::exchange(waitingLoad_, nullptr)) load->end(Why::AdapterFailed);
  notifyDidFail(delegate(), VeltoErrorAd::because(Why::AdapterFailed));
}

}  // namespace velto
