// An interstitial: a full-screen ad, fetched ahead of time and shown over the host application's window when
// that asks for it. Main thread.
//
//   auto interstitial = VeltoInterstitialViewController::initWithDelegate(delegate);
//   interstitial->load();                                      // DidFinishLoad or DidFail comes
//   if (interstitial->isReady()) interstitial->show();         // DidAppear, DidPress …, DidClose, dismissed
//
// The delegate (VeltoDelegates.h) is held weakly. Destroying this object takes a shown interstitial off the
// screen, and nothing is called any more.
#pragma once

#include "velto/Export.h"
#include "velto/core/VeltoConstants.h"
#include "velto/core/VeltoSettings.h"
#include "velto/timeline/VeltoAdTimeline.h"
#include "velto/ui/VeltoDelegates.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velto {

class VELTO_EXPORT VeltoInterstitialViewController {
 public:
  using Delegate = std::shared_ptr<VeltoInterstitialViewControllerDelegate>;

  static std::shared_ptr<VeltoInterstitialViewController> initWithDelegate(const Delegate& delegate);

  explicit VeltoInterstitialViewController(std::shared_ptr<VeltoInterstitialViewControllerPrivate> vc)
      : vc_(std::move(vc)) {}
  VeltoInterstitialViewController(const VeltoInterstitialViewController&) = delete;
  VeltoInterstitialViewController& operator=(const VeltoInterstitialViewController&) = delete;
  ~VeltoInterstitialViewController();

  // Whether each ad is shown as soon as it is ready, inside the call that says so. Off by default.
  void setAutoShowWhenReady(bool autoShow);

  // Fetches an ad. A new one takes the place of one that is ready; while one is on the screen, the new one
  // becomes ready when that has gone.
  void load();
  void load(const VeltoSettings& settings);
  bool isReady() const;
  // Whether an ad is on its way, or waits for the one on the screen to go.
  bool isLoading() const;

  // Shows the ad that is ready, over the delegate's view controller. Without one, or while one is on the
  // screen, nothing happens.
  void show();

  // The same over another view controller, where this can be told at once: what stands in the way, if
  // anything does, and nothing is shown then.
  std::optional<VeltoErrorAd> show(const std::shared_ptr<UIViewController>& over);

  // What became of its last loads, oldest first (VeltoAdTimeline.h).
  std::vector<VeltoAdTimeline> veltoAdTimeline() const;
  void addTimelineObserver(std::weak_ptr<VeltoAdTimelineObserver> observer);
  // What timelines, logs and figures call it, of loads to come: "interstitial" unless said.
  void setPlacement(const std::string& name);

  // What becomes of ads that cost the device too much, from the next one on (VeltoAdWeight.h): they are reported
  // unless said.
  void setHeavyAdPolicy(VeltoHeavyAdPolicy policy);
  void setHeavyAdLimits(const VeltoHeavyAdLimits& limits);
  // What the ad that is shown has cost by now; nothing without one, or where it cannot be told.
  std::optional<VeltoAdWeight> adWeight() const;

  VeltoInterstitialState state() const;

  // How it comes in; none by default. Takes effect before the first show.
  void setAnimation(VeltoAnimation animation);

  // The working controller, which delegate calls give as their first argument.
  const std::shared_ptr<VeltoInterstitialViewControllerPrivate>& vc() const { return vc_; }

 private:
  std::shared_ptr<VeltoInterstitialViewControllerPrivate> vc_;
};

}  // namespace velto
